// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QDialog>

class QCheckBox;
class QDialogButtonBox;
class QPushButton;

namespace platform {

class AlertText;

// What the answer to an alert is called.
enum AlertReturn : qint64 {
    AlertOtherReturn = -1,
    AlertAlternateReturn = 0,
    AlertDefaultReturn = 1,
};

// What the picture beside the text says.
enum class AlertStyle { Warning, Informational };

// What an alert says. A null or empty title of the default button stands for the system's OK
// button; the two other buttons exist only where they have a title.
struct AlertDescription {
    QString messageText;
    QString informativeText;
    QString defaultButton;
    QString alternateButton;
    QString otherButton;
    AlertStyle style = AlertStyle::Warning;

    // The answer of somebody who wants to decide nothing, which is what Esc gives: that of the
    // alternate button, else of the other, else of the default one.
    qint64 escapeReturn() const;
};

// NSAlert: a message with a headline, a body and one to three buttons. All texts are plain text;
// they wrap, scroll when they are too long for the screen, and end in "..." after some thousand
// characters.
//
// It is a sheet (modal to its parent's window) when it has a parent, else a dialog of its own. An
// answer hides the panel, which never deletes itself. Main thread only.
class AlertPanel : public QDialog {
    Q_OBJECT
public:
    explicit AlertPanel(const AlertDescription &description, QWidget *parent = nullptr);

    // The check box "Do not show this message again", shown from the first call on.
    QCheckBox *suppressionButton();

    // Shows the panel in front of its parent, which is brought to the front too.
    void begin();

    // Takes the panel off the screen without an answer.
    void orderOut();

    const AlertDescription &description() const { return m_description; }

    void accept() override;
    void reject() override;

Q_SIGNALS:
    // An AlertReturn. Sent at most once, when the panel is hidden already.
    void answered(qint64 code);

protected:
    void changeEvent(QEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void addButtons();
    QPushButton *addButton(const QString &title, int role, qint64 code);
    void answer(qint64 code);
    QSize availableSize() const;
    void fit();

    AlertDescription m_description;
    AlertText *m_message;
    AlertText *m_body;
    QDialogButtonBox *m_buttons;
    QPushButton *m_defaultButton = nullptr;
    QCheckBox *m_suppression = nullptr;
    bool m_answered = false;
};

} // namespace platform
