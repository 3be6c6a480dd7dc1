// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Applications/Workspace.h"

#include "Platform/Core/Applications/ApplicationBundle.h"
#include "Platform/Core/Applications/ApplicationFolders.h"
#include "Platform/Core/Applications/ApplicationIcon.h"
#include "Platform/Core/Applications/ApplicationIndex.h"

#include <QCache>
#include <QElapsedTimer>

#include <optional>

namespace platform {
namespace {

// How long an icon that was not there is believed to be missing: a package manager may unpack the
// entry before its icon.
constexpr qint64 missingIconLifetime = 3000; // ms
constexpr int maxKept = 4096;                // applications

// An application as it was when its file had this mark.
struct Known {
    Known(const QString &path, const QString &file)
        : mark(file, ChangeMark::now()), application(ApplicationBundle::withPath(path))
    {
    }

    ChangeMark mark;
    ApplicationBundle application;
    std::optional<QIcon> icon;
    QElapsedTimer iconAge;
};

class Applications {
public:
    QString pathFor(const QString &identifier)
    {
        refresh();
        const QLatin1String ending(".desktop");
        QStringList ids{identifier + ending};
        if (identifier.endsWith(ending)) {
            ids.prepend(identifier);
        }
        for (const auto &id : ids) {
            const auto path = entryWithId(id);
            if (path) {
                return *path;
            }
        }
        for (const auto &index : m_bundles) {
            auto path = index.applicationBundle(identifier);
            if (!path.isNull()) {
                return path;
            }
        }
        return {};
    }

    QIcon iconOf(const QString &path)
    {
        auto &known = at(path);
        const auto theme = QIcon::themeName() + QLatin1Char('\n') + QIcon::fallbackThemeName();
        if (theme != m_theme) {
            m_theme = theme;
            forgetIcons();
        }
        const auto isStale =
            !known.icon || (known.icon->isNull() && known.iconAge.hasExpired(missingIconLifetime));
        if (isStale) {
            known.icon = applicationIcon(known.application);
            known.iconAge.start();
        }
        return *known.icon;
    }

private:
    // The folders depend on the environment, the rest on what is in them.
    void refresh()
    {
        const QByteArrayList environment{qgetenv("XDG_DATA_HOME"), qgetenv("XDG_DATA_DIRS"),
                                         qgetenv("HOME")};
        if (environment != m_environment) {
            m_environment = environment;
            m_entries.clear();
            m_bundles.clear();
            for (const auto &folder : desktopEntryFolders()) {
                m_entries.emplace_back(folder);
            }
            for (const auto &folder : applicationBundleFolders()) {
                m_bundles.emplace_back(folder);
            }
        }
        for (auto &index : m_entries) {
            index.refresh();
        }
        for (auto &index : m_bundles) {
            index.refresh();
        }
    }

    // A null path where the application is hidden, nothing where no entry has that id.
    std::optional<QString> entryWithId(const QString &id)
    {
        for (const auto &index : m_entries) {
            const auto path = index.desktopEntry(id);
            const auto *application = path.isNull() ? nullptr : &at(path).application;
            if (application != nullptr && application->entry().hidden) {
                return QString();
            }
            if (application != nullptr && !application->isNull() &&
                application->entry().isInstalled()) {
                return path;
            }
        }
        return std::nullopt;
    }

    // Valid until the next call.
    Known &at(const QString &path)
    {
        auto *known = m_known.object(path);
        if (known == nullptr || known->mark.hasChanged()) {
            const auto isEntry = path.endsWith(QLatin1String(".desktop"));
            known = new Known(path, isEntry ? path : path + QLatin1String("/Contents/Info.plist"));
            m_known.insert(path, known);
        }
        return *known;
    }

    void forgetIcons()
    {
        for (const auto &path : m_known.keys()) {
            m_known.object(path)->icon.reset();
        }
    }

    QByteArrayList m_environment;
    std::vector<ApplicationIndex> m_entries;
    std::vector<ApplicationIndex> m_bundles;
    QCache<QString, Known> m_known{maxKept};
    QString m_theme;
};

// Never destroyed: icons must not outlive the application object, nor end behind it.
Applications &applications()
{
    static auto *all = new Applications;
    return *all;
}

} // namespace

QString absolutePathForAppBundleWithIdentifier(const QString &identifier)
{
    return identifier.isEmpty() ? QString() : applications().pathFor(identifier);
}

QIcon iconForFile(const QString &path)
{
    return path.isEmpty() || path.contains(QChar(0)) ? QIcon() : applications().iconOf(path);
}

} // namespace platform
