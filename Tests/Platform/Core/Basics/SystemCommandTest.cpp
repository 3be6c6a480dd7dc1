// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Basics/SystemCommand.h"

#include "Platform/Core/Basics/TrustedPath.h"
#include "Tests/Support/TestProgram.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTest>

#include <grp.h>
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
    void rootRunsNothingThroughALinkOfOthers();
    void ourOwnChownIsRunWhereNoGroupWheelExists();
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
    QVERIFY(QFile::remove(path));
}

void SystemCommandTest::aPathElsewhereIsLeftAsItIs()
{
    for (const auto *path : {"/tmp/mkdir", "mkdir", "/usr/local/bin/mkdir", "/usr/bin/x/mkdir"}) {
        QCOMPARE(platform::systemCommand(text(path)), text(path));
    }
}

void SystemCommandTest::rootRunsNothingThroughALinkOfOthers()
{
    const auto isRoot = ::geteuid() == 0;
    const auto path = text("/usr/sbin/mkdir");
    QVERIFY(QDir().mkpath(text("/Library/open")));
    QVERIFY(QFile::link(text("/usr/bin/mkdir"), text("/Library/open/tool")));
    QVERIFY(QFile::link(text("/Library/open/tool"), path));
    QCOMPARE(::chmod("/Library/open", 0777), 0);
    QCOMPARE(platform::systemCommand(path), isRoot ? text("/usr/bin/mkdir") : path);
    QCOMPARE(::chmod("/Library/open", 0755), 0);
    QCOMPARE(platform::systemCommand(path), path);
    QVERIFY(QFile::remove(path));
}

// As where "/usr/sbin" and "/usr/bin" are one folder.
void SystemCommandTest::ourOwnChownIsRunWhereNoGroupWheelExists()
{
    const auto path = text("/usr/sbin/chown");
    const auto ours = platform::privateCommandFolder() + text("/chown");
    const bool isOursTrusted =
        ::geteuid() != 0 || platform::openTrusted(ours.toStdString()).file.isOpen();
    makeExecutable(path, 0755);
    QVERIFY(::getgrnam("wheel") == nullptr);
    QCOMPARE(platform::systemCommand(path), isOursTrusted ? ours : path);
    QCOMPARE(platform::systemCommand(text("/usr/bin/touch")), text("/usr/bin/touch"));
    QVERIFY(QFile::remove(path));
}

TEST_CLASS(SystemCommandTest, QCoreApplication)
#include "SystemCommandTest.moc"
