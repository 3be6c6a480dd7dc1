// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/FileContents.h"

#include "Tests/Support/TestProgram.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using platform::contentsOfFile;
using platform::replaceFile;

// What is special to property lists, and most failures, are in the test of their files.
class FileContentsTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aFileUpToTheLimitIsReadWhole();
    void aFileThatTellsNoSizeIsReadWholeUpToTheLimit();
    void contentsAreReplacedWhole();

private:
    QTemporaryDir m_folder;
};

void FileContentsTest::aFileUpToTheLimitIsReadWhole()
{
    const auto path = m_folder.filePath(QStringLiteral("file"));
    for (const auto size : {0, 1, 4095, 4096, 1000000}) {
        const QByteArray contents(size, 'a');
        QVERIFY(replaceFile(path, contents));
        QCOMPARE(contentsOfFile(path, size), contents);
        QCOMPARE(contentsOfFile(path, qint64(1) << 40U), contents);
        QVERIFY(!contentsOfFile(path, size - 1));
    }
}

void FileContentsTest::aFileThatTellsNoSizeIsReadWholeUpToTheLimit()
{
    const auto path = QStringLiteral("/proc/self/maps");
    QCOMPARE(QFile(path).size(), 0);
    const auto contents = contentsOfFile(path, 10000000).value_or(QByteArray());
    QVERIFY(contents.size() > 1000);
    QVERIFY(contents.contains("FilesTests"));
    QVERIFY(contents.endsWith('\n'));
    QVERIFY(!contentsOfFile(path, 1000));
}

void FileContentsTest::contentsAreReplacedWhole()
{
    const auto path = m_folder.filePath(QStringLiteral("replaced"));
    for (const auto &contents :
         {QByteArray(1000000, 'a'), QByteArray("\0\n\xFF", 3), QByteArray()}) {
        QString error;
        QVERIFY2(replaceFile(path, contents, &error), qUtf8Printable(error));
        QVERIFY(error.isNull());
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), contents);
    }
}

TEST_CLASS(FileContentsTest, QCoreApplication)
#include "FileContentsTest.moc"
