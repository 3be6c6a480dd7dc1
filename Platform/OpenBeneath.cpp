// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/OpenBeneath.h"

#include "Platform/FileError.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstring>

namespace platform {

int openBeneath(int folder, const char *path, int flags)
{
    if (std::strchr(path, '/') != nullptr) {
        open_how how{};
        how.flags = static_cast<decltype(how.flags)>(flags | O_CLOEXEC);
        how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS;
        // EAGAIN: something was renamed meanwhile and the system could not tell where to.
        for (int i = 0; i < 100; ++i) {
            // NOLINTNEXTLINE(*-vararg)
            const auto file = ::syscall(SYS_openat2, folder, path, &how, sizeof how);
            if (file >= 0 || (errno != EAGAIN && errno != EINTR)) {
                if (file >= 0 || (errno != ENOSYS && errno != EPERM)) {
                    return static_cast<int>(file);
                }
                break; // unknown to the system, or kept from us by a sandbox
            }
        }
    }
    return retried([&] { return ::openat(folder, path, flags | O_NOFOLLOW | O_CLOEXEC); });
}

} // namespace platform
