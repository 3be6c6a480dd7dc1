// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Tests/Support/CopySource.h"

#include "Tests/Support/FileTree.h"

#include <QProcess>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>

namespace fs = std::filesystem;

namespace test {
namespace {

QString extendedAttributes(const std::string &path)
{
    std::array<char, 4096> names{};
    const auto size = ::llistxattr(path.c_str(), names.data(), names.size());
    QStringList lines;
    for (const auto *name = names.data(); name < names.data() + size;
         name += std::strlen(name) + 1) {
        std::array<char, 4096> value{};
        const auto length = ::lgetxattr(path.c_str(), name, value.data(), value.size());
        lines << QString::fromLatin1(name) + u'=' +
                     QString::fromLatin1(value.data(), static_cast<int>(length));
    }
    lines.sort();
    return lines.join(u',');
}

QString line(const std::string &path, const std::string &name)
{
    struct stat status {};
    ::lstat(path.c_str(), &status);
    return QStringLiteral("%1 %2 %3.%4 %5:%6 %7 %8")
        .arg(text(name), QString::number(status.st_mode, 8), QString::number(status.st_mtim.tv_sec),
             QString::number(status.st_mtim.tv_nsec), QString::number(status.st_uid),
             QString::number(status.st_gid),
             S_ISDIR(status.st_mode) ? QString() : QString::number(status.st_nlink),
             extendedAttributes(path));
}

} // namespace

void makeManyFiles(const std::string &path, int files)
{
    constexpr int inAFolder = 50;
    for (int i = 0; i < files; ++i) {
        const auto folder = path + "/folder " + std::to_string(i / inAFolder);
        if (i % inAFolder == 0) {
            makeFolder(folder);
        }
        const auto file = folder + "/file " + std::to_string(i);
        writeFile(file, std::string(static_cast<std::size_t>(i % 3000), static_cast<char>(i)));
        if (i % 7 == 0) {
            ::setxattr(file.c_str(), "user.number", &i, sizeof i, 0);
        }
        ::chmod(file.c_str(), static_cast<mode_t>(0400 + i % 0400));
        const std::array<timespec, 2> times{timespec{1000000000 + i, i},
                                            timespec{1100000000 + i, i * 3}};
        ::utimensat(AT_FDCWD, file.c_str(), times.data(), 0);
        if (i % inAFolder == inAFolder - 1) {
            ::utimensat(AT_FDCWD, folder.c_str(), times.data(), 0);
        }
    }
}

QStringList attributes(const std::string &path)
{
    QStringList lines(line(path, ""));
    for (const auto &entry : fs::recursive_directory_iterator(path)) {
        const auto name = entry.path().string().substr(path.size());
        lines << line(entry.path().string(), name);
    }
    lines.sort();
    return lines;
}

bool isSameByDiff(const std::string &path, const std::string &other)
{
    return QProcess::execute(QStringLiteral("diff"),
                             {QStringLiteral("-r"), QStringLiteral("--no-dereference"), text(path),
                              text(other)}) == 0;
}

const std::vector<std::string> &namesInEveryScript()
{
    static const std::vector<std::string> names{"Latin \u00c5\u00df\u0142\u0111\u0131",
                                                "e\u0301 and \u00e9",
                                                "\u0395\u03bb\u03bb\u03b7\u03bd\u03b9\u03ba\u03ac",
                                                "\u0420\u0443\u0441\u0441\u043a\u0438\u0439",
                                                "\u0540\u0561\u0575\u0565\u0580\u0565\u0576",
                                                "\u10e5\u10d0\u10e0\u10d7\u10e3\u10da\u10d8",
                                                "\u05e2\u05d1\u05e8\u05d9\u05ea",
                                                "\u0627\u0644\u0639\u0631\u0628\u064a\u0629",
                                                "\u200f\u202bmarks\u202c\u200e",
                                                "\u0939\u093f\u0928\u094d\u0926\u0940",
                                                "\u09ac\u09be\u0982\u09b2\u09be",
                                                "\u0ba4\u0bae\u0bbf\u0bb4\u0bcd",
                                                "\u0e44\u0e17\u0e22",
                                                "\u0f56\u0f7c\u0f51",
                                                "\u1019\u103c\u1014\u103a\u1019\u102c",
                                                "\u1781\u17d2\u1798\u17c2\u179a",
                                                "\u12a0\u121b\u122d\u129b",
                                                "\u13e3\u13b3\u13a9",
                                                "\u4e2d\u6587",
                                                "\u65e5\u672c\u8a9e\u30ab\u30ca",
                                                "\ud55c\uad6d\uc5b4",
                                                "\u1112\u1161\u11ab decomposed",
                                                "\U00010330\U0001033f",
                                                "\U0001f3b9\ufe0f\u200d\U0001f469",
                                                "line\nbreak\r\nbreak",
                                                "\u2028separator\u2029",
                                                std::string(255, 'n')};
    return names;
}

} // namespace test
