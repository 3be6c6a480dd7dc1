// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Basics/CommandPath.h"

#include "Platform/Core/Basics/AccountEntry.h"
#include "Platform/Core/Basics/TrustedPath.h"

#include <dlfcn.h>
#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace platform {
namespace {

// The folders that hold the system's commands.
constexpr std::array<std::string_view, 4> commandFolders{"/usr/bin", "/usr/sbin", "/bin", "/sbin"};

struct Free {
    void operator()(char *text) const { std::free(text); } // NOLINT(*-no-malloc,*-owning-memory)
};

bool isExecutableFile(const std::string &path)
{
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           ::access(path.c_str(), X_OK) == 0;
}

bool mayBeRun(const std::string &path)
{
    return isExecutableFile(path) && (::geteuid() != 0 || openTrusted(path).file.isOpen());
}

// Where "/usr/sbin" is "/usr/bin", another command than the one that is meant has its path, and
// does not know the owner "root:wheel" as long as no such group exists.
bool isServedByOursOnly(const std::string &path)
{
    return path == "/usr/sbin/chown" && !AccountEntry(::getgrnam_r, "wheel").exists();
}

std::string findPrivateFolder()
{
    Dl_info code{};
    if (::dladdr(reinterpret_cast<const void *>(&findPrivateFolder), &code) == 0) { // NOLINT
        return {};
    }
    const std::unique_ptr<char, Free> real(::realpath(code.dli_fname, nullptr));
    std::string folder = real != nullptr ? real.get() : "";
    while (folder.find('/') != std::string::npos) {
        folder.resize(folder.rfind('/'));
        auto candidate = folder + "/" PLATFORM_COMMANDS;
        struct stat status {};
        if (::stat(candidate.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) {
            return candidate;
        }
    }
    // A copy of the bundle, say in somebody's home, has no commands beside it.
    return PLATFORM_COMMAND_FOLDER;
}

} // namespace

std::string privateCommandPath()
{
    static const auto *folder = new std::string(findPrivateFolder());
    return *folder;
}

std::string commandPath(const std::string &path)
{
    const auto slash = path.rfind('/');
    if (slash == std::string::npos || slash + 1 == path.size() ||
        std::find(commandFolders.begin(), commandFolders.end(),
                  std::string_view(path).substr(0, slash)) == commandFolders.end()) {
        return path;
    }
    const auto name = path.substr(slash);
    auto ours = privateCommandPath() + name;
    if (isServedByOursOnly(path) && mayBeRun(ours)) {
        return ours;
    }
    if (mayBeRun(path)) {
        return path;
    }
    if (mayBeRun(ours)) {
        return ours;
    }
    for (const auto folder : commandFolders) {
        auto candidate = std::string(folder) + name;
        if (mayBeRun(candidate)) {
            return candidate;
        }
    }
    return path;
}

} // namespace platform
