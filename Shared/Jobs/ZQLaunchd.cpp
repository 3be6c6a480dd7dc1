// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Jobs/ZQLaunchd.h"

#include "Platform/Core/Folders/StandardFolders.h"
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Platform/Core/Text/Console.h"
#include "Platform/Core/Text/LiteralFormat.h"
#include "Platform/Core/Text/TextFormat.h"
#include "Platform/Desktop/Alerts/MainWindow.h"
#include "Shared/Alerts/ZQAlert.h"
#include "Shared/Authorization/ZQAuthorization.h"
#include "Shared/Files/ZQFileManager.h"
#include "Shared/Jobs/RootsJobFile.h"
#include "Shared/Log/ZQLog.h"
#include "Shared/Tasks/ZQTaskEx.h"

#include <thread>

using namespace std::chrono_literals;

namespace {

constexpr auto commandTimeout = 10s;
constexpr auto settleTime = 500us; // what the file system is given to show a change

const QString launchctl = QStringLiteral("/bin/launchctl");

QString jobFolder(Domain domain, JobKind kind)
{
    return ZQLocalPaths::libraryDirectory(domain) + (kind == JobKind::Agent
                                                         ? QStringLiteral("/LaunchAgents")
                                                         : QStringLiteral("/LaunchDaemons"));
}

QString jobFile(const QString &folder, const QString &label)
{
    return folder + platform::format(QStringLiteral("/%@.plist"), label);
}

void run(const QString &command, const QStringList &arguments)
{
    ZQTaskEx::runTask(command, arguments, commandTimeout);
}

QString checkPermissions(const QString &folder)
{
    return platform::format(
        QStringLiteral("Please check you have correct permissions for the directory %@."), folder);
}

void alert(const QString &message, const QString &folder)
{
    ZQAlert::alertSheetWithMessageText(message, platform::literalFormat(checkPermissions(folder)),
                                       platform::mainWindow());
}

// Writes the file where only an administrator may, by way of the temporary folder.
bool writeWithAuthorization(const QVariantMap &settings, const QString &folder, const QString &path,
                            bool mayMoveAsRoot)
{
    const auto unableToCreate = platform::format(
        QStringLiteral("Error: Unable to create LaunchAgent. Please check you have correct "
                       "permissions for the directory %@"),
        folder);
    const auto temporary =
        ZQLocalPaths::tempDirectory() + path.mid(path.lastIndexOf(QLatin1Char('/')));
    if (!platform::writeDictionaryToFile(settings, temporary)) {
        // Kept on purpose for support, which knows the texts: the log says "create" where the
        // console and the alert say "write".
        ZQLog::appendLog(QStringLiteral("%@"), unableToCreate);
        platform::consoleLog(
            QStringLiteral("Error: Unable to write LaunchAgent data. Please check you have correct "
                           "permissions for the directory %@"),
            folder);
        alert(QStringLiteral("Error: Unable to write LaunchAgent data"), folder);
        return false;
    }
    if (ZQFileManager::fileExistsAtPath(path)) {
        ZQFileManager::removeFile(path, 5s);
    }
    ZQLog::appendLog(QStringLiteral("Unable to write launchd plist - trying to authorize..."));
    if (mayMoveAsRoot ? !ZQFileManager::moveFile(temporary, path, commandTimeout)
                      : !ZQFileManager::moveFile(temporary, path, ShouldAuth::No)) {
        ZQLog::appendLog(QStringLiteral("%@"), unableToCreate);
        platform::consoleLine(unableToCreate);
        alert(QStringLiteral("Error: Unable to create LaunchAgent"), folder);
        ZQFileManager::removeFile(temporary);
        return false;
    }
    ZQFileManager::removeFile(temporary, commandTimeout);
    return true;
}

enum class Awaited : bool { Gone, There };

// What was done with privileges has only been started so far. Who takes the file for the job's
// presence, or writes it anew, must not meet the old state.
void waitUntil(Awaited awaited, const QString &path)
{
    const auto end = std::chrono::steady_clock::now() + commandTimeout;
    while (ZQFileManager::fileExistsAtPath(path) != (awaited == Awaited::There) &&
           std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(1ms);
    }
}

// A job for all users belongs to root; a job of the user's own keeps its owner.
void setOwnerAndMode(const QString &path, Domain domain, ShouldAuth privileged)
{
    const QString chown = QStringLiteral("/usr/sbin/chown");
    const QString chmod = QStringLiteral("/bin/chmod");
    const QStringList owner{QStringLiteral("root:wheel"), path};
    const QStringList mode{QStringLiteral("644"), path};
    if (privileged == ShouldAuth::No) {
        if (domain == Domain::Local) {
            run(chown, owner);
        }
        run(chmod, mode);
        return;
    }
    auto &authorization = ZQAuthorization::sharedController();
    if (domain == Domain::Local) {
        authorization.authExecTask(chown, owner);
    }
    std::this_thread::sleep_for(settleTime);
    authorization.authExecTask(chmod, mode);
    std::this_thread::sleep_for(1s);
}

// What the job's file has to become to be loaded. Only a job for all users can be refused: it would
// run with the rights of others than those who can change it.
class JobInstallation {
public:
    JobInstallation(const QVariantMap &settings, Domain domain, const QString &folder,
                    const QString &path)
        : m_domain(domain), m_path(path), m_file(path, platform::propertyListToXml(settings)),
          m_folderObjection(RootsJobFile::folderObjection(folder)),
          m_refusal(domain == Domain::Local ? m_folderObjection : QString())
    {
    }

