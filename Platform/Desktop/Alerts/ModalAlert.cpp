// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Desktop/Alerts/ModalAlert.h"

#include "Platform/Core/Text/Console.h"
#include "Platform/Core/Threads/MainThread.h"
#include "Platform/Desktop/Alerts/MainWindow.h"

#include <QPointer>

#include <memory>
#include <optional>

namespace platform {
namespace {

qint64 runOnMainThread(const AlertDescription &description)
{
    // Destroyed with the main window.
    const QPointer<AlertPanel> panel(new AlertPanel(description, mainWindow()));
    panel->setWindowModality(Qt::ApplicationModal);
    std::optional<qint64> answer;
    QObject::connect(panel, &AlertPanel::answered, panel,
                     [&answer](qint64 code) { answer = code; });
    panel->begin();
    pumpEventsUntil([&] { return answer.has_value() || panel == nullptr; });
    if (panel != nullptr) {
        panel->orderOut();
        delete panel;
    }
    return answer.value_or(description.escapeReturn());
}

} // namespace

qint64 runModalAlert(const AlertDescription &description)
{
    if (!hasWindows()) {
        consoleLog(QStringLiteral("%@: %@"), description.messageText, description.informativeText);
        return description.escapeReturn();
    }
    qint64 answer = 0;
    performOnMainThreadAndWait([&] { answer = runOnMainThread(description); });
    return answer;
}

} // namespace platform
