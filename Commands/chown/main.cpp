// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
//
// chown: the system's own, save that a group "wheel" that does not exist is root's group, number 0.

#include "Platform/Core/Processes/SpawnProgram.h"

#include <grp.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace {

// Where the system has it; nothing else is looked for.
constexpr const char *systemChown = "/usr/bin/chown";

bool startsWith(std::string_view text, std::string_view beginning)
{
    return text.substr(0, beginning.size()) == beginning;
}

// Also where the option is cut short, as the system's command allows.
bool isOption(std::string_view argument, std::string_view option, std::size_t shortest)
{
    return argument.size() >= shortest && startsWith(option, argument);
}

void replaceWheel(std::string &owner)
{
    constexpr std::string_view suffix = ":wheel";
    if (owner.size() >= suffix.size() &&
        owner.compare(owner.size() - suffix.size(), suffix.size(), suffix) == 0) {
        owner.replace(owner.size() - suffix.size(), suffix.size(), ":0");
    }
}

// In the value of "--from" and in the first argument that is no option, which says owner and group
// unless "--reference" does.
void replaceWheelInArguments(std::vector<std::string> &arguments)
{
    bool optionsEnd = false;
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        auto &argument = arguments[i];
        const auto name = std::string_view(argument).substr(0, argument.find('='));
        if (optionsEnd || argument.size() < 2 || argument.front() != '-') {
            replaceWheel(argument);
            return;
        }
        if (argument == "--") {
            optionsEnd = true;
        } else if (isOption(name, "--reference", 5)) {
            return;
        } else if (isOption(name, "--from", 3)) {
            const bool valueFollows = name.size() == argument.size();
            if (!valueFollows) {
                replaceWheel(argument);
            } else if (++i < arguments.size()) {
                replaceWheel(arguments[i]);
            }
        }
    }
}

} // namespace

int main(int count, char **values)
{
    std::vector<std::string> arguments(values, values + count);
    if (::getgrnam("wheel") == nullptr) {
        replaceWheelInArguments(arguments);
    }
    ::execv(systemChown, platform::textPointers(arguments).data());
    std::fprintf(stderr, "chown: %s: %s\n", systemChown, std::strerror(errno));
    return 127;
}
