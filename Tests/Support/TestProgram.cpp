// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Tests/Support/TestProgram.h"

#include <cstdio>
#include <cstring>

namespace test {
namespace {

const Entry *&firstEntry()
{
    static const Entry *first = nullptr;
    return first;
}

} // namespace

Entry::Entry(const char *name, Run run) noexcept : m_name(name), m_run(run), m_next(firstEntry())
{
    firstEntry() = this;
}

int Entry::runNamed(int argc, char **argv)
{
    for (const auto *entry = firstEntry(); argc > 1 && entry != nullptr; entry = entry->m_next) {
        if (std::strcmp(entry->m_name, argv[1]) == 0) {
            argv[1] = argv[0];
            return entry->m_run(argc - 1, argv + 1);
        }
    }
    std::fprintf(stderr, "usage: %s CLASS [OPTION of Qt Test ...]\nThe classes:\n", argv[0]);
    for (const auto *entry = firstEntry(); entry != nullptr; entry = entry->m_next) {
        std::fprintf(stderr, "  %s\n", entry->m_name);
    }
    return 2;
}

} // namespace test

int main(int argc, char **argv)
{
    return test::Entry::runNamed(argc, argv);
}