    // Not to where somebody else may put what he likes.
    bool mayMoveAsRoot() const { return m_refusal.isNull(); }

    // The file has been moved there. Who made it could still write to it, and it may not even be
    // that file; so root makes another before it gets its owner.
    void replaceMovedFile()
    {
        m_isMoved = m_domain == Domain::Local && m_refusal.isNull();
        if (m_isMoved && !m_file.replace()) {
            takeAway();
        }
    }

    void setOwnerAndMode(ShouldAuth privileged) const
    {
        if (m_isTakenAway) {
            return; // what a move that is late puts there must not become root's
        }
        // Root's tools follow the links that others plant.
        if (m_folderObjection.isNull()) {
            ::setOwnerAndMode(m_path, m_domain, privileged);
        } else if (!platform::isRunningAsRoot()) {
            ::setOwnerAndMode(m_path, m_domain, ShouldAuth::No);
        } else {
            m_file.setModeOfFileOnly();
        }
    }

    // Why the job was not loaded; null where nobody has told so.
    QString load()
    {
        // A move that somebody holds up sets the owner of what has the name by the time it ends: of
        // the file that is loaded nobody has set any.
        const auto isRight = m_domain != Domain::Local || !m_refusal.isNull() ||
                             ((!m_isMoved || m_file.replace()) && m_file.isInPlace());
        if (m_isTakenAway || !isRight) {
            takeAway();
        }
        if (m_refusal.isNull()) {
            QByteArray complaint;
            ZQTaskEx::runTask(launchctl, {QStringLiteral("load"), m_path}, commandTimeout,
                              &complaint);
            return complaint.isEmpty() ? QString() : QString::fromUtf8(complaint).trimmed();
        }
        const auto line = platform::format(QStringLiteral("Error: The job %@ is not loaded: %@"),
                                           m_path, m_refusal);
        ZQLog::appendLog(QStringLiteral("%@"), line);
        platform::consoleLine(line);
        return m_refusal;
    }

private:
    // No manager is to find it at the next log-in either.
    void takeAway()
    {
        m_isTakenAway = true;
        m_refusal = QStringLiteral("the file is not root's alone as it was asked for");
        m_file.remove();
    }

    Domain m_domain;
    QString m_path;
    RootsJobFile m_file;
    QString m_folderObjection; // null: nobody but root can change the folder
    QString m_refusal;         // null: none
    bool m_isMoved = false;    // by root, from where the user may write
    bool m_isTakenAway = false;
};

} // namespace

bool ZQLaunchd::startLaunchAgent(const QString &label, const QVariantMap &settings, Domain domain)
{
    return startJob(label, settings, domain, JobKind::Agent, ShouldAuth::No);
}

bool ZQLaunchd::startJob(const QString &label, const QVariantMap &settings, Domain domain,
                         JobKind kind, ShouldAuth shouldAuth, const QString &killProcessName,
                         QString *objection)
{
    const auto folder = jobFolder(domain, kind);
    if (!ZQFileManager::fileExistsAtPath(folder) &&
        ZQFileManager::createDirectory(folder, shouldAuth)) {
        waitUntil(Awaited::There, folder);
    }
    const auto path = jobFile(folder, label);
    if (ZQFileManager::fileExistsAtPath(path)) {
        removeJob(label, domain, kind, shouldAuth);
    }
    JobInstallation installation(settings, domain, folder, path);
    auto privileged = shouldAuth;
    if (!platform::writeDictionaryToFile(settings, path)) {
        if (!writeWithAuthorization(settings, folder, path, installation.mayMoveAsRoot())) {
            return false;
        }
        privileged = ShouldAuth::Yes;
        installation.replaceMovedFile();
    }
    if (!killProcessName.isNull()) {
        run(QStringLiteral("/usr/bin/killall"), {killProcessName});
    }
    installation.setOwnerAndMode(privileged);
    run(launchctl, {QStringLiteral("unload"), path});
    const auto said = installation.load();
    if (objection != nullptr) {
        *objection = said;
    }
    return true;
}

void ZQLaunchd::stopJob(const QString &label, Domain domain, JobKind kind,
                        ShouldAuth /*shouldAuth*/)
{
    if (label.isNull()) {
        return;
    }
    run(launchctl, {QStringLiteral("unload"), jobFile(jobFolder(domain, kind), label)});
    run(launchctl, {QStringLiteral("remove"), label});
}

void ZQLaunchd::removeJob(const QString &label, Domain domain, JobKind kind, ShouldAuth shouldAuth)
{
    stopJob(label, domain, kind, shouldAuth);
    const auto folder = jobFolder(domain, kind);
    const auto path = jobFile(folder, label);
    if (!ZQFileManager::fileExistsAtPath(path)) {
        return;
    }
    if (ZQFileManager::removeFile(path, shouldAuth)) {
        std::this_thread::sleep_for(settleTime);
        waitUntil(Awaited::Gone, path);
    } else if (shouldAuth == ShouldAuth::Yes) {
        alert(QStringLiteral("Error: Unable to remove LaunchAgent"), folder);
    }
}

void ZQLaunchd::removeLaunchAgent(const QString &label, Domain /*domain*/)
{
    removeJob(label, Domain::User, JobKind::Agent, ShouldAuth::Yes);
}
