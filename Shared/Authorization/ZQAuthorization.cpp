// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Authorization/ZQAuthorization.h"

#include "Platform/Core/Basics/SystemCommand.h"
#include "Platform/Core/Folders/StandardFolders.h"
#include "Platform/Core/Processes/UntraceableProcess.h"
#include "Platform/Core/Text/Console.h"
#include "Platform/Core/Text/FileName.h"
#include "Shared/Basics/ZQLocalPaths.h"
#include "Shared/Log/ZQLog.h"
#include "Shared/Tasks/ZQTaskEx.h"

#include <unistd.h>

#include <array>
#include <cerrno>

namespace {

using platform::Authorization;
using platform::AuthorizationStatus;

constexpr std::int32_t noSuchTool = -2;
constexpr std::int32_t notAuthorized = -1;

// Nobody else of this user's may come by the authorisation as long as anybody here holds it. The
// members end in the opposite order.
struct Guarded {
    platform::UntraceableProcess untraceable;
    std::shared_ptr<Authorization> authorization;
};

// Says so on the system console. To be asked while this process is untraceable.
bool isTraced()
{
    const auto tracer = platform::tracerOfThisProcess();
    if (tracer != 0) {
        platform::consoleLog(
            QStringLiteral("No administrator's authorisation for this process while it is traced "
                           "by process %d, which could use it."),
            tracer);
    }
    return tracer != 0;
}

std::shared_ptr<Authorization> createAuthorization(AuthorizationStatus *status)
{
    if (isTraced()) {
        *status = AuthorizationStatus::Internal;
        return nullptr;
    }
    return Authorization::create(status);
}

std::shared_ptr<Authorization> handedDownAuthorization()
{
    auto authorization = Authorization::handedDown();
    return authorization != nullptr && isTraced() ? nullptr : authorization;
}

// Returns when the tool has closed its output, which most do by ending.
void readToEnd(const platform::Descriptor &output)
{
    std::array<char, 4096> buffer{};
    ssize_t size = 0;
    do {
        size = ::read(output.fd(), buffer.data(), buffer.size());
    } while (size > 0 || (size < 0 && errno == EINTR));
}

bool toolExists(const QString &tool)
{
    const auto file = platform::fileNameBytes(platform::systemCommand(tool));
    return !tool.contains(QChar(0)) && ::access(file.constData(), F_OK) == 0;
}

} // namespace

ZQAuthorization &ZQAuthorization::sharedController(WithGUI withGUI)
{
    static ZQAuthorization controller(withGUI);
    return controller;
}

ZQAuthorization::ZQAuthorization(WithGUI withGUI)
    : m_hasGUI(withGUI == WithGUI::Yes),
      m_userDirectory(platform::isRunningAsRoot() ? QString() : ZQLocalPaths::userDirectory())
{
    const platform::UntraceableProcess untraceable;
    setAuthRef(handedDownAuthorization());
}

ZQAuthorization::~ZQAuthorization()
{
    authEnd();
}

std::shared_ptr<Authorization> ZQAuthorization::authRef() const
{
    const std::lock_guard lock(m_mutex);
    return m_authRef;
}

void ZQAuthorization::setAuthRef(std::shared_ptr<Authorization> authRef)
{
    if (authRef != nullptr) {
        const auto guarded = std::make_shared<Guarded>();
        guarded->authorization = std::move(authRef);
        authRef = {guarded, guarded->authorization.get()};
    }
    const std::lock_guard lock(m_mutex);
    m_authRef.swap(authRef); // what was there ends after the lock
}

bool ZQAuthorization::isAuthorized() const
{
    const auto reference = authRef();
    // One whose helper has gone is none: the next operation asks for another.
    return platform::isRunningAsRoot() || (reference != nullptr && reference->isAlive());
}

bool ZQAuthorization::canAuthorize() const
{
    return hasGUI() || platform::isRunningAsRoot();
}

bool ZQAuthorization::authStart()
{
    if (isAuthorized()) {
        return true;
    }
    if (!hasGUI()) {
        platform::consoleLine(QStringLiteral("Unable to authorize"));
        return false;
    }
    const std::lock_guard acquiring(m_acquiring);
    if (isAuthorized()) {
        return true; // another thread was asked meanwhile
    }
    const platform::UntraceableProcess untraceable; // before there is anything to take
    auto status = AuthorizationStatus::Success;
    auto reference = createAuthorization(&status);
    if (reference != nullptr) {
        status = reference->acquire();
    }
    m_lastStatus.store(status, std::memory_order_relaxed);
    if (status != AuthorizationStatus::Success) {
        setAuthRef(nullptr);
        return false;
    }
    setAuthRef(std::move(reference));
    return true;
}

bool ZQAuthorization::authStartWithUser(const QString &user, const QString &password)
{
    if (platform::isRunningAsRoot()) {
        return true;
    }
    if (user.isNull() || password.isNull()) {
        return false;
    }
    const std::lock_guard acquiring(m_acquiring);
    const platform::UntraceableProcess untraceable; // before there is anything to take
    auto status = AuthorizationStatus::Success;
    auto reference = createAuthorization(&status);
    setAuthRef(nullptr);
    if (reference == nullptr) {
        platform::consoleLog(QStringLiteral("Unable to create authRef - error %d"),
                             static_cast<std::int32_t>(status));
        return false;
    }
    if (reference->acquire(user, password) != AuthorizationStatus::Success) {
        const auto text = QStringLiteral("Authorization failed. Invalid username or password");
        platform::consoleLine(text);
        ZQLog::appendLog(text);
        return false;
    }
    setAuthRef(std::move(reference));
    return true;
}

void ZQAuthorization::authEnd()
{
    setAuthRef(nullptr);
}

std::int32_t ZQAuthorization::authExecTask(const QString &tool, const QStringList &parameters,
                                           Async async)
{
    if (!toolExists(tool)) {
        platform::consoleLog(QStringLiteral("Unable to execute task: path %@ doesn't exist"), tool);
        return noSuchTool;
    }
    if (platform::isRunningAsRoot()) {
        if (async == Async::Yes) {
            ZQTaskEx::runTaskAndReturn(tool, parameters);
        } else {
            ZQTaskEx::runTask(tool, parameters);
        }
        return 0;
    }
    if (!isAuthorized()) {
        authStart();
    }
    const auto reference = authRef();
    if (reference == nullptr || !isAuthorized()) {
        return notAuthorized;
    }
    const auto run = reference->run(tool, parameters,
                                    async == Async::Yes ? Authorization::Output::Discarded
                                                        : Authorization::Output::Wanted);
    if (run.status == AuthorizationStatus::Success && async == Async::No) {
        readToEnd(run.output);
    }
    return static_cast<std::int32_t>(run.status);
}
