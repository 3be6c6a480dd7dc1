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
    for (auto *alert : visibleAlerts()) {
        if (!m_seen.contains(alert)) {
            m_seen << alert;
            ++m_count;
            // On a pass of its own: inside this one the timer would not look for further alerts.
            QTimer::singleShot(0, &m_timer, [this, shown = QPointer(alert)] {
                if (shown != nullptr && shown->isVisible()) {
                    m_act(*shown);
                }
            });
        }
    }
}

QList<platform::AlertPanel *> visibleAlerts()
{
    QList<platform::AlertPanel *> found;
    for (auto *widget : QApplication::topLevelWidgets()) {
        auto *alert = qobject_cast<platform::AlertPanel *>(widget);
        if (alert != nullptr && alert->isVisible()) {
            found << alert;
        }
    }
    return found;
}

platform::AlertPanel *visibleAlert()
{
    return visibleAlerts().value(0);
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
