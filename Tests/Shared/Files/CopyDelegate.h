// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Trees/FileOperation.h"

#include <QElapsedTimer>
#include <QObject>
#include <QVariantMap>

#include <functional>

namespace test {

// Delegates of copies in the background, which note the reports that they get.
class CopyDelegateBase : public QObject {
    Q_OBJECT
public:
    struct Report {
        QVariantMap report;
        bool hadOperation = false;
        bool onMainThread = false;
        qint64 milliseconds = 0; // since the delegate was made

        qint64 stage() const;
    };
    QList<Report> reports;
    std::function<void()> then = [] {}; // after each finished report

    CopyDelegateBase();
    int progress() const;
    int finished() const;
    // Dispatches events until there is a finished report. False after the seconds.
    bool waitForEnd(int seconds = 60) const;

protected:
    void note(const QVariantMap &report, QObject *operation);

private:
    QElapsedTimer m_timer;
};

// The preferred forms.
class CopyDelegate : public CopyDelegateBase {
    Q_OBJECT
public:
    bool holdsOperation = false;
    std::shared_ptr<platform::FileOperation> held;

    Q_INVOKABLE void fileOperationProgress(const QVariantMap &report, QObject *fileOperation);
    Q_INVOKABLE void fileOperationFinished(const QVariantMap &report, QObject *fileOperation);
};

class BothFormsDelegate : public CopyDelegate {
    Q_OBJECT
public:
    using CopyDelegate::fileOperationFinished;
    using CopyDelegate::fileOperationProgress;
    Q_INVOKABLE void fileOperationProgress(const QVariantMap &report) { note(report, nullptr); }
    Q_INVOKABLE void fileOperationFinished(const QVariantMap &report) { note(report, nullptr); }
};

class ShortFinishedDelegate : public CopyDelegateBase {
    Q_OBJECT
public Q_SLOTS:
    void fileOperationFinished(const QVariantMap &report) { note(report, nullptr); }
};

// Of these only the names fit.
class OtherFormsDelegate : public CopyDelegateBase {
    Q_OBJECT
public:
    Q_INVOKABLE void fileOperationFinished() { note({}, nullptr); }
    Q_INVOKABLE void fileOperationFinished(const QString & /*report*/) { note({}, nullptr); }
    Q_INVOKABLE void fileOperationFinished(QObject *operation, const QVariantMap &report)
    {
        note(report, operation);
    }
    // Not invokable.
    void fileOperationFinished(const QVariantMap &report) { note(report, nullptr); }
};

} // namespace test
