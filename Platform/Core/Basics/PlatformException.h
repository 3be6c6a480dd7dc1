// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <exception>

namespace platform {

// The exception that platform services raise: a name to tell kinds apart and a reason for people.
class Exception : public std::exception {
public:
    Exception(QString name, QString reason)
        : m_name(std::move(name)), m_reason(std::move(reason)), m_what(m_reason.toUtf8())
    {
    }

    const QString &name() const { return m_name; }
    const QString &reason() const { return m_reason; }
    const char *what() const noexcept override { return m_what.constData(); }

private:
    QString m_name;
    QString m_reason;
    QByteArray m_what;
};

// Has handler called with an exception that nobody catches, before the process ends. A standard
// exception is handed over under its class name, anything else as "Unknown".
void setUncaughtExceptionHandler(void (*handler)(const Exception &));

} // namespace platform
