// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Desktop/Alerts/MainWindow.h"

#include "Platform/Core/Threads/MainThread.h"

#include <QApplication>
#include <QMainWindow>

namespace platform {
namespace {

int rank(const QWidget *window)
{
    const auto isMain = qobject_cast<const QMainWindow *>(window) != nullptr;
    return (isMain ? 2 : 0) + (window->isActiveWindow() ? 1 : 0);
}

QWidget *findMainWindow()
{
    QWidget *best = nullptr;
    for (auto *window : QApplication::topLevelWidgets()) {
        const auto usual = window->windowType() == Qt::Window && window->isVisible();
        if (usual && (best == nullptr || rank(window) > rank(best))) {
            best = window;
        }
    }
    return best;
}

} // namespace

bool hasWindows()
{
    return qobject_cast<QApplication *>(QCoreApplication::instance()) != nullptr;
}

QWidget *mainWindow()
{
    QWidget *window = nullptr;
    if (hasWindows()) {
        performOnMainThreadAndWait([&] { window = findMainWindow(); });
    }
    return window;
}

} // namespace platform
