// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/FileTree.h"

namespace test {

// Throw-away data folders, of the user and two of the system, that the environment names.
class DataFolders {
public:
    DataFolders()
        : m_home("XDG_DATA_HOME", QByteArray::fromStdString(user.path())),
          m_dirs("XDG_DATA_DIRS", QByteArray::fromStdString(first.path() + ":" + second.path()))
    {
        for (const auto *folder : {&user, &first, &second}) {
            makeFolder(*folder / "applications");
        }
    }

    Folder user;
    Folder first;
    Folder second;

private:
    EnvironmentVariable m_home;
    EnvironmentVariable m_dirs;
};

// A desktop entry of an application; more are lines with their ends.
inline std::string entry(const std::string &name, const std::string &more = {})
{
    return "[Desktop Entry]\nType=Application\nName=" + name + "\nExec=true\n" + more;
}

// An ".app" folder; more are elements of its dictionary.
inline void makeApp(const std::string &path, const std::string &identifier,
                    const std::string &more = {})
{
    makeFolder(path);
    makeFolder(path + "/Contents");
    makeFolder(path + "/Contents/Resources");
    writeFile(path + "/Contents/Info.plist",
              "<plist version=\"1.0\"><dict><key>CFBundleIdentifier</key><string>" + identifier +
                  "</string>" + more + "</dict></plist>");
}

} // namespace test
