// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <cerrno>

namespace platform {

// Why an operation on files failed; false where it did not.
class FileError {
public:
    FileError() = default;
    // code as in errno; the path of what could not be changed.
    FileError(int code, QString path) : m_code(code), m_path(std::move(path)) {}

    explicit operator bool() const { return m_code != 0; }
    int code() const { return m_code; }
    const QString &path() const { return m_path; }

    // The system's words.
    QString reason() const;
    // The path and the system's words. Either is null where nothing failed.
    QString localizedDescription() const;

private:
    int m_code = 0;
    QString m_path;
};

// Repeats a system call that a signal interrupts, but not for ever, because nobody would notice.
template <typename Call>
auto retried(const Call &call)
{
    constexpr auto maxTries = 100;
    auto result = call();
    for (int i = 1; result == -1 && errno == EINTR && i < maxTries; ++i) {
        result = call();
    }
    return result;
}

} // namespace platform
