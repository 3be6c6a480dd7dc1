// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/authorization-helper/Tool.h"

#include "Platform/Core/Basics/CommandPath.h"
#include "Platform/Core/Basics/TrustedPath.h"
#include "Platform/Core/Processes/SpawnProgram.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>

namespace {

using platform::Descriptor;

// The interpreter and its one argument, if it has one, from the first line of a script; none for a
// file that is no script. As the kernel reads them: from no more than 256 bytes.
std::vector<std::string> interpreterOf(int file)
{
    const Descriptor contents(
        ::open(("/proc/self/fd/" + std::to_string(file)).c_str(), O_RDONLY | O_CLOEXEC));
    std::array<char, 256> bytes{};
    const auto size = ::pread(contents.fd(), bytes.data(), bytes.size(), 0);
    std::string_view line(bytes.data(), static_cast<std::size_t>(size < 0 ? 0 : size));
    if (line.substr(0, 2) != "#!") {
        return {};
    }
    if (line.size() == bytes.size() && line.find('\n') == std::string_view::npos) {
        return {""}; // cut off, it would be another interpreter's
    }
    constexpr std::string_view blanks = " \t";
    line = line.substr(2, line.find('\n') - 2);
    line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
    line = line.substr(0, line.find_last_not_of(blanks) + 1);
    const auto end = std::min(line.find_first_of(blanks), line.size());
    std::vector<std::string> words{std::string(line.substr(0, end))};
    line.remove_prefix(end);
    line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
    if (!line.empty()) {
        words.emplace_back(line);
    }
    return words;
}

} // namespace

Tool findTool(const std::vector<std::string> &words)
{
    Tool tool;
    tool.path = platform::commandPath(words.front());
    tool.arguments = words;
    tool.arguments.front() = tool.path;
    auto trusted = platform::openTrusted(tool.path);
    if (trusted.file.isOpen() &&
        ::faccessat(trusted.file.fd(), "", X_OK, AT_EACCESS | AT_EMPTY_PATH) != 0) {
        tool.error = errno;
        tool.objection = std::strerror(tool.error);
        return tool;
    }
    if (const auto interpreter = interpreterOf(trusted.file.fd()); !interpreter.empty()) {
        tool.arguments.insert(tool.arguments.begin(), interpreter.begin(), interpreter.end());
        trusted = platform::openTrusted(interpreter.front());
        if (!interpreterOf(trusted.file.fd()).empty()) {
            trusted = {{}, {}, ENOEXEC, "the interpreter is a script itself"};
        }
    }
    tool.file = std::move(trusted.file);
    tool.error = trusted.error;
    tool.objection = std::move(trusted.objection);
    return tool;
}

int startTool(const Tool &tool, int output, pid_t *process)
{
    // Our own name for the file that was judged: the child closes all that it inherits first.
    const auto judged =
        "/proc/" + std::to_string(::getpid()) + "/fd/" + std::to_string(tool.file.fd());
    using platform::nullDevice;
    return platform::spawnProgram({judged,
                                   tool.arguments,
                                   platform::cleanEnvironment(),
                                   {nullDevice, output < 0 ? nullDevice : output, nullDevice}},
                                  process);
}
