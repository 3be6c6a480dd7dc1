// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Trees/FileOperation.h"

#include <QVariantMap>

#include <optional>

// The part of ZQFileManager that copies in the background. Any thread may call; the delegate is
// called on the main thread, while its event loop turns.
//
// Every report is a dictionary with the number "stage" (2 running, 3 complete), the texts "source",
// "destination" (the full path) and "operationtype" ("copy") and, where they were given,
// "delegate", "object" and "object2"; while it runs also with the keys of platform::FileOperation:
// bytes and items done and, as soon as they are counted, in total, throughput, estimate.
//
// A delegate answers by invokable methods, of which the first that it has is called:
//     fileOperationProgress(const QVariantMap &report, QObject *fileOperation)
//     fileOperationProgress(const QVariantMap &report)
// about once a second and, once at the end,
//     fileOperationFinished(const QVariantMap &report, QObject *fileOperation)
//     fileOperationFinished(const QVariantMap &report)
// It is not retained; one that is destroyed before is not called. The file operation is a
// platform::FileOperation. It goes after the last report unless it is held with shared_from_this();
// whoever keeps it to cancel it later has it in a QPointer.
class ZQFileManagerAsynchronousCopy {
public:
    ZQFileManagerAsynchronousCopy() = delete;

    /// copyFileWithProgress:destination:delegate:object:object:
    /// Starts the copy of a file, or of a folder with all in it, and tells whether it was started.
    /// The folder that the copy goes to is made where it is missing; nothing is replaced there. The
    /// copy has its name only when it is whole. An end by an error, EEXIST included, is reported as
    /// any other, which existing delegates rely on: who needs to know looks at the destination.
    static bool copyFileWithProgress(const QString &source, const QString &destination,
                                     QObject *delegate, const QVariant &object,
                                     const QVariant &object2);
    /// copyFileWithProgress:destination:delegate:object:
    static bool copyFileWithProgress(const QString &source, const QString &destination,
                                     QObject *delegate, const QVariant &object);

    /// cancelFileOperation:
    /// The copy stops at once and is reported as finished. One that is whole already stays.
    static void cancelFileOperation(QObject *fileOperation);
};

// Hands a report of a file operation to the delegate in its context; on the main thread. The error
// is not looked at.
void statusCallback(platform::FileOperation &fileOperation, const QString &currentItem,
                    platform::FileOperation::Stage stage, int error,
                    const std::optional<QVariantMap> &status, const QVariantMap &context);
