// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Tests/Shared/Support/GatheringFixture.h"

#include "Shared/Basics/ZQLocalPaths.h"
#include "Tests/Shared/Log/LogFixture.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QPushButton>
#include <QSet>

#include <filesystem>

namespace test {
namespace {

const QString folderName = QStringLiteral("ZQ_App_Logs");

// Names in the archive as hexadecimal, one per line; by Python, which made none of it.
const QString lister = QStringLiteral("import sys, zipfile\n"
                                      "archive = zipfile.ZipFile(sys.argv[1])\n"
                                      "if archive.testzip():\n"
                                      "    sys.exit(archive.testzip())\n"
                                      "for name in archive.namelist():\n"
                                      "    print(name.encode('utf-8').hex())\n");
const QString reader = QStringLiteral("import sys, zipfile\n"
                                      "archive = zipfile.ZipFile(sys.argv[1])\n"
                                      "sys.stdout.buffer.write(archive.read(sys.argv[2]))\n");

QByteArray outputOf(const QString &program, const QStringList &arguments, QString &complaint)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished() || process.exitCode() != 0) {
        complaint = program + QStringLiteral(": ") +
                    QString::fromUtf8(process.readAllStandardError()) +
                    QString::fromUtf8(process.readAllStandardOutput());
    }
    return process.readAllStandardOutput();
}

QString description(const platform::AlertPanel &alert)
{
    QStringList buttons;
    for (const auto *button : alert.findChildren<QPushButton *>()) {
        buttons << button->objectName();
    }
    return QStringLiteral("%1|%2|%3|%4")
        .arg(alert.description().messageText, alert.description().informativeText,
             buttons.join(QLatin1Char(',')))
        .arg(alert.windowModality());
}

} // namespace

GatheringFixture::GatheringFixture()
    : m_user([this](platform::AlertPanel &alert) {
          m_alerts << description(alert);
          click(alert, "defaultButton");
      })
{
    // Of names that are no text QDir knows nothing.
    std::filesystem::remove_all(home(QStringLiteral("Library/Logs")).toStdString());
    clearLibraries();
    QDir(temporaryFolder()).removeRecursively();
    QDir(desktop()).removeRecursively();
    QDir().mkpath(desktop());
}

GatheringFixture::~GatheringFixture()
{
    QDir::setCurrent(QStringLiteral("/tmp"));
}

QString GatheringFixture::home(const QString &below)
{
    return QDir::homePath() + QLatin1Char('/') + below;
}

QString GatheringFixture::desktop(const QString &name)
{
    const auto folder = home(QStringLiteral("Desktop"));
    return name.isNull() ? folder : folder + QLatin1Char('/') + name;
}

QString GatheringFixture::temporaryFolder(const QString &path)
{
    return ZQLocalPaths::tempDirectory() + QLatin1Char('/') + folderName + path;
}

QStringList GatheringFixture::desktopNames()
{
    return QDir(desktop()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

QString GatheringFixture::complaintAboutArchive(const QStringList &files, const QString &name)
{
    QSet<QString> expected;
    for (const auto &file : files) {
        const auto inArchive = folderName + file;
        expected << inArchive;
        for (auto end = inArchive.lastIndexOf(QLatin1Char('/')); end > 0;
             end = inArchive.lastIndexOf(QLatin1Char('/'), end - 1)) {
            expected << inArchive.left(end + 1);
        }
    }
    QString complaint;
    outputOf(QStringLiteral("/usr/bin/unzip"), {QStringLiteral("-tq"), desktop(name)}, complaint);
    const auto lines = outputOf(QStringLiteral("/usr/bin/python3"),
                                {QStringLiteral("-c"), lister, desktop(name)}, complaint)
                           .split('\n');
    QSet<QString> found;
    for (const auto &line : lines) {
        if (!line.isEmpty()) {
            const auto entry = QString::fromUtf8(QByteArray::fromHex(line));
            if (found.contains(entry)) {
                complaint += QStringLiteral(" twice: ") + entry;
            }
            found << entry;
        }
    }
    for (const auto &entry : expected - found) {
        complaint += QStringLiteral(" missing: ") + entry;
    }
    for (const auto &entry : found - expected) {
        complaint += QStringLiteral(" too much: ") + entry;
    }
    return complaint;
}

QByteArray GatheringFixture::gathered(const QString &file, const QString &name)
{
    QString complaint;
    const auto bytes =
        outputOf(QStringLiteral("/usr/bin/python3"),
                 {QStringLiteral("-c"), reader, desktop(name), folderName + file}, complaint);
    return complaint.isNull() ? bytes : complaint.toUtf8();
}

QString modalAlert(const QString &title, const QString &message)
{
    return QStringLiteral("%1|%2|defaultButton|%3").arg(title, message).arg(Qt::ApplicationModal);
}

} // namespace test
