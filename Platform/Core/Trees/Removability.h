// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace platform {

// Whether this process can remove what is in a folder, as far as that can be told beforehand.
class Removability {
public:
    Removability() = default;
    Removability(int folder, const struct stat &status)
    {
        const auto mayWrite = ::faccessat(folder, ".", W_OK | X_OK, AT_EACCESS) == 0;
        // A folder of this user's can be given the permissions first.
        const auto isOwn = ::geteuid() == 0 || status.st_uid == ::geteuid();
        if (!mayWrite && (!isOwn || errno == EROFS)) {
            m_error = errno;
        }
        m_onlyOwn = !isOwn && (status.st_mode & S_ISVTX) != 0;
    }

    // 0, else the reason (errno) why an item of that owner cannot be removed.
    int errorFor(uid_t owner) const
    {
        return m_error == 0 && m_onlyOwn && owner != ::geteuid() ? EPERM : m_error;
    }

private:
    int m_error = 0;
    bool m_onlyOwn = false;
};

} // namespace platform
