// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/FileChangeNotice.h"

#include "Platform/Core/Text/PathText.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QStringList>

namespace platform {

QString fileUrl(const QString &path)
{
    return QStringLiteral("file://") + QString::fromLatin1(percentEncodedPath(absolutePath(path)));
}

void sendFileChangeNotice(const QString &path)
{
    const auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        return;
    }
    auto message = QDBusMessage::createSignal(
        QStringLiteral("/"), QStringLiteral("org.kde.KDirNotify"), QStringLiteral("FilesChanged"));
    message << QStringList(fileUrl(path));
    bus.send(message);
}

} // namespace platform
