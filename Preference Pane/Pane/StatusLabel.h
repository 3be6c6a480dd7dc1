// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QLabel>

// A one-line label for text from outside: never wider than its place, however long the text is;
// what does not fit is cut with an ellipsis and shown in the tool tip. Line breaks and other
// control characters are painted as spaces. text() is always the whole text.
class StatusLabel : public QLabel {
    Q_OBJECT
public:
    explicit StatusLabel(QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    bool event(QEvent *event) override;

private:
    QString shownText() const;
};
