// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Tests/Shared/Files/FileManagerFixture.h"

#include "Shared/Log/ZQLog.h"
#include "Tests/Shared/Log/LogFixture.h"

#include <unistd.h>

namespace test {

FileManagerFixture::FileManagerFixture()
{
    ZQLog::finishWriting();
    clearLibraries();
    if (isRoot()) {
        makeFolder(localLogFolder().toStdString()); // root's log wants it there
    }
    ZQLog::createNewLog();
    ZQLog::finishWriting();
}

QStringList FileManagerFixture::logged()
{
    ZQLog::finishWriting();
    return body(generation(1, {}, isRoot() ? localLogFolder() : userLogFolder()));
}

bool isRoot()
{
    return ::getuid() == 0;
}

} // namespace test
