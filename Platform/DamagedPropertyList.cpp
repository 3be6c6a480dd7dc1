// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/DamagedPropertyList.h"

#include "Platform/PropertyList.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <unistd.h>

namespace platform {

bool keepDamagedPropertyList(const QString &path)
{
    const QFileInfo file(path);
    if (!file.isFile() || file.size() == 0 || dictionaryFromFile(path)) {
        return true;
    }
    const QByteArray original = QFile::encodeName(path);
    const QByteArray kept = original + ".damaged";
    ::unlink(kept.constData());
    // A second name needs no right to read the file, and the file is never away. Of a symbolic link
    // the file behind it gets the name, as that is what will be replaced.
    return ::linkat(AT_FDCWD, original.constData(), AT_FDCWD, kept.constData(),
                    AT_SYMLINK_FOLLOW) == 0 ||
           QFile::copy(path, path + QStringLiteral(".damaged"));
}

} // namespace platform
