// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Desktop/Alerts/AlertPanel.h"

#include <QMetaMethod>
#include <QObject>
#include <QPointer>
#include <QVariantMap>

#include <atomic>
#include <memory>

// A warning or question as a sheet on a parent window; any thread may ask. The sheet itself lives
// on the main thread, and the caller waits until it is there.
//
// Answers are platform::AlertReturn codes: default 1, alternate 0, other -1. Esc answers for the
// alternate button, else the other, else the default one. So does the end of the wait when nobody
// can answer any more: the parent window is destroyed, the application quits, or the worker that
// waits is asked to end. No form raises; without windows at all (no QApplication) the alert is
// logged and answered in the same way, at once. Who waits on the main thread may find its own
// objects destroyed afterwards: the host may have closed them.
//
// A selector is a message's keywords, each with its colon. A delegate answers to it when it has an
// invokable method (Q_INVOKABLE or a slot) named by the first keyword with one parameter per
// keyword, for the completion message (QObject *alert, qint64 returnCode, void *contextInfo): the
// selector "alertDidEnd:returnCode:contextInfo:" calls alertDidEnd(alert, returnCode, nullptr) on
// the main thread, alert being the platform::AlertPanel. A delegate that is destroyed before is not
// called.
class ZQAlert : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY(ZQAlert)
public:
    enum class Block { No, Yes };

    ZQAlert();
    ~ZQAlert() override;

    /// alertSheetWithMessageText:informativeText:parentWindow:
    /// One button, the system's OK; waits for it.
    static qint64 alertSheetWithMessageText(const QString &messageText,
                                            const QString &informativeText, QWidget *parentWindow);

    /// alertSheetWithMessageText:defaultButton:alternateButton:otherButton:informativeText:
    /// parentWindow:block:
    /// Always waits, whatever block says: callers rely on it.
    static qint64
    alertSheetWithMessageText(const QString &messageText, const QString &defaultButton,
                              const QString &alternateButton, const QString &otherButton,
                              const QString &informativeText, QWidget *parentWindow, Block block);

    /// alertSheetWithMessageText:defaultButton:alternateButton:otherButton:informativeText:
    /// parentWindow:delegate:didEndSelector:block:
    /// Ignores delegate, selector and block and always waits: callers rely on it.
    static qint64
    alertSheetWithMessageText(const QString &messageText, const QString &defaultButton,
                              const QString &alternateButton, const QString &otherButton,
                              const QString &informativeText, QWidget *parentWindow,
                              QObject *delegate, const QString &didEndSelector, Block block);

    /// alertSheetWithMessageText:defaultButton:alternateButton:otherButton:informativeText:
    /// parentWindow:delegate:didEndSelector:block:alertObject:
    static qint64
    alertSheetWithMessageText(const QString &messageText, const QString &defaultButton,
                              const QString &alternateButton, const QString &otherButton,
                              const QString &informativeText, QWidget *parentWindow,
                              QObject *delegate, const QString &didEndSelector, Block block,
                              const std::shared_ptr<ZQAlert> &alertObject);

    /// alertSheetWithMessageText:defaultButton:alternateButton:otherButton:informativeText:
    /// parentWindow:delegate:didEndSelector:block:alertObject:suppressionBinding:
    /// The answer when it waits, else -1 at once; also -1, and nothing shown, when the delegate
    /// does not answer to the selector. Null stands for none everywhere; without a delegate the
    /// alert object is its own. Texts are plain; informativeText is a format without arguments, so
    /// that a "%" in it begins a directive, as callers expect. The check box "Do not show this
    /// message again" shows and sets the program's preference at the key path suppressionBinding.
    static qint64 alertSheetWithMessageText(
        const QString &messageText, const QString &defaultButton, const QString &alternateButton,
        const QString &otherButton, const QString &informativeText, QWidget *parentWindow,
        QObject *delegate, const QString &didEndSelector, Block block,
        const std::shared_ptr<ZQAlert> &alertObject, const QString &suppressionBinding);

    /// timedAlertSheetWithMessageText:defaultButton:alternateButton:otherButton:informativeText:
    /// parentWindow:interval:
    /// Waits; answers for the default button by itself after interval seconds.
    static qint64 timedAlertSheetWithMessageText(const QString &messageText,
                                                 const QString &defaultButton,
                                                 const QString &alternateButton,
                                                 const QString &otherButton,
                                                 const QString &informativeText,
                                                 QWidget *parentWindow, qint64 interval);

    /// alertSheetWithDictionary:
    /// Builds and begins the sheet from the texts "messageText", "defaultButtonTitle",
    /// "alternateButtonTitle", "otherButtonTitle", "informativeText", "didEndSelector" and
    /// "suppressionBinding". Main thread only.
    void alertSheetWithDictionary(const QVariantMap &dictionary);

    /// alertDidEnd:returnCode:contextInfo:
    /// The completion of an alert that is its own delegate.
    Q_INVOKABLE void alertDidEnd(QObject *alert, qint64 returnCode, void *contextInfo);

    /// defaultReturnAfterTimeInterval:
    /// Sleeps, then ends the wait with the default button's code; overwrites an earlier answer.
    void defaultReturnAfterTimeInterval(qint64 seconds);

    // Not owned; null when destroyed meanwhile.
    QWidget *parentWindow() const { return m_parentWindow; }
    void setParentWindow(QWidget *parentWindow) { m_parentWindow = parentWindow; }
    QObject *delegate() const { return m_delegate; }
    void setDelegate(QObject *delegate) { m_delegate = delegate; }

    bool alertEnded() const { return m_outcome->ended.load(std::memory_order_acquire); }
    void setAlertEnded(bool ended) { m_outcome->ended.store(ended, std::memory_order_release); }
    qint64 returnCode() const { return m_outcome->returnCode.load(std::memory_order_relaxed); }
    void setReturnCode(qint64 code)
    {
        m_outcome->returnCode.store(code, std::memory_order_relaxed);
    }

    // The panel that shows, or has shown, this alert; null after a wait for it. Taking another
    // orders the earlier one out. Main thread only.
    platform::AlertPanel *alert() const { return m_alert; }
    void setAlert(platform::AlertPanel *alert);

private:
    // Apart from the object, so that a timer needs only this: it may outlive everything else.
    struct Outcome {
        std::atomic<qint64> returnCode = 0;
        std::atomic<bool> ended = false;
    };

    // The delegate's method for a selector; invalid when it has none.
    static QMetaMethod completionMethod(const QObject &delegate, const QString &selector);
    static void endAfter(Outcome &outcome, qint64 seconds);
    static void endByDefault(Outcome &outcome);
    void startTimer(qint64 seconds);
    void wait();
    void endWithoutAnswer();
    void complete(const QString &selector, qint64 code);
    void stopWatching();

    std::shared_ptr<Outcome> m_outcome = std::make_shared<Outcome>();
    QPointer<QWidget> m_parentWindow;
    QPointer<QObject> m_delegate;
    QPointer<platform::AlertPanel> m_alert;
    qint64 m_escapeReturn = platform::AlertDefaultReturn;
    bool m_mayHaveTimedOut = false; // since it was made: the timer runs, and nobody else has it
};
