// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Pane/PopUpButton.h"

#include <QAbstractItemView>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QWheelEvent>

#include <utility>

namespace {

// Whether a closed menu would choose another item at this key.
bool chooses(const QKeyEvent &event)
{
    switch (event.key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
    case Qt::Key_Home:
    case Qt::Key_End:
        return true;
    default:
        return event.key() != Qt::Key_Space && !event.text().isEmpty() &&
               event.text().at(0).isPrint();
    }
}

} // namespace

PopUpButton::PopUpButton(QWidget *parent) : QComboBox(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    connect(this, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this](int index) {
        setToolTip(itemData(index, Qt::ToolTipRole).toString());
        m_reported = index;
        Q_EMIT chosen();
    });
    connect(this, QOverload<int>::of(&QComboBox::activated), this, [this](int index) {
        if (std::exchange(m_reported, -1) != index) {
            Q_EMIT chosen();
        }
    });
    connect(view()->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &PopUpButton::listSelectionChanged, Qt::QueuedConnection);
}

// A screen reader selects in the list without going there, and nothing would choose the item. Keys
// and mouse do both, one after the other.
void PopUpButton::listSelectionChanged()
{
    const auto selected = view()->selectionModel()->selectedIndexes();
    if (selected.size() == 1 && selected.first() != view()->currentIndex()) {
        hidePopup();
        setCurrentIndex(selected.first().row());
        m_reported = -1; // nothing is activated
    }
}

void PopUpButton::keyPressEvent(QKeyEvent *event)
{
    if (!chooses(*event)) {
        QComboBox::keyPressEvent(event);
    } else if (count() > 0) {
        showPopup();
        // Alt and an arrow only open the list.
        if ((event->modifiers() & Qt::AltModifier) == 0) {
            QCoreApplication::sendEvent(view(), event);
        }
        event->accept();
    }
}

void PopUpButton::wheelEvent(QWheelEvent *event)
{
    event->ignore(); // what the menu lies in scrolls
}
