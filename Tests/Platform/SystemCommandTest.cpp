// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/SystemCommand.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

namespace {

QString text(const char *characters)
{
    return QString::fromUtf8(characters);
}

void makeExecutable(const QString &path, uint mode)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("#!/bin/sh\n");
    file.close();
    QCOMPARE(::chmod(path.toUtf8().constData(), mode), 0);
}

} // namespace

class SystemCommandTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aCommandThatIsThereIsRunAsAsked();
    void aCommandElsewhereIsFoundUnderItsUsualPath();
    void theEnvironmentIsNotLookedAt();
    void aCommandThatNobodyHasKeepsItsPath();
    void rootRunsOnlyWhatOnlyRootCanChange();
    void aPathElsewhereIsLeftAsItIs();
    void aFolderThatOthersMayWriteToIsNotRootsAlone();
};

void SystemCommandTest::aCommandThatIsThereIsRunAsAsked()
{
    QCOMPARE(platform::systemCommand(text("/bin/rm")), text("/bin/rm"));
}

void SystemCommandTest::aCommandElsewhereIsFoundUnderItsUsualPath()
{
    const auto found = platform::systemCommand(text("/usr/sbin/mkdir"));
    QVERIFY2(found == text("/usr/bin/mkdir"), qPrintable(found));
}

void SystemCommandTest::theEnvironmentIsNotLookedAt()
{
    QVERIFY(QDir().mkpath(text("/tmp/path")));
    makeExecutable(text("/tmp/path/nobody-has-this"), 0755);
    qputenv("PATH", "/tmp/path");
    QCOMPARE(platform::systemCommand(text("/bin/nobody-has-this")), text("/bin/nobody-has-this"));
}

void SystemCommandTest::aCommandThatNobodyHasKeepsItsPath()
{
    for (const auto *path : {"/bin/nobody-has-this", "", "/", "rm/", "/bin/a\nb"}) {
        QCOMPARE(platform::systemCommand(text(path)), text(path));
    }
}

void SystemCommandTest::rootRunsOnlyWhatOnlyRootCanChange()
{
    const auto isRoot = ::geteuid() == 0;
    const auto path = text("/usr/sbin/mkdir");
    makeExecutable(path, 0777);
    QCOMPARE(platform::systemCommand(path), isRoot ? text("/usr/bin/mkdir") : path);
    QCOMPARE(::chmod(path.toUtf8().constData(), 0755), 0);
    QCOMPARE(platform::systemCommand(path), path);
    QCOMPARE(platform::isChangedOnlyByRoot(path), isRoot);
    QVERIFY(QFile::remove(path));
}

void SystemCommandTest::aPathElsewhereIsLeftAsItIs()
{
    for (const auto *path : {"/tmp/mkdir", "mkdir", "/usr/local/bin/mkdir", "/usr/bin/x/mkdir"}) {
        QCOMPARE(platform::systemCommand(text(path)), text(path));
    }
}

void SystemCommandTest::aFolderThatOthersMayWriteToIsNotRootsAlone()
{
    QVERIFY(QDir().mkpath(text("/Library/open/inner")));
    makeExecutable(text("/Library/open/inner/tool"), 0755);
    QCOMPARE(::chmod("/Library/open", 0777), 0);
    QVERIFY(!platform::isChangedOnlyByRoot(text("/Library/open/inner/tool")));
    QVERIFY(QFile::link(text("/Library/open/inner/tool"), text("/Library/link")));
    QVERIFY(!platform::isChangedOnlyByRoot(text("/Library/link")));
    QVERIFY(!platform::isChangedOnlyByRoot(text("/Library/missing")));
}

QTEST_GUILESS_MAIN(SystemCommandTest)
#include "SystemCommandTest.moc"
