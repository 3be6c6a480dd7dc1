// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QTextBrowser>

#include <memory>

namespace platform {

// A paragraph of plain text in an alert: looks like a label, but breaks words that are too long for
// a line and scrolls where a label would grow beyond the screen.
class AlertText : public QTextBrowser {
    Q_OBJECT
public:
    // Shows at most maxLength UTF-16 units of the text.
    AlertText(const QString &text, int maxLength, QWidget *parent);

    // The preferred width of the text, at most maxWidth.
    int idealWidth(int maxWidth) const;

    // Sets that width, and the height that the text then needs, at most maxHeight.
    void fit(int width, int maxHeight);

protected:
    void changeEvent(QEvent *event) override;

private:
    std::unique_ptr<QTextDocument> measured(int width) const;
    void takeLabelColours();
};

} // namespace platform
