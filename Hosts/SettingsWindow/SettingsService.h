// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusContext>
#include <QObject>
#include <QVariantMap>

#include <optional>

class SettingsWindow;

// The one ostrel-settings of the session. It owns a name on the session bus, under which a second
// one finds it and has it come to the front.
class SettingsService : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")
public:
    // Becomes the session's one, or has that show its window, at the page where one is named.
    // Nothing for the first, and where there is no session bus; else the exit status of this
    // process, with a line on standard error for a failure.
    std::optional<int> start(const QString &page);

    // What comes to the front; it must stay as long as this.
    void setWindow(SettingsWindow *window) { m_window = window; }

public Q_SLOTS:
    Q_SCRIPTABLE void Activate(const QVariantMap &platformData);
    // "page", with its name.
    Q_SCRIPTABLE void ActivateAction(const QString &action, const QVariantList &parameters,
                                     const QVariantMap &platformData);

private:
    SettingsWindow *m_window = nullptr;
};
