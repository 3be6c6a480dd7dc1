// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Switch/ZQSwitchAccessibility.h"

#include "Preference Pane/Switch/ZQSwitch.h"

#include <QAccessibleWidget>

namespace {

class AccessibleSwitch final : public QAccessibleWidget {
public:
    explicit AccessibleSwitch(ZQSwitch *view) : QAccessibleWidget(view, QAccessible::CheckBox) {}

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.checkable = true;
        state.checked = view()->isOn();
        return state;
    }

    QStringList actionNames() const override
    {
        QStringList names;
        if (widget()->isEnabled()) {
            names << toggleAction() << pressAction();
        }
        return names + QAccessibleWidget::actionNames();
    }

    void doAction(const QString &name) override
    {
        if (name == toggleAction() || name == pressAction()) {
            view()->performClick();
        } else {
            QAccessibleWidget::doAction(name);
        }
    }

private:
    ZQSwitch *view() const { return static_cast<ZQSwitch *>(widget()); }
};

QAccessibleInterface *makeInterface(const QString & /*className*/, QObject *object)
{
    auto *view = qobject_cast<ZQSwitch *>(object);
    return view != nullptr ? new AccessibleSwitch(view) : nullptr;
}

// The factory is taken back when the pane's plug-in is unloaded.
class Installation {
public:
    Installation() { QAccessible::installFactory(makeInterface); }
    ~Installation() { QAccessible::removeFactory(makeInterface); }
    Installation(const Installation &) = delete;
    Installation &operator=(const Installation &) = delete;
};

} // namespace

void installSwitchAccessibility()
{
    static const Installation installation;
}
