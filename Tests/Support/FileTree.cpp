// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Tests/Support/FileTree.h"

#include "Platform/Core/Text/FileName.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>

namespace fs = std::filesystem;

namespace test {
namespace {

void makeFoldersWritable(const fs::path &path)
{
    if (fs::is_symlink(path) || !fs::is_directory(path)) {
        return;
    }
    fs::permissions(path, fs::perms::owner_all, fs::perm_options::add);
    for (const auto &entry : fs::directory_iterator(path)) {
        makeFoldersWritable(entry.path());
    }
}

void addLines(const std::string &path, const std::string &name, QStringList &lines)
{
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) {
        lines << QStringLiteral("nothing");
        return;
    }
    std::string contents;
    if (S_ISREG(status.st_mode)) {
        contents = readFile(path);
        if (contents.size() > 1000) {
            contents = std::to_string(contents.size()) + ' ' +
                       std::to_string(std::hash<std::string>()(contents));
        }
    } else if (S_ISLNK(status.st_mode)) {
        contents = fs::read_symlink(path).string();
    }
    lines << QStringLiteral("%1 %2 %3 %4")
                 .arg(text(name), QString::number(status.st_mode, 8),
                      S_ISDIR(status.st_mode) ? QString() : QString::number(status.st_mtim.tv_sec),
                      text(contents));
    if (S_ISDIR(status.st_mode)) {
        std::vector<std::string> names;
        for (const auto &entry : fs::directory_iterator(path)) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        for (const auto &entry : names) {
            const auto below = '/' + entry;
            addLines(std::string(path).append(below), std::string(name).append(below), lines);
        }
    }
}

void setTime(const std::string &path, time_t seconds)
{
    const std::array<timespec, 2> times{timespec{seconds, 0}, timespec{seconds, 5}};
    ::utimensat(AT_FDCWD, path.c_str(), times.data(), AT_SYMLINK_NOFOLLOW);
}

} // namespace

Folder::Folder(const std::string &where) : m_path(where + "/test.XXXXXX")
{
    if (::mkdtemp(m_path.data()) == nullptr) {
        qFatal("cannot make a folder in %s", where.c_str());
    }
}

Folder::~Folder()
{
    std::error_code error;
    makeFoldersWritable(m_path);
    fs::remove_all(m_path, error);
}

QStringList Folder::names() const
{
    QStringList names;
    for (const auto &entry : fs::directory_iterator(m_path)) {
        names << text(entry.path().filename().string());
    }
    names.sort();
    return names;
}

QString text(const std::string &path)
{
    return platform::fileNameFromBytes(QByteArray::fromStdString(path));
}

void writeFile(const std::string &path, const std::string &contents)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << contents;
    file.close();
    if (!file) {
        qFatal("cannot write %s", path.c_str());
    }
}

void makeFolder(const std::string &path)
{
    fs::create_directories(path);
}

void makeLink(const std::string &target, const std::string &path)
{
    fs::create_symlink(target, path);
}

std::string readFile(const std::string &path)
{
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    std::string contents(file ? static_cast<std::size_t>(file.tellg()) : 0, 0);
    file.seekg(0);
    file.read(contents.data(), static_cast<std::streamsize>(contents.size()));
    return contents;
}

bool exists(const std::string &path)
{
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0;
}

QStringList tree(const std::string &path)
{
    QStringList lines;
    addLines(path, "", lines);
    return lines;
}

void makeTree(const std::string &path, std::size_t largest)
{
    makeFolder(path + "/empty");
    makeFolder(path + "/folder/below");
    makeFolder(path + "/closed");
    writeFile(path + "/file", "file");
    writeFile(path + "/nothing", "");
    writeFile(path + "/large", std::string(largest, 'l'));
    writeFile(path + "/folder/script", "#!/bin/sh\n");
    writeFile(path + "/folder/below/caf\xE9\n-", "odd");
    writeFile(path + "/closed/file", "in a folder that lets nobody write");
    makeLink("file", path + "/link");
    makeLink("/nowhere", path + "/folder/dangling");
    ::mkfifo((path + "/folder/pipe").c_str(), 0600);
    ::chmod((path + "/folder/script").c_str(), 0751);
    ::chmod((path + "/file").c_str(), 0400);
    ::chmod((path + "/folder").c_str(), 0750);
    setTime(path + "/file", 1000000000);
    setTime(path + "/link", 1000000001);
    setTime(path + "/folder/script", 1000000002);
    ::chmod((path + "/closed").c_str(), 0500);
}

const std::vector<OddName> &oddNames()
{
    static const std::vector<OddName> names{
        {"dash", "-rf"},
        {"two dashes", "--"},
        {"single quote", "it's"},
        {"double quotes", "\"quoted\""},
        {"line break", "two\nlines\r\n"},
        {"percent signs", "100%s%n%@%20"},
        {"shell", "$(id);`id`|*?[a]&<>\\"},
        {"spaces", "  a  "},
        {"dots", "..."},
        {"hidden", ".hidden"},
        {"Latin-1", "caf\xE9.txt"},
        {"no characters", "\xFF\xFE\x80"},
        {"cut short", "\xE2\x82"},
        {"UTF-8", "Gr\xC3\xBC\xC3\x9F"
                  "e \xF0\x9F\x8E\xB9.plist"},
        {"255 bytes", std::string(251, 'x') + ".txt"},
        {"255 bytes of UTF-8",
         [] {
             std::string name;
             for (int i = 0; i < 63; ++i) {
                 name += "\xF0\x9F\x8E\xB9";
             }
             return name + "abc";
         }()},
        {"255 bytes without meaning", std::string(255, '\xFF')},
    };
    return names;
}

} // namespace test
