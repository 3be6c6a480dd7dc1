// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Applications/ShowInFolder.h"

#include "Platform/Core/Files/FileChangeNotice.h"
#include "Platform/Core/Text/PathText.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDesktopServices>
#include <QUrl>

namespace platform {

void showInFolder(const QString &path)
{
    const auto fileManager = QStringLiteral("org.freedesktop.FileManager1");
    auto message =
        QDBusMessage::createMethodCall(fileManager, QStringLiteral("/org/freedesktop/FileManager1"),
                                       fileManager, QStringLiteral("ShowItems"));
    message << QStringList(fileUrl(path)) << QString(); // the text: no start-up notification
    // Without a bus it is an error at once.
    auto *call = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(message),
                                             QCoreApplication::instance());
    QObject::connect(call, &QDBusPendingCallWatcher::finished, call, [call, path] {
        if (call->isError()) {
            const auto folder = deletingLastPathComponent(path);
            QDesktopServices::openUrl(QUrl::fromEncoded(fileUrl(folder).toLatin1()));
        }
        call->deleteLater();
    });
}

} // namespace platform
