// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Processes/ChildProcess.h"

#include <functional>
#include <memory>

namespace test {

QString text(const char *utf8);

// A command that lets "/bin/sh" carry out the script; not launched yet.
std::unique_ptr<platform::ChildProcess> shell(const QString &script);

// Waits for a command in the event loop once. A sanitizer looks at each class when it first meets
// it, with system calls of its own: tests in which those fail let it do that before.
void waitInEventLoop();

// Writes a file that everybody may execute.
void makeExecutable(const QString &path, const QByteArray &contents);

// Whether this process has no child, not even a zombie; the second waits up to 30 seconds for it.
bool hasNoChildren();
bool losesItsChildren();

// How many descriptors and threads this process has.
int openDescriptors();
int threads();

// Wait up to 30 seconds, without serving events, until that is so, until the file is there.
bool becomesTrue(const std::function<bool()> &condition);
bool appears(const QString &path);

} // namespace test
