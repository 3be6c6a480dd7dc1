// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QtGlobal>

namespace test {

// Sets an environment variable, or removes it for a null value, until the object is destroyed.
class EnvironmentVariable {
public:
    EnvironmentVariable(const char *name, const QByteArray &value)
        : m_name(name), m_wasSet(qEnvironmentVariableIsSet(name)), m_before(qgetenv(name))
    {
        set(!value.isNull(), value);
    }
    ~EnvironmentVariable() { set(m_wasSet, m_before); }
    EnvironmentVariable(const EnvironmentVariable &) = delete;
    EnvironmentVariable &operator=(const EnvironmentVariable &) = delete;

private:
    void set(bool exists, const QByteArray &value) const
    {
        if (exists) {
            qputenv(m_name, value);
        } else {
            qunsetenv(m_name);
        }
    }

    const char *m_name;
    bool m_wasSet;
    QByteArray m_before;
};

} // namespace test
