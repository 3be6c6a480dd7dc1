// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Support/ZQSoftwareUpdate.h"

#include "Platform/Core/Bundles/Bundle.h"
#include "Platform/Core/Files/FileStatus.h"
#include "Platform/Core/Folders/PrivateFiles.h"
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Platform/Core/Text/LeadingInteger.h"
#include "Platform/Core/Text/PathText.h"
#include "Platform/Core/Threads/BackgroundWork.h"
#include "Platform/Core/Trees/CopyItem.h"
#include "Platform/Core/Trees/RemoveItem.h"
#include "Shared/Basics/ZQLocalPaths.h"
#include "Shared/Log/ZQLog.h"
#include "Shared/Tasks/ZQTaskEx.h"

using platform::appendingPathComponent;

namespace {

const QString updater = QStringLiteral("Corvane Software Update.app");

// A variable of this very file lies in the program or plug-in that holds the class.
platform::Bundle ownBundle()
{
    static const char here = 0;
    return platform::Bundle::containing(&here);
}

QString installedPath()
{
    const auto folder = ZQLocalPaths::applicationDirectory(Domain::Local);
    return folder.isNull() ? QString()
                           : appendingPathComponent(folder, QStringLiteral("Corvane/") + updater);
}

QString enclosedPath()
{
    return appendingPathComponent(ownBundle().path(),
                                  QStringLiteral("Contents/Resources/") + updater);
}

// 0 where there is no updater.
qlonglong versionAt(const QString &path)
{
    return platform::leadingInteger(
        platform::Bundle(path).infoDictionary().value(QStringLiteral("CFBundleVersion")));
}

bool isExecutableAt(const QString &path)
{
    return !platform::Bundle(path).executablePath().isNull();
}

// At no moment there is nothing of that name once there is something: another check may be about to
// run it. False where the file system cannot do that.
bool takeName(const QString &name, const QString &copy)
{
    constexpr auto maxTries = 100; // more than there are checks at a time
    for (int i = 0; i < maxTries; ++i) {
        if (platform::renameWithoutReplacing(copy, name) || platform::exchangeNames(copy, name)) {
            return true;
        }
    }
    return false;
}

// An updater that runs, or is just being launched, finds its files at every moment.
QString freshWorkingCopy()
{
    auto path = appendingPathComponent(ZQLocalPaths::tempDirectory(), updater);
    const auto copy = ZQLocalPaths::tempFile();
    // A failure is not reported here; it shows when the copy is to be run.
    if (platform::copyItem(enclosedPath(), copy)) {
        platform::removeItem(path);
    } else if (!takeName(path, copy)) {
        platform::removeItem(path);
        platform::renameWithoutReplacing(copy, path);
    }
    platform::removeItem(copy);
    return path;
}

void logFailure(const QString &reason)
{
    ZQLog::appendLogAndPrint(QStringLiteral("Unable to launch Software Update - ") + reason);
}

QString loggedUpdaterPath()
{
    auto path = ZQSoftwareUpdate::updaterPath();
    if (path.isNull()) {
        logFailure(QStringLiteral("path doesn't exist"));
    }
    return path;
}

// NO is a truth value or a number; a text is neither.
bool isNo(const QVariant &value)
{
    switch (value.userType()) {
    case QMetaType::Bool:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
        return value.toDouble() == 0;
    default:
        return false;
    }
}

} // namespace

QString ZQSoftwareUpdate::updaterPath()
{
    const auto installed = installedPath();
    return versionAt(installed) < versionAt(enclosedPath()) ? freshWorkingCopy() : installed;
}

bool ZQSoftwareUpdate::isAvailable()
{
    return isExecutableAt(installedPath()) || isExecutableAt(enclosedPath());
}

void ZQSoftwareUpdate::launchSoftwareUpdate()
{
    QString path;
    platform::performInBackground([&] { path = loggedUpdaterPath(); });
    const auto executable = path.isNull() ? QString() : platform::Bundle(path).executablePath();
    if (!executable.isNull()) {
        ZQTaskEx::runTaskAndReturn(executable, {});
    }
}

void ZQSoftwareUpdate::automaticallyCheckForUpdates()
{
    const auto path = loggedUpdaterPath();
    if (path.isNull()) {
        return;
    }
    if (!platform::isFolder(path)) {
        logFailure(QStringLiteral("updater bundle not found."));
        return;
    }
    const auto executable = platform::Bundle(path).executablePath();
    if (executable.isNull()) {
        logFailure(QStringLiteral("executable path doesn't exist"));
        return;
    }
    ZQTaskEx::runTaskAndReturn(executable, {QStringLiteral("-checkpath"), ownBundle().path()});
}

void ZQSoftwareUpdate::startup()
{
    const auto preferences = platform::dictionaryFromFile(appendingPathComponent(
        ZQLocalPaths::prefsDirectory(Domain::User), QStringLiteral("com.corvane.global.plist")));
    const auto setting =
        preferences.value_or(QVariantMap()).value(QStringLiteral("SUCheckAtStartup"));
    if (!isNo(setting)) {
        m_workers.start([] { automaticallyCheckForUpdates(); });
    }
}
