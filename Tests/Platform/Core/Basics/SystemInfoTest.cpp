// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Basics/SystemInfo.h"

#include "Tests/Support/TestProgram.h"

#include <QFile>
#include <QRegularExpression>
#include <QTest>

class SystemInfoTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void theOperatingSystemIsTheOneOfTheReleaseFile();
    void theProcessorsAreThoseOfTheKernel();
    void theMemoryIsThatOfTheKernel();

private:
    static QString contents(const QString &path);
};

QString SystemInfoTest::contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

void SystemInfoTest::theOperatingSystemIsTheOneOfTheReleaseFile()
{
    const QRegularExpression line(QStringLiteral("^PRETTY_NAME=\"?([^\"\n]*)"),
                                  QRegularExpression::MultilineOption);
    const auto name = line.match(contents(QStringLiteral("/etc/os-release"))).captured(1);
    QVERIFY(!name.isEmpty());
    QCOMPARE(platform::operatingSystemVersionString(), name);
}

void SystemInfoTest::theProcessorsAreThoseOfTheKernel()
{
    const auto lines = contents(QStringLiteral("/proc/cpuinfo")).split(QChar(u'\n'));
    QCOMPARE(platform::processorCount(),
             static_cast<long>(
                 lines.filter(QRegularExpression(QStringLiteral("^processor\\s*:"))).size()));
}

void SystemInfoTest::theMemoryIsThatOfTheKernel()
{
    const QRegularExpression line(QStringLiteral("MemTotal:\\s*(\\d+) kB"));
    const auto kibibytes =
        line.match(contents(QStringLiteral("/proc/meminfo"))).captured(1).toULongLong();
    QVERIFY(kibibytes > 0);
    QCOMPARE(platform::physicalMemory(), kibibytes * 1024);
}

TEST_CLASS(SystemInfoTest, QCoreApplication)
#include "SystemInfoTest.moc"
