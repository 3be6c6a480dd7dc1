// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QStringList>

#include <sys/types.h>

#include <vector>

namespace platform {

// Whether something at a path has changed, told by its times, size and number. What changed only
// just before the mark was made, or after that time, counts as changing still: the clock of the
// file system may not tell the next change from it.
class ChangeMark {
public:
    // Nanoseconds since 1970.
    static qint64 now();

    ChangeMark(const QString &path, qint64 since);
    bool hasChanged() const;

private:
    struct State {
        bool exists = false;
        dev_t device = 0;
        ino_t number = 0;
        off_t size = 0;
        qint64 changed = 0;
        bool operator==(const State &) const = default;
    };
    static State look(const QByteArray &path);

    QByteArray m_path;
    State m_state;
    bool m_isFresh = false;
};

// The applications below one folder by their identifiers. It reads only the folder, and each ".app"
// folder in it.
class ApplicationIndex {
public:
    explicit ApplicationIndex(QString folder) : m_folder(std::move(folder)) {}

    // Looks at the folder again where something in it has changed.
    void refresh();

    // Path of the desktop entry with that id; null for none.
    QString desktopEntry(const QString &id) const { return m_entries.value(id); }
    // Path of the ".app" folder with that identifier; null for none.
    QString applicationBundle(const QString &identifier) const
    {
        return m_bundles.value(identifier);
    }

private:
    void read();

    QString m_folder;
    std::vector<ChangeMark> m_marks;
    QHash<QString, QString> m_entries;
    QHash<QString, QString> m_bundles;
};

} // namespace platform
