// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Authorization/Authorization.h"

#include <QStringList>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>

enum class WithGUI { No, Yes };

// For root without a user's folder: delete instead of trashing.
enum class DeleteOnRootAccount { No, Yes };

enum class Async { No, Yes };

// The administrator's authorisation of this process, obtained at most once, and what is done with
// it: file operations and tools run as root. A process of root's needs none and runs the same tools
// itself. What goes wrong is a result and a line in the system console. Any thread; whatever may
// ask for the authorisation blocks until the user has answered.
class ZQAuthorization {
public:
    /// sharedController:
    /// The one instance. The first call says whether the system may show its dialog.
    /// sharedController
    static ZQAuthorization &sharedController(WithGUI withGUI = WithGUI::Yes);

    ZQAuthorization(const ZQAuthorization &) = delete;
    ZQAuthorization &operator=(const ZQAuthorization &) = delete;

    bool isAuthorized() const;
    bool canAuthorize() const;

    /// authStart
    /// Obtains the authorisation, with the system's dialog, where there is none yet. False when
    /// refused; then there is none.
    bool authStart();

    /// authStartWithUser:password:
    /// Obtains it without a dialog. It takes the place of one obtained before, whether it succeeds
    /// or not. Neither may be null.
    bool authStartWithUser(const QString &user, const QString &password);

    /// authEnd
    /// Tools that have been started run on.
    void authEnd();

    // The operations below obtain the authorisation where there is none. Except for authExecTask
    // without async, they return as soon as the tool has been started, before it has finished: true
    // says that it was started. The guard of system directories looks at the source only and
    // protects the folders themselves, not what is in them.

    /// authRemoveFile:
    bool authRemoveFile(const QString &path);

    /// authTrashFile:
    /// authTrashFile:deleteOnRootAccount:
    /// Moves a file to the trash, under a name with the date and time where its own is taken. For
    /// root without a user's folder and with DeleteOnRootAccount::Yes, removes what has the name in
    /// the trash and leaves the file: kept on purpose for the maker's other programs.
    bool authTrashFile(const QString &path,
                       DeleteOnRootAccount deleteOnRootAccount = DeleteOnRootAccount::No);

    /// authTrashFolderContents:
    /// authTrashFolderContents:deleteOnRootAccount:
    /// Every entry, hidden ones too, each as authTrashFile(). False when one failed.
    bool authTrashFolderContents(const QString &folder,
                                 DeleteOnRootAccount deleteOnRootAccount = DeleteOnRootAccount::No);

    /// authMoveFolderContents:toPath:
    /// Every entry into a folder that exists. False when one failed.
    bool authMoveFolderContents(const QString &folder, const QString &destination);

    /// authMoveFile:toPath:
    /// To the path itself, or into it under the file's own name where it is a folder.
    bool authMoveFile(const QString &source, const QString &destination);

    /// authCopyFile:toPath:
    /// Likewise; never refused as a system directory: kept on purpose for the maker's other
    /// programs.
    bool authCopyFile(const QString &source, const QString &destination);

    /// authCreateDir:
    /// With those above it that are missing. Waits 500 microseconds for it.
    bool authCreateDir(const QString &path);

    /// authExecTask:parameters:
    /// authExecTask:parameters:async:
    /// 0 when the tool was started (and, without async, has closed its output), -2 when it does not
    /// exist, -1 without authorisation, else the platform's status. Its exit status is not looked
    /// at. Unless for a process of root's the tool runs in "/", so that paths are to be absolute.
    std::int32_t authExecTask(const QString &tool, const QStringList &parameters,
                              Async async = Async::Yes);

    // How the last authStart() that had to ask ended: tells a refusal from nobody to ask.
    platform::AuthorizationStatus lastStatus() const
    {
        return m_lastStatus.load(std::memory_order_relaxed);
    }

    // Whether the system may show its dialog.
    bool hasGUI() const { return m_hasGUI.load(std::memory_order_relaxed); }
    void setHasGUI(bool hasGUI) { m_hasGUI.store(hasGUI, std::memory_order_relaxed); }

    // The authorisation obtained; null when none.
    std::shared_ptr<platform::Authorization> authRef() const;
    void setAuthRef(std::shared_ptr<platform::Authorization> authRef);

    // The user's home folder as it was at creation; null when the process was root's then.
    QString userDirectory() const { return m_userDirectory; }

private:
    explicit ZQAuthorization(WithGUI withGUI);
    ~ZQAuthorization();

    QString trashDestination(const QString &path) const;

    // Says on the console, with the message, that the path is guarded.
    static bool isSystemDirectory(const QString &path, const QString &message);

    // A path as a tool's argument: never taken for an option, and for a tool that the authorisation
    // runs, which is in "/", a full path. Full paths stay as they are.
    static QString pathArgument(const QString &path);

    std::atomic<bool> m_hasGUI;
    std::atomic<platform::AuthorizationStatus> m_lastStatus =
        platform::AuthorizationStatus::Success;
    const QString m_userDirectory;
    std::mutex m_acquiring; // so that two callers never ask the user twice
    mutable std::mutex m_mutex;
    std::shared_ptr<platform::Authorization> m_authRef;
};
