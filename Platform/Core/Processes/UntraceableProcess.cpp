// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Processes/UntraceableProcess.h"

#include "Platform/Core/Files/FileContents.h"

#include <QDir>
#include <QSet>

#include <sys/prctl.h>

#include <mutex>

namespace platform {
namespace {

// What the kernel calls dumpable decides about tracing, too; see ptrace(2) and prctl(2).
constexpr int traceable = 1;

std::mutex mutex;
int holders = 0;
bool wasTraceable = false;

// Nothing for a thread that has ended.
pid_t tracerOfThread(const QString &thread)
{
    const auto status =
        contentsOfFile(QStringLiteral("/proc/self/task/%1/status").arg(thread), 65536)
            .value_or(QByteArray());
    const QByteArray key("\nTracerPid:");
    const auto start = status.indexOf(key);
    return start < 0 ? 0 : status.mid(start + key.size()).split('\n').first().trimmed().toInt();
}

} // namespace

UntraceableProcess::UntraceableProcess()
{
    const std::lock_guard lock(mutex);
    if (holders++ == 0) {
        wasTraceable = ::prctl(PR_GET_DUMPABLE) == traceable;
        ::prctl(PR_SET_DUMPABLE, 0);
    }
}

UntraceableProcess::~UntraceableProcess()
{
    const std::lock_guard lock(mutex);
    if (--holders == 0 && wasTraceable) {
        ::prctl(PR_SET_DUMPABLE, traceable);
    }
}

bool isUntraceable()
{
    return ::prctl(PR_GET_DUMPABLE) != traceable;
}

pid_t tracerOfThisProcess()
{
    // A traced thread may start another one and be let go meanwhile: until there is no new one.
    QSet<QString> known;
    for (bool isNew = true; isNew;) {
        isNew = false;
        const auto threads =
            QDir(QStringLiteral("/proc/self/task")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        for (const auto &thread : threads) {
            if (known.contains(thread)) {
                continue;
            }
            known += thread;
            isNew = true;
            if (const auto tracer = tracerOfThread(thread); tracer != 0) {
                return tracer;
            }
        }
    }
    return 0;
}

} // namespace platform
