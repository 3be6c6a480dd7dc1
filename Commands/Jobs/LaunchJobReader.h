// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Commands/Jobs/LaunchJob.h"

#include <QVariant>

namespace platform {

// Reads the keys of one job file, up to the first that is wrong.
class LaunchJobReader {
public:
    LaunchJobReader(QVariantMap dictionary, const QByteArray &file);

    // The checked job; nothing, with what is wrong in error, where it is none.
    std::optional<LaunchJob> read(QString *error);

private:
    struct Key {
        const char *name;
        void (LaunchJobReader::*read)(const QVariant &);
    };

    bool sound() const { return m_error.isNull(); }
    void fail(const QString &text);
    void failKey(const QString &text);

    void readKey(const QString &name, const QVariant &value);
    void checkWhole();

    QByteArray bytes(const QVariant &value);
    QByteArray path(const QVariant &value);
    bool boolean(const QVariant &value);
    qlonglong integer(const QVariant &value, qlonglong least, qlonglong most);

    void readLabel(const QVariant &value);
    void readProgram(const QVariant &value);
    void readArguments(const QVariant &value);
    void readEnvironment(const QVariant &value);
    void readKeepAlive(const QVariant &value);
    void readUmask(const QVariant &value);
    void readProcessType(const QVariant &value);
    void readWorkingDirectory(const QVariant &value);
    void readStandardIn(const QVariant &value);
    void readStandardOut(const QVariant &value);
    void readStandardError(const QVariant &value);
    void readRunAtLoad(const QVariant &value);
    void readDisabled(const QVariant &value);
    void readNice(const QVariant &value);
    void readThrottleInterval(const QVariant &value);

    QVariantMap m_dictionary;
    LaunchJob m_job;
    QString m_key;
    QString m_error;
};

} // namespace platform
