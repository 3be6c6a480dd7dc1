// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/launchctl/Commands.h"

#include <clocale>
#include <cstdio>
#include <string_view>

namespace {

constexpr std::chrono::seconds commandTimeout{8};

void printUsage(std::FILE *file)
{
    std::fputs("usage: launchctl load FILE ...    load jobs; start those that run at load\n"
               "       launchctl unload FILE ...  stop the jobs of these files and unload them\n"
               "       launchctl remove LABEL     stop the job with that label and unload it\n"
               "       launchctl list             show all jobs: process, last exit status, label\n"
               "       launchctl list LABEL       show one job\n"
               "       launchctl help\n",
               file);
}

QByteArrayList argumentsFrom(int argc, char **argv, int first)
{
    QByteArrayList arguments;
    for (auto at = first; at < argc; ++at) {
        arguments << QByteArray(argv[at]); // NOLINT(*-pointer-arithmetic)
    }
    return arguments;
}

} // namespace

int main(int argc, char **argv)
{
    constexpr auto misused = 2;
    std::setlocale(LC_CTYPE, "");                            // NOLINT(concurrency-mt-unsafe)
    const std::string_view command(argc > 1 ? argv[1] : ""); // NOLINT(*-pointer-arithmetic)
    const auto arguments = argumentsFrom(argc, argv, 2);
    Commands commands(commandTimeout);
    if (command == "help" || command == "--help" || command == "-h") {
        printUsage(stdout);
        return 0;
    }
    if (command == "load" && !arguments.isEmpty()) {
        return commands.load(arguments);
    }
    if (command == "unload" && !arguments.isEmpty()) {
        return commands.unload(arguments);
    }
    if (command == "remove" && arguments.size() == 1) {
        return commands.remove(arguments.first());
    }
    if (command == "log-in" && arguments.isEmpty()) {
        return commands.logIn();
    }
    if (command == "list" && arguments.size() <= 1) {
        return commands.list(arguments.value(0));
    }
    printUsage(stderr);
    return misused;
}
