// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Support/ZQTroubleshootingUtils.h"

#include "Platform/Core/Files/FileStatus.h"
#include "Platform/Core/Text/PathText.h"
#include "Platform/Core/Text/TextFormat.h"
#include "Platform/Core/Threads/BackgroundWork.h"
#include "Platform/Core/Threads/MainThread.h"
#include "Platform/Desktop/Alerts/ModalAlert.h"
#include "Shared/Log/ZQLog.h"
#include "Shared/Support/ZQLogGathering.h"

#include <QDesktopServices>
#include <QGuiApplication>
#include <QUrl>

namespace {

using platform::AlertStyle;

void alert(const QString &title, const QString &message, platform::AlertStyle style)
{
    platform::runModalAlert({title, message, {}, {}, {}, style});
}

void alertOutcome(ZQLogGathering::Outcome outcome)
{
    switch (outcome) {
    case ZQLogGathering::Outcome::Compressed:
        alert(QStringLiteral("Logs gathered successfully"),
              QStringLiteral("The gathered logs were placed on your desktop."),
              AlertStyle::Informational);
        break;
    case ZQLogGathering::Outcome::NotCompressed:
        alert(QStringLiteral("Logs could not be gathered"),
              QStringLiteral("Please check your file permissions."), AlertStyle::Warning);
        break;
    case ZQLogGathering::Outcome::NothingFound:
        alert(QStringLiteral("No logs found"),
              QStringLiteral("There were no logs available to gather."), AlertStyle::Informational);
        break;
    case ZQLogGathering::Outcome::Failed:
        break; // the reason is on the console
    }
}

bool openFile(const QString &path)
{
    if (qobject_cast<QGuiApplication *>(QCoreApplication::instance()) == nullptr) {
        return false;
    }
    const auto url = QUrl::fromEncoded("file://" + platform::percentEncodedPath(path));
    auto opened = false;
    platform::performOnMainThreadAndWait([&] { opened = QDesktopServices::openUrl(url); });
    return opened;
}

bool viewLog(const QString &name, const QString &ending, const QString &whereMissing)
{
    const auto library = ZQLocalPaths::libraryDirectory(Domain::User);
    const auto path = library + QStringLiteral("/Logs/Corvane/") + name + ending;
    if (!library.isNull() && platform::fileExists(path)) {
        return openFile(path);
    }
    alert(QStringLiteral("No log found"), whereMissing, AlertStyle::Informational);
    return false;
}

} // namespace

bool ZQTroubleshootingUtils::gatherLogsForAppsWithNames(const QStringList &names, Silent silent,
                                                        const QStringList &additionalFiles,
                                                        const Finished &finished)
{
    if (names.isEmpty()) {
        return false;
    }
    ZQLogGathering gathering(names, additionalFiles);
    auto outcome = ZQLogGathering::Outcome::Failed;
    platform::performInBackground([&] {
        ZQLog::finishWriting();
        outcome = gathering.run();
    });
    if (finished) {
        finished({gathering.archive(), gathering.failure(), gathering.unreadableFolders()});
    }
    if (silent == Silent::No) {
        alertOutcome(outcome);
    }
    return outcome == ZQLogGathering::Outcome::Compressed;
}

bool ZQTroubleshootingUtils::gatherLogsForAppWithName(const QString &name)
{
    return !name.isNull() && gatherLogsForAppsWithNames(QStringList(name));
}

bool ZQTroubleshootingUtils::viewLogForApp(const QString &name)
{
    return viewLog(name, QStringLiteral(".1.log"),
                   QStringLiteral("You must perform a task before viewing the log."));
}

bool ZQTroubleshootingUtils::viewTaskLogForApp(const QString &name)
{
    return viewLog(name, QStringLiteral(".1.task.log"),
                   QStringLiteral("You must run the application as a task (e.g. through Runvale) "
                                  "before viewing a log."));
}
