// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/ExecutableFile.h"

#include "Platform/Core/Files/FilePackage.h"
#include "Platform/Core/Text/FileName.h"
#include "Tests/Support/Children.h"
#include "Tests/Support/TestProgram.h"

#include <QDir>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

using test::text;

class ExecutableFileTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aFileWithExecutePermissionIsExecutable();
    void aFileWithoutExecutePermissionIsNot();
    void aFolderIsExecutableAndNoExecutableFile();
    void aLinkIsAsExecutableAsWhatItLeadsTo();
    void whatIsNoPathIsNotExecutable();
    void namesOfAnyBytesAreTold();

    void aFolderWithAPackagesEndingIsAPackage_data();
    void aFolderWithAPackagesEndingIsAPackage();
    void aFileWithAPackagesEndingIsNone();
    void aLinkToAPackageIsOne();
    void aMissingPackageIsNone();
};

void ExecutableFileTest::aFileWithExecutePermissionIsExecutable()
{
    test::makeExecutable(text("/tmp/tool"), "#!/bin/sh\n");
    QVERIFY(platform::isExecutable(text("/tmp/tool")));
    QVERIFY(platform::isExecutableFile(text("/tmp/tool")));
}

void ExecutableFileTest::aFileWithoutExecutePermissionIsNot()
{
    test::makeExecutable(text("/tmp/text"), "#!/bin/sh\n");
    QCOMPARE(::chmod("/tmp/text", 0644), 0);
    QVERIFY(!platform::isExecutable(text("/tmp/text")));
    QVERIFY(!platform::isExecutableFile(text("/tmp/text")));
}

void ExecutableFileTest::aFolderIsExecutableAndNoExecutableFile()
{
    QVERIFY(platform::isExecutable(text("/tmp")));
    QVERIFY(!platform::isExecutableFile(text("/tmp")));
    QVERIFY(!platform::isExecutable(text("/dev/null")));
}

void ExecutableFileTest::aLinkIsAsExecutableAsWhatItLeadsTo()
{
    QCOMPARE(::symlink("/bin/true", "/tmp/link"), 0);
    QCOMPARE(::symlink("/tmp/missing", "/tmp/broken"), 0);
    QVERIFY(platform::isExecutableFile(text("/tmp/link")));
    QVERIFY(!platform::isExecutable(text("/tmp/broken")));
}

void ExecutableFileTest::whatIsNoPathIsNotExecutable()
{
    for (const auto &path : {QString(), text(""), text("/bin/missing"), text("/bin/true/"),
                             text("/bin/true") + QChar(0) + text("x")}) {
        QVERIFY2(!platform::isExecutable(path), qPrintable(path));
        QVERIFY2(!platform::isExecutableFile(path), qPrintable(path));
    }
}

void ExecutableFileTest::namesOfAnyBytesAreTold()
{
    const auto path = platform::fileNameFromBytes("/tmp/-a \xFF\n%");
    test::makeExecutable(path, "#!/bin/sh\n");
    QVERIFY(platform::isExecutableFile(path));
}

void ExecutableFileTest::aFolderWithAPackagesEndingIsAPackage_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<bool>("isPackage");
    for (const auto *name : {"A.app", "A.bundle", "A.prefPane", "A.framework", "A.plugin", "A.APP",
                             "A.prefpane", "a.b.app", "A.app/", "A.app//", "\xFF\n.app"}) {
        QTest::newRow(name) << QByteArray(name) << true;
    }
    for (const auto *name : {"A", "A.", "A.apps", "A.ap", "Aapp", ".app", "A.app.", "A.app ", "app",
                             "A.okl", "A.app/inside"}) {
        QTest::newRow(name) << QByteArray(name) << false;
    }
}

void ExecutableFileTest::aFolderWithAPackagesEndingIsAPackage()
{
    QFETCH(QByteArray, name);
    QFETCH(bool, isPackage);
    const QByteArray path = "/tmp/packages/" + name;
    ::mkdir("/tmp/packages", 0755);
    ::mkdir("/tmp/packages/A.app", 0755);
    ::mkdir(path.constData(), 0755);
    QCOMPARE(platform::isFilePackage(platform::fileNameFromBytes(path)), isPackage);
}

void ExecutableFileTest::aFileWithAPackagesEndingIsNone()
{
    test::makeExecutable(text("/tmp/file.app"), "");
    QVERIFY(!platform::isFilePackage(text("/tmp/file.app")));
    QVERIFY(platform::isExecutableFile(text("/tmp/file.app")));
}

void ExecutableFileTest::aLinkToAPackageIsOne()
{
    QVERIFY(QDir().mkpath(text("/tmp/folder")));
    QCOMPARE(::symlink("/tmp/folder", "/tmp/link.app"), 0);
    QVERIFY(platform::isFilePackage(text("/tmp/link.app")));
}

void ExecutableFileTest::aMissingPackageIsNone()
{
    for (const auto &path : {QString(), text(""), text("/"), text("/tmp/missing.app"),
                             text("/tmp.app") + QChar(0) + text(".app")}) {
        QVERIFY2(!platform::isFilePackage(path), qPrintable(path));
    }
}

TEST_CLASS(ExecutableFileTest, QCoreApplication)
#include "ExecutableFileTest.moc"
