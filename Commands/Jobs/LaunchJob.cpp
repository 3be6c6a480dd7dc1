// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/Jobs/LaunchJob.h"

#include "Commands/Jobs/LaunchSession.h"
#include "Commands/Jobs/LaunchUnit.h"
#include "Platform/Core/Basics/Descriptor.h"
#include "Platform/Core/Basics/DescriptorPath.h"
#include "Platform/Core/Basics/TrustedPath.h"
#include "Platform/Core/Files/FileContents.h"
#include "Platform/Core/Text/FileName.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace platform {
namespace {

// The system takes 255 bytes in a file name; new files have a few more until they are whole.
constexpr auto maxUnitName = 240;

bool isControl(QChar character)
{
    return character.category() == QChar::Other_Control;
}

// A user's own job runs what the user may change anyway; whatever root runs is to be root's.
bool isJudged(const QByteArray &file)
{
    const auto own = ownLaunchAgentFolder();
    return ::geteuid() == 0 || own.isEmpty() || !file.startsWith(own + '/');
}

// Null where nobody but root and this user can change the path.
QString pathObjection(const QByteArray &path, const QString &whatOthersCould)
{
    const auto judged =
        openTrusted({path.constData(), static_cast<std::size_t>(path.size())}, ::geteuid());
    if (judged.error == EPERM) {
        return whatOthersCould + QStringLiteral(": ") + QString::fromStdString(judged.objection);
    }
    return judged.error == 0 ? QString()
                             : QStringLiteral("%1 cannot be run: %2")
                                   .arg(readableName(path), qt_error_string(judged.error));
}

// The bytes of a file that may be a job's; nothing, with the reason, for any other.
std::optional<QByteArray> trustedContents(const QByteArray &file, QString *reason)
{
    struct stat status {};
    // Asked before as well as after: opening a device may already do something.
    if (::stat(file.constData(), &status) != 0) {
        *reason = qt_error_string(errno);
        return std::nullopt;
    }
    *reason = launchFileObjection(status, ::geteuid());
    if (reason->isNull() && isJudged(file)) {
        *reason = pathObjection(file, QStringLiteral("others could put another file there"));
    }
    if (!reason->isNull()) {
        return std::nullopt;
    }
    const Descriptor opened(::open(file.constData(), O_PATH | O_CLOEXEC)); // NOLINT(*-vararg)
    if (!opened.isOpen() || ::fstat(opened.fd(), &status) != 0) {
        *reason = qt_error_string(errno);
        return std::nullopt;
    }
    *reason = status.st_size > maximumLaunchJobSize ? QStringLiteral("larger than any job file")
                                                    : launchFileObjection(status, ::geteuid());
    auto contents =
        reason->isNull()
            ? contentsOfFile(QString::fromUtf8(pathOfDescriptor(opened.fd())), maximumLaunchJobSize)
            : std::nullopt;
    if (!contents && reason->isNull()) {
        *reason = qt_error_string(errno);
    }
    return contents;
}

} // namespace

bool isUtf8Name(const QByteArray &bytes)
{
    return fileNameFromBytes(bytes).toUtf8() == bytes;
}

bool holdsNoncharacter(const QByteArray &bytes)
{
    const auto characters = fileNameFromBytes(bytes).toUcs4();
    return std::any_of(characters.begin(), characters.end(),
                       [](auto character) { return QChar::isNonCharacter(character); });
}

QString readableName(const QByteArray &bytes)
{
    auto text = fileNameFromBytes(bytes);
    auto isSecondHalf = false;
    for (auto &character : text) {
        const auto standsForByte = character.isLowSurrogate() && !isSecondHalf;
        isSecondHalf = character.isHighSurrogate();
        if (standsForByte || isControl(character) || character.category() == QChar::Other_Format) {
            character = QChar::ReplacementCharacter;
        }
    }
    return text;
}

QString launchLabelObjection(const QByteArray &label)
{
    const auto text = QString::fromUtf8(label);
    if (label.isEmpty()) {
        return QStringLiteral("is empty");
    }
    if (label.contains('/') || label.contains('\0') ||
        std::any_of(text.begin(), text.end(), isControl)) {
        return QStringLiteral("holds a slash or a control character");
    }
    if (!isUtf8Name(label)) {
        return QStringLiteral("is not UTF-8");
    }
    if (holdsNoncharacter(label)) {
        return QStringLiteral("holds a noncharacter");
    }
    if (label.startsWith('.')) {
        return QStringLiteral("begins with a dot");
    }
    return launchUnitName(label).size() > maxUnitName ? QStringLiteral("is too long") : QString();
}

QByteArray launchLabelOfFile(const QByteArray &file)
{
    const QByteArray name = file.mid(file.lastIndexOf('/') + 1);
    const QByteArray ending(".plist");
    const QByteArray label = name.endsWith(ending) ? name.chopped(ending.size()) : QByteArray();
    return launchLabelObjection(label).isNull() ? label : QByteArray();
}

QString launchFileObjection(const struct stat &status, uid_t user)
{
    if (!S_ISREG(status.st_mode)) {
        return QStringLiteral("not a regular file");
    }
    if (status.st_uid != 0 && status.st_uid != user) {
        return QStringLiteral("Dubious ownership: the file belongs to another user");
    }
    if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        return QStringLiteral("Dubious ownership: others than the owner may write to the file");
    }
    return {};
}

QString launchProgramObjection(const LaunchJob &job)
{
    return isJudged(job.file)
               ? pathObjection(job.program, QStringLiteral("others could change what it runs"))
               : QString();
}

std::optional<LaunchJob> launchJobFromFile(const QByteArray &file, QString *error)
{
    QString reason;
    const auto contents = trustedContents(file, &reason);
    auto job = contents ? launchJobFromData(*contents, file, error) : std::nullopt;
    if (job && !job->isDisabled) {
        reason = launchProgramObjection(*job);
    }
    if (!reason.isNull()) {
        *error = QStringLiteral("%1: %2").arg(readableName(file), reason);
        return std::nullopt;
    }
    return job;
}

} // namespace platform
