// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Folders/StandardFolders.h"
#include "Platform/Core/Text/Console.h"
#include "Platform/Core/Text/FileName.h"
#include "Shared/Authorization/ZQAuthorization.h"
#include "Shared/Basics/ZQLocalPaths.h"
#include "Shared/Tasks/ZQTaskEx.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <climits>
#include <thread>

namespace {

// A NUL would end the name early on its way to the system, so that another file would be meant.
bool isFileName(const QString &path)
{
    return !path.contains(QChar(0));
}

// What this process may not look at is there for all it knows: the tool works with other rights.
bool isThere(const QString &path)
{
    struct stat status {};
    if (!isFileName(path)) {
        return false;
    }
    return ::stat(platform::fileNameBytes(path).constData(), &status) == 0 ||
           (errno != ENOENT && errno != ENOTDIR);
}

QString workingFolder()
{
    QByteArray folder(PATH_MAX, '\0');
    return ::getcwd(folder.data(), static_cast<std::size_t>(folder.size())) != nullptr
               ? platform::fileNameFromBytes(folder.constData())
               : QStringLiteral("/dev/null"); // nothing is below it
}

// Reports a path that is missing.
bool bothGiven(const QString &source, const QString &destination, const QString &operation)
{
    if (source.isNull()) {
        platform::consoleLog(QStringLiteral("Error in %@: old path is null"), operation);
        return false;
    }
    if (destination.isNull()) {
        platform::consoleLog(QStringLiteral("Error in %@: new path is null"), operation);
        return false;
    }
    return true;
}

// Starts the tool and does not wait for it; for root it counts as started whatever happens.
bool startTool(ZQAuthorization &authorization, const QString &tool, const QStringList &arguments)
{
    if (platform::isRunningAsRoot()) {
        ZQTaskEx::runTaskAndReturn(tool, arguments);
        return true;
    }
    return authorization.authExecTask(tool, arguments) == 0;
}

} // namespace

bool ZQAuthorization::isSystemDirectory(const QString &path, const QString &message)
{
    if (!ZQLocalPaths::isPathSystemDirectory(path, ExactMatch::Yes)) {
        return false;
    }
    platform::consoleLog(message, path);
    return true;
}

QString ZQAuthorization::pathArgument(const QString &path)
{
    if (path.isEmpty() || path.startsWith(u'/')) {
        return path;
    }
    if (!platform::isRunningAsRoot()) {
        return workingFolder() + u'/' + path;
    }
    return path.startsWith(u'-') ? QStringLiteral("./") + path : path;
}

bool ZQAuthorization::authRemoveFile(const QString &path)
{
    if (isSystemDirectory(
            path, QStringLiteral("Unable to delete path %@ because it is a system directory."))) {
        return false;
    }
    return isFileName(path) && authExecTask(QStringLiteral("/bin/rm"),
                                            {QStringLiteral("-Rdf"), pathArgument(path)}) == 0;
}

bool ZQAuthorization::authMoveFile(const QString &source, const QString &destination)
{
    if (!bothGiven(source, destination, QStringLiteral("authMoveFile")) ||
        isSystemDirectory(
            source, QStringLiteral("Unable to move path %@ because it is a system directory.")) ||
        !isThere(source) || !isFileName(destination)) {
        return false;
    }
    return startTool(*this, QStringLiteral("/bin/mv"),
                     {QStringLiteral("-f"), pathArgument(source), pathArgument(destination)});
}

bool ZQAuthorization::authCopyFile(const QString &source, const QString &destination)
{
    if (!bothGiven(source, destination, QStringLiteral("authCopyFile")) || !isThere(source) ||
        !isFileName(destination)) {
        return false;
    }
    return startTool(*this, QStringLiteral("/bin/cp"),
                     {QStringLiteral("-f"), QStringLiteral("-p"), QStringLiteral("-R"),
                      pathArgument(source), pathArgument(destination)});
}

bool ZQAuthorization::authCreateDir(const QString &path)
{
    if (!isFileName(path)) {
        return false;
    }
    if (!startTool(*this, QStringLiteral("/bin/mkdir"),
                   {QStringLiteral("-p"), pathArgument(path)})) {
        return false;
    }
    if (!platform::isRunningAsRoot()) {
        std::this_thread::sleep_for(std::chrono::microseconds(500)); // time for it to appear
    }
    return true;
}
