// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// Saves files as the pane does, for tests of whose they are.
//
// usage: SavingProgram COMMAND PATH [TIMES]      (prints how often it succeeded)
#include "Platform/Core/Files/FileContents.h"
#include "Platform/Core/Folders/PrivateFiles.h"
#include "Platform/Core/PropertyLists/DamagedPropertyList.h"
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Platform/Core/Text/FileName.h"
#include "Platform/Core/Trees/CreateFolder.h"

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <string>

int main(int argc, char **argv)
{
    const std::map<std::string, std::function<bool(const QString &)>> commands{
        {"list",
         [](const QString &path) {
             return platform::writeDictionaryToFile({{QStringLiteral("a"), 1}}, path);
         }},
        {"bytes",
         [](const QString &path) { return platform::replaceFile(path, QByteArray("saved")); }},
        {"empty",
         [](const QString &path) {
             QString error;
             return platform::createEmptyPrivateFile(path, &error);
         }},
        {"damaged", [](const QString &path) { return platform::keepDamagedPropertyList(path); }},
        {"folder", [](const QString &path) { return !platform::createFolder(path); }},
        {"private-folder", [](const QString &path) { return platform::createPrivateFolder(path); }},
    };
    if (argc < 3) {
        return 2;
    }
    const auto path = platform::fileNameFromBytes(QByteArray(argv[2]));
    auto successes = 0;
    for (auto left = argc > 3 ? std::atoi(argv[3]) : 1; left > 0; --left) {
        successes += commands.at(argv[1])(path) ? 1 : 0;
    }
    std::printf("%d\n", successes);
    return 0;
}
