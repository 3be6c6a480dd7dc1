// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
//
// ditto: makes zip archives of files and folders, and opens them.

#include "Commands/ditto/Arguments.h"
#include "Commands/ditto/Complaint.h"
#include "Commands/ditto/Compression.h"
#include "Commands/ditto/Extraction.h"
#include "Commands/ditto/Interruption.h"
#include "Platform/Core/Text/FileName.h"

#include <cstdio>
#include <exception>
#include <new>

namespace {

constexpr auto failed = 1;
constexpr auto misused = 2;

int run(int count, char **values)
{
    QString reason;
    const auto arguments = readArguments(count, values, reason);
    if (!arguments) {
        complain(platform::fileNameBytes(reason));
        std::fputs(usage, stderr);
        return misused;
    }
    if (arguments->task == Task::Help) {
        std::fputs(usage, stdout);
        return 0;
    }
    watchForInterruption();
    const auto done =
        arguments->task == Task::Compress ? compress(*arguments) : extract(*arguments);
    endIfInterrupted();
    return done ? 0 : failed;
}

} // namespace

int main(int count, char **values)
{
    try {
        return run(count, values);
    } catch (const std::bad_alloc &) {
        std::fputs("ditto: Cannot allocate memory\n", stderr); // which takes none
        return failed;
    } catch (const std::exception &exception) {
        std::fprintf(stderr, "ditto: %s\n", exception.what());
        return failed;
    }
}
