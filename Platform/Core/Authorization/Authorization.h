// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/Descriptor.h"

#include <QByteArray>
#include <QStringList>

#include <sys/types.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace platform {

class ChildExit;
class PasswordAgent;

// What became of a request; the numbers are those of the platform's authorisation services.
enum class AuthorizationStatus : std::int32_t {
    Success = 0,
    Denied = -60005,                // polkit, or a wrong password
    Canceled = -60006,              // by the user, in the dialog
    InteractionNotAllowed = -60007, // no polkit agent runs that could ask
    Internal = -60008,              // polkit or the helper is missing, broken or gone
    ToolExecuteFailure = -60031,    // the tool could not be started
};

// The administrator's authorisation of this process. Behind it is one helper process of root's,
// started by pkexec, that runs tools for this process and for the children that it names. What
// goes wrong is said in words on the system console. Any thread; one acquire() at a time.
class Authorization {
public:
    enum class Output { Discarded, Wanted };

    struct Tool {
        AuthorizationStatus status;
        Descriptor output; // standard output, to be read; none where it is discarded
    };

    // For one child program: it inherits the descriptor under its number, and the entry
    // ("NAME=VALUE") is put into its environment.
    struct Inheritance {
        Descriptor descriptor;
        QByteArray environmentEntry;
        Descriptor ours; // the other end; the child waits for what nameChild() sends over it
    };

    // A reference without any right. Null, with the reason in status, where nobody can be asked:
    // the helper is not installed or not root's alone, or pkexec is missing.
    static std::shared_ptr<Authorization> create(AuthorizationStatus *status);

    // The one that a parent process has handed down; null where there is none. Only a helper of
    // root's is believed. Waits at most ten seconds for the parent to name this process to it.
    // Takes the descriptor, so the second call in a process gives null.
    static std::shared_ptr<Authorization> handedDown();

    // Ends the authorisation. The helper serves nobody any more when its last holder has ended it,
    // or when the process has ended that has acquired it; tools that it has started run on.
    ~Authorization();
    Authorization(const Authorization &) = delete;
    Authorization &operator=(const Authorization &) = delete;

    // Has the desktop's polkit agent ask for the administrator's password. Waits for the answer.
    AuthorizationStatus acquire();

    // The same without a dialog: answers polkit with this account's name and password.
    AuthorizationStatus acquire(const QString &user, const QString &password);

    // Whether the right was acquired and the helper is there.
    bool isAlive() const;

    // Starts a tool as root, in "/" with a fixed environment, and returns when it has started.
    // Only files that nobody but root can change are run (see systemCommand()); together with its
    // arguments at most 128 KiB. Its error text is discarded. A helper that does not answer within
    // ten seconds counts as gone, and does not start the tool later.
    Tool run(const QString &path, const QStringList &arguments, Output output) const;

    // What lets a child program use this authorisation, too, as long as this process lives. An
    // invalid descriptor where there is nothing to hand down.
    Inheritance handDown() const;

    // To be called once the child has been started: names it to the helper, which serves no process
    // else, and lets the child go on. False, with the reason on the system console, where the
    // helper does not take it: it takes only children of the process that has acquired the
    // authorisation.
    bool nameChild(pid_t child, Inheritance inheritance) const;

private:
    Authorization() = default;

    static QByteArray helperPath();
    AuthorizationStatus startHelper(PasswordAgent *agent);
    std::optional<std::int32_t> answerTo(const std::string &request, int descriptor) const;

    Descriptor m_socket;
    mutable std::atomic<bool> m_isLost = false; // the helper has not answered a request
    std::shared_ptr<ChildExit> m_helper;        // null where a parent process has started it
};

} // namespace platform
