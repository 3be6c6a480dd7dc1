// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Desktop/Alerts/MainWindow.h"

#include "Platform/Core/Threads/MainThread.h"
#include "Platform/Desktop/Alerts/AlertPanel.h"

#include <QApplication>
#include <QMainWindow>

namespace platform {
namespace {

// A window that others may belong to. A settings application may be a dialog with nothing behind
// it; an alert with nothing behind it is none.
bool isUsual(const QWidget *window)
{
    const auto isHost = window->windowType() == Qt::Dialog && window->parentWidget() == nullptr &&
                        qobject_cast<const AlertPanel *>(window) == nullptr;
    return window->isVisible() && (window->windowType() == Qt::Window || isHost);
}

int rank(const QWidget *window)
{
    const auto isMain = qobject_cast<const QMainWindow *>(window) != nullptr;
    const auto kind = isMain ? 2 : (window->windowType() == Qt::Window ? 1 : 0);
    return 2 * kind + (window->isActiveWindow() ? 1 : 0);
}

QWidget *findMainWindow()
{
    QWidget *best = nullptr;
    for (auto *window : QApplication::topLevelWidgets()) {
        if (isUsual(window) && (best == nullptr || rank(window) > rank(best))) {
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
