// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Tests/Shared/Files/CopyDelegate.h"

#include "Platform/Core/Threads/MainThread.h"

#include <algorithm>

namespace test {

qint64 CopyDelegateBase::Report::stage() const
{
    return report.value(QStringLiteral("stage")).toLongLong();
}

CopyDelegateBase::CopyDelegateBase()
{
    m_timer.start();
}

int CopyDelegateBase::progress() const
{
    return static_cast<int>(reports.size()) - finished();
}

int CopyDelegateBase::finished() const
{
    return static_cast<int>(std::count_if(
        reports.begin(), reports.end(), [](const Report &report) { return report.stage() == 3; }));
}

bool CopyDelegateBase::waitForEnd(int seconds) const
{
    QElapsedTimer timer;
    timer.start();
    while (finished() == 0 && timer.elapsed() < seconds * 1000LL) {
        platform::pumpEvents();
    }
    return finished() > 0;
}

void CopyDelegateBase::note(const QVariantMap &report, QObject *operation)
{
    reports.append({report, qobject_cast<platform::FileOperation *>(operation) != nullptr,
                    platform::isMainThread(), m_timer.elapsed()});
    if (reports.last().stage() == 3) {
        then();
    }
}

void CopyDelegate::fileOperationProgress(const QVariantMap &report, QObject *fileOperation)
{
    note(report, fileOperation);
}

void CopyDelegate::fileOperationFinished(const QVariantMap &report, QObject *fileOperation)
{
    if (holdsOperation) {
        held = qobject_cast<platform::FileOperation *>(fileOperation)->shared_from_this();
    }
    note(report, fileOperation);
}

} // namespace test
