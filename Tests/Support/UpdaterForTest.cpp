// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Tests/Support/UpdaterForTest.h"

#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Tests/Support/FileTree.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <sys/stat.h>

#include <filesystem>

namespace test::updater {
namespace {

const QString notes = QStringLiteral("/tmp/runs-of-the-updater");

// One write for the whole line, so that two runs do not mix.
const char *const script = R"(#!/bin/sh
line=$0
for argument; do line="$line [$argument]"; done
echo "$line" >>/tmp/runs-of-the-updater
)";

} // namespace

QString installedPath()
{
    return QStringLiteral("/Applications/Corvane/Corvane Software Update.app");
}

void make(const QString &path, const QVariant &version)
{
    remove(path);
    QDir().mkpath(path + QStringLiteral("/Contents/MacOS"));
    QVariantMap info{{QStringLiteral("CFBundleExecutable"), QStringLiteral("updater")}};
    if (version.isValid()) {
        info[QStringLiteral("CFBundleVersion")] = version;
    }
    const auto executable = path.toStdString() + "/Contents/MacOS/updater";
    writeFile(executable, script);
    if (!platform::writeDictionaryToFile(info, path + QStringLiteral("/Contents/Info.plist")) ||
        ::chmod(executable.c_str(), 0755) != 0) {
        qFatal("cannot make an updater");
    }
}

void remove(const QString &path)
{
    std::filesystem::remove_all(path.toStdString());
}

QStringList runs()
{
    QFile file(notes);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    auto lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    lines.removeLast(); // behind the last line break
    return lines;
}

QStringList waitForRuns(int count)
{
    constexpr auto patience = 10'000;
    [[maybe_unused]] const auto came =
        QTest::qWaitFor([&] { return runs().size() >= count; }, patience);
    return runs();
}

void forget()
{
    QFile::remove(notes);
}

} // namespace test::updater
