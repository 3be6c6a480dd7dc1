// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QTimer>
#include <QWidget>

// A small turning progress indicator. Invisible, and without a running timer, while it stands
// still; its place in the layout stays.
class ProgressSpinner : public QWidget {
    Q_OBJECT
public:
    explicit ProgressSpinner(QWidget *parent = nullptr);

    bool isAnimating() const { return m_animating; }
    void startAnimation();
    void stopAnimation();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void runTimer();

    QTimer m_timer;
    bool m_animating = false;
    int m_step = 0;
};
