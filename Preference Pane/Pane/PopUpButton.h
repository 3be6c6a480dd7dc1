// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QComboBox>

// A menu from which is chosen in its list only. While the list is closed the wheel changes nothing,
// and a key that would choose opens the list instead: who looks through it with the arrow keys
// chooses once, at its end. The tool tip is the selected item's.
class PopUpButton : public QComboBox {
    Q_OBJECT
public:
    explicit PopUpButton(QWidget *parent = nullptr);

Q_SIGNALS:
    // Another item was chosen, or the one that shows was chosen again: it may stand for one that is
    // not there any more.
    void chosen();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    void listSelectionChanged();

    int m_reported = -1; // the item that was told of and may still be activated
};
