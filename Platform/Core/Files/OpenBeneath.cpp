// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/OpenBeneath.h"

#include "Platform/Core/Basics/Descriptor.h"
#include "Platform/Core/Basics/FileError.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstring>
#include <string>

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
    // Without it, folder by folder.
    Descriptor above;
    for (const char *slash = nullptr; (slash = std::strchr(path, '/')) != nullptr;
         path = slash + 1) {
        const std::string name(path, slash);
        above = Descriptor(retried([&] {
            return ::openat(above.isOpen() ? above.fd() : folder, name.c_str(),
                            O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        }));
        if (!above.isOpen()) {
            return -1;
        }
    }
    return retried([&] {
        return ::openat(above.isOpen() ? above.fd() : folder, path, flags | O_NOFOLLOW | O_CLOEXEC);
    });
}

} // namespace platform
