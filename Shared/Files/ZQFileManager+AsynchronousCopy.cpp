// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/FileStatus.h"
#include "Platform/Core/Text/Console.h"
#include "Platform/Core/Text/PathText.h"
#include "Platform/Core/Threads/MainThread.h"
#include "Shared/Basics/DelegateMethod.h"
#include "Shared/Files/ZQFileManager.h"

#include <QPointer>

#include <mutex>
#include <vector>

using platform::consoleLog;
using platform::FileOperation;

namespace {

using Delegate = QPointer<QObject>;

constexpr auto folderTimeOut = std::chrono::seconds(10);
constexpr auto statusInterval = std::chrono::seconds(1);

const auto delegateKey = QStringLiteral("delegate");

QVariantMap makeContext(const QString &source, const QString &destination, QObject *delegate,
                        const QVariant &object, const QVariant &object2)
{
    QVariantMap context{{QStringLiteral("source"), source},
                        {QStringLiteral("destination"), destination},
                        {QStringLiteral("operationtype"), QStringLiteral("copy")}};
    if (delegate != nullptr) {
        context[delegateKey] = QVariant::fromValue(Delegate(delegate));
    }
    if (object.isValid()) {
        context[QStringLiteral("object")] = object;
    }
    if (object2.isValid()) {
        context[QStringLiteral("object2")] = object2;
    }
    return context;
}

void neverRelease(const std::shared_ptr<FileOperation> &operation)
{
    static std::mutex mutex;
    static auto *const operations = new std::vector<std::shared_ptr<FileOperation>>;
    const std::lock_guard lock(mutex);
    operations->push_back(operation);
}

// Whether there is such a folder afterwards.
bool makeFolder(const QString &folder)
{
    return platform::fileExists(folder) ||
           (!folder.isEmpty() && ZQFileManager::createDirectory(folder, folderTimeOut));
}

// Queued on the main thread and not waited for; the operation stays for the call.
void deliver(const Delegate &delegate, const QByteArray &name, const QVariantMap &report,
             FileOperation &operation)
{
    if (delegate == nullptr) {
        return;
    }
    auto method = delegateMethod(*delegate, name, {QMetaType::QVariantMap, QMetaType::QObjectStar});
    if (method.isValid()) {
        platform::performOnMainThread([=, held = operation.shared_from_this()] {
            if (delegate != nullptr) {
                method.invoke(delegate, Qt::DirectConnection, Q_ARG(QVariantMap, report),
                              Q_ARG(QObject *, held.get()));
            }
        });
        return;
    }
    method = delegateMethod(*delegate, name, {QMetaType::QVariantMap});
    if (method.isValid()) {
        platform::performOnMainThread([=] {
            if (delegate != nullptr) {
                method.invoke(delegate, Qt::DirectConnection, Q_ARG(QVariantMap, report));
            }
        });
    }
}

} // namespace

bool ZQFileManagerAsynchronousCopy::copyFileWithProgress(const QString &source,
                                                         const QString &destination,
                                                         QObject *delegate, const QVariant &object,
                                                         const QVariant &object2)
{
    if (platform::isMissing(source)) {
        consoleLog(QStringLiteral("Error: File %@ doesn't exist. Aborting copy process..."),
                   source);
        return false;
    }
    // Whatever becomes the current folder meanwhile.
    const auto path = platform::absolutePath(destination);
    const auto folder = platform::deletingLastPathComponent(path);
    const auto name = platform::lastPathComponent(path);
    if (!makeFolder(folder)) {
        consoleLog(QStringLiteral("Unable to copy file %@ - destination directory %@ doesn't "
                                  "exist. Aborting copy process..."),
                   source, folder);
        return false;
    }
    const auto operation = FileOperation::create();
    if (const auto status = operation->scheduleWithMainRunLoop(); status != 0) {
        consoleLog(QStringLiteral("Failed to schedule operation with run loop: %ld"),
                   static_cast<long>(status));
        neverRelease(operation); // existing callers rely on it
        return false;
    }
    const auto context = makeContext(source, platform::appendingPathComponent(folder, name),
                                     delegate, object, object2);
    const auto status = operation->copyItemAsync(platform::absolutePath(source), folder, name,
                                                 statusCallback, statusInterval, context);
    if (status != 0) {
        operation->unscheduleFromMainRunLoop();
        consoleLog(QStringLiteral("Failed to begin asynchronous object copy: %ld"),
                   static_cast<long>(status));
        return false;
    }
    return true;
}

bool ZQFileManagerAsynchronousCopy::copyFileWithProgress(const QString &source,
                                                         const QString &destination,
                                                         QObject *delegate, const QVariant &object)
{
    return copyFileWithProgress(source, destination, delegate, object, {});
}

void ZQFileManagerAsynchronousCopy::cancelFileOperation(QObject *fileOperation)
{
    if (auto *operation = qobject_cast<FileOperation *>(fileOperation)) {
        operation->cancel();
    }
}

void statusCallback(FileOperation &fileOperation, const QString & /*currentItem*/,
                    FileOperation::Stage stage, int /*error*/,
                    const std::optional<QVariantMap> &status, const QVariantMap &context)
{
    const auto held = fileOperation.shared_from_this();
    auto report = context;
    report[QStringLiteral("stage")] = static_cast<qint64>(stage);
    const auto delegate = context.value(delegateKey).value<Delegate>();
    if (report.contains(delegateKey)) {
        report[delegateKey] = QVariant::fromValue(delegate.data());
    }
    if (stage == FileOperation::Stage::Running && status.has_value()) {
        for (auto entry = status->begin(); entry != status->end(); ++entry) {
            report[entry.key()] = entry.value();
        }
        deliver(delegate, "fileOperationProgress", report, fileOperation);
    } else if (stage == FileOperation::Stage::Complete) {
        deliver(delegate, "fileOperationFinished", report, fileOperation);
        if (const auto error = fileOperation.unscheduleFromMainRunLoop(); error != 0) {
            consoleLog(QStringLiteral("Failed to unschedule operation from run loop: %d"), error);
        }
    }
}
