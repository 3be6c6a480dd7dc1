// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Tests/Support/AlertWatcher.h"

#include <QAbstractButton>
#include <QApplication>
#include <QTest>

namespace test {

AlertWatcher::AlertWatcher(Act act) : m_act(std::move(act))
{
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { look(); });
    m_timer.start(std::chrono::milliseconds(20));
}

void AlertWatcher::look()
{
    auto *alert = visibleAlert();
    if (alert == nullptr || m_seen.contains(alert)) {
        return;
    }
    m_seen << alert;
    ++m_count;
    m_act(*alert);
}

platform::AlertPanel *visibleAlert()
{
    platform::AlertPanel *found = nullptr;
    for (auto *widget : QApplication::topLevelWidgets()) {
        auto *alert = qobject_cast<platform::AlertPanel *>(widget);
        if (alert != nullptr && alert->isVisible()) {
            found = alert;
        }
    }
    return found;
}

void click(platform::AlertPanel &alert, const char *button)
{
    auto *found = alert.findChild<QAbstractButton *>(QLatin1String(button));
    if (found == nullptr) {
        qFatal("the alert has no button \"%s\"", button);
    }
    QTest::mouseClick(found, Qt::LeftButton);
}

} // namespace test
