// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace platform {

// Tells the file managers of the session that an item changed, without waiting for anybody: the
// signal FilesChanged of org.kde.KDirNotify at "/" on the session bus, with the item's URL. Nothing
// happens where there is no bus. Any thread.
void sendFileChangeNotice(const QString &path);

// "file://" and the absolute path, with all bytes but the plain ones percent-encoded.
QString fileUrl(const QString &path);

} // namespace platform
