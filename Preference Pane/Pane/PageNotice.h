// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QFrame>

#include <functional>

class QLabel;
class QPushButton;
class QToolButton;

// What the page has to say below the status line, until somebody closes it: a text, as it is and
// not as rich text, and a button where there is something to do about it.
class PageNotice : public QFrame {
    Q_OBJECT
public:
    explicit PageNotice(QWidget *parent = nullptr);

    // Null text takes the notice away.
    void showText(const QString &text, const QString &buttonTitle = {},
                  const std::function<void()> &action = {});

    // Why the listener does not run. Stays until the next start, which clears it: the stop that
    // follows a failed start by itself must not.
    void showFailedStart(const QString &text);
    void clearButFailedStart();

    // Puts the buttons behind that widget for the Tab key.
    void followInTabOrder(QWidget *previous);

private:
    QLabel *m_icon;
    QLabel *m_label;
    QPushButton *m_actionButton;
    QToolButton *m_closeButton;
    bool m_isFailedStart = false;
};
