// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QLabel>

// A one-line label whose text can look embossed into the background.
class EmbossedLabel : public QLabel {
    Q_OBJECT
public:
    // The values are those of the platform's cell background styles.
    enum class BackgroundStyle { Light = 0, Raised = 2 };

    using QLabel::QLabel;

    BackgroundStyle backgroundStyle() const { return m_style; }
    void setBackgroundStyle(BackgroundStyle style);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    BackgroundStyle m_style = BackgroundStyle::Light;
};
