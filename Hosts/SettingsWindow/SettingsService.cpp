// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Hosts/SettingsWindow/SettingsService.h"

#include "Hosts/SettingsWindow/SettingsWindow.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>

#include <cstdio>

namespace {

const QString name = QStringLiteral("com.corvane.OstrelSettings");
const QString path = QStringLiteral("/com/corvane/OstrelSettings");
const QString interface = QStringLiteral("org.freedesktop.Application");
const QString pageAction = QStringLiteral("page");
const QString tokenKey = QStringLiteral("activation-token");
constexpr auto tokenVariable = "XDG_ACTIVATION_TOKEN";

// Asks the first one to show its window.
QDBusMessage activateFirst(const QDBusConnection &bus, const QString &page)
{
    // Under Wayland, who was started by the user may let another window come to the front.
    const QVariantMap platformData{{tokenKey, QString::fromUtf8(qgetenv(tokenVariable))}};
    auto call = QDBusMessage::createMethodCall(name, path, interface,
                                               page.isNull() ? QStringLiteral("Activate")
                                                             : QStringLiteral("ActivateAction"));
    call.setAutoStartService(false);
    call.setArguments(page.isNull() ? QVariantList{platformData}
                                    : QVariantList{pageAction, QVariantList{page}, platformData});
    return bus.call(call);
}

} // namespace

std::optional<int> SettingsService::start(const QString &page)
{
    constexpr auto failed = 1;
    constexpr auto badUsage = 2;
    auto bus = QDBusConnection::sessionBus();
    // The object first: whoever finds the name finds it, too.
    if (!bus.isConnected() ||
        !bus.registerObject(path, this, QDBusConnection::ExportScriptableSlots)) {
        return std::nullopt;
    }
    while (!bus.registerService(name)) {
        const auto reply = activateFirst(bus, page);
        if (reply.type() == QDBusMessage::ReplyMessage) {
            return 0;
        }
        const QDBusError error(reply);
        const auto isGone =
            error.type() == QDBusError::ServiceUnknown ||
            (error.type() == QDBusError::NoReply && !bus.interface()->isServiceRegistered(name));
        if (!isGone) {
            std::fprintf(stderr, "ostrel-settings: %s\n", qUtf8Printable(error.message()));
            return error.type() == QDBusError::InvalidArgs ? badUsage : failed;
        }
    }
    return std::nullopt;
}

void SettingsService::Activate(const QVariantMap &platformData)
{
    if (m_window == nullptr) {
        return; // about to open
    }
    const auto token = platformData.value(tokenKey).toString();
    if (!token.isEmpty()) {
        qputenv(tokenVariable, token.toUtf8()); // read once, by what follows
    }
    m_window->setWindowState(m_window->windowState() & ~Qt::WindowMinimized);
    m_window->show();
    m_window->raise();
    m_window->activateWindow();
    qunsetenv(tokenVariable);
}

void SettingsService::ActivateAction(const QString &action, const QVariantList &parameters,
                                     const QVariantMap &platformData)
{
    if (action == pageAction && m_window != nullptr) {
        const auto error = m_window->showPage(parameters.value(0).toString());
        if (!error.isNull()) {
            sendErrorReply(QDBusError::InvalidArgs, error);
            return;
        }
    }
    Activate(platformData);
}
