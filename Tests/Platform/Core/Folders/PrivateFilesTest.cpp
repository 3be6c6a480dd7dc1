// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Folders/PrivateFiles.h"

#include "Platform/Core/Files/AppendFile.h"
#include "Tests/Support/TestProgram.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

#include <cerrno>

class PrivateFilesTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void aFolderIsCreatedWithThoseAboveIt();
    void anExistingFolderKeepsItsPermissions();
    void aFolderWithAFileInItsWayIsNotCreated();
    void anEmptyFileReplacesWhatWasThere();
    void anEmptyFileReplacesALinkNotItsTarget();
    void aFailedEmptyFileSaysWhyAndLeavesNothingBehind();
    void renamingRefusesToReplace();
    void exchangingGivesEitherTheOthersName();
    void exchangingNeedsTwo();
    void aNameThatALinkToNowhereHasExists();

    void anAppendFileMustExist();
    void appendingGoesToTheEndWhereverThatIs();
    void removingATailTakesBackTheLastWrite();
    void removingATailSparesWhatOthersWrote();
};

namespace {

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void write(const QString &path, const QByteArray &contents,
           QIODevice::OpenMode mode = QIODevice::WriteOnly)
{
    QFile file(path);
    QVERIFY(file.open(mode));
    file.write(contents);
}

mode_t permissions(const QString &path)
{
    struct stat status {};
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & 07777U : 0;
}

std::unique_ptr<QTemporaryDir> folder;

QString path(const char *name)
{
    return folder->filePath(text(name));
}

} // namespace

void PrivateFilesTest::init()
{
    folder = std::make_unique<QTemporaryDir>();
}

void PrivateFilesTest::cleanup()
{
    folder.reset();
}

void PrivateFilesTest::aFolderIsCreatedWithThoseAboveIt()
{
    QVERIFY(platform::createPrivateFolder(path("a//b/ü c/")));
    for (const char *name : {"a", "a/b", "a/b/ü c"}) {
        QCOMPARE(permissions(path(name)), mode_t(0700));
    }
    QVERIFY(!platform::createPrivateFolder(QString()));
}

void PrivateFilesTest::anExistingFolderKeepsItsPermissions()
{
    QVERIFY(QDir().mkdir(path("a")));
    const auto before = permissions(path("a"));
    QVERIFY(platform::createPrivateFolder(path("a")));
    QCOMPARE(permissions(path("a")), before);
}

void PrivateFilesTest::aFolderWithAFileInItsWayIsNotCreated()
{
    write(path("a"), "x");
    QVERIFY(!platform::createPrivateFolder(path("a")));
    QVERIFY(!platform::createPrivateFolder(path("a/b")));
    QCOMPARE(contents(path("a")), QByteArray("x"));
}

void PrivateFilesTest::anEmptyFileReplacesWhatWasThere()
{
    QString error;
    QVERIFY(platform::createEmptyPrivateFile(path("new"), &error));
    QCOMPARE(permissions(path("new")), mode_t(0600));
    write(path("old"), "x");
    QVERIFY(platform::createEmptyPrivateFile(path("old"), &error));
    QCOMPARE(contents(path("old")), QByteArray());
    QCOMPARE(permissions(path("old")), mode_t(0600));
    QCOMPARE(QDir(folder->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden),
             (QStringList{text("new"), text("old")}));
}

void PrivateFilesTest::anEmptyFileReplacesALinkNotItsTarget()
{
    write(path("target"), "x");
    QVERIFY(QFile::link(path("target"), path("link")));
    QString error;
    QVERIFY(platform::createEmptyPrivateFile(path("link"), &error));
    QVERIFY(!QFileInfo(path("link")).isSymLink());
    QCOMPARE(contents(path("target")), QByteArray("x"));
}

void PrivateFilesTest::aFailedEmptyFileSaysWhyAndLeavesNothingBehind()
{
    QString error;
    QVERIFY(!platform::createEmptyPrivateFile(path("missing/file"), &error));
    QCOMPARE(error, text("No such file or directory"));
    QVERIFY(QDir().mkpath(path("folder/in")));
    QVERIFY(!platform::createEmptyPrivateFile(path("folder"), &error));
    QCOMPARE(error, text("Is a directory"));
    QCOMPARE(QDir(folder->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden),
             QStringList(text("folder")));
}

void PrivateFilesTest::renamingRefusesToReplace()
{
    write(path("a"), "a");
    write(path("b"), "b");
    QVERIFY(!platform::renameWithoutReplacing(path("a"), path("b")));
    QCOMPARE(contents(path("a")), QByteArray("a"));
    QCOMPARE(contents(path("b")), QByteArray("b"));
    QVERIFY(platform::renameWithoutReplacing(path("a"), path("c")));
    QCOMPARE(contents(path("c")), QByteArray("a"));
    QVERIFY(!QFile::exists(path("a")));
    QVERIFY(!platform::renameWithoutReplacing(path("missing"), path("d")));
}

void PrivateFilesTest::exchangingGivesEitherTheOthersName()
{
    write(path("a"), "a");
    QVERIFY(QDir().mkdir(path("b")));
    QVERIFY(platform::exchangeNames(path("a"), path("b")));
    QCOMPARE(contents(path("b")), QByteArray("a"));
    QVERIFY(QFileInfo(path("a")).isDir());
}

void PrivateFilesTest::exchangingNeedsTwo()
{
    write(path("a"), "a");
    QVERIFY(!platform::exchangeNames(path("a"), path("b")));
    QVERIFY(!platform::exchangeNames(path("b"), path("a")));
    QVERIFY(!platform::exchangeNames(QString(), path("a")));
    QCOMPARE(contents(path("a")), QByteArray("a"));
    QVERIFY(!QFileInfo::exists(path("b")));
}

void PrivateFilesTest::aNameThatALinkToNowhereHasExists()
{
    QVERIFY(!platform::nameExists(path("a")));
    QVERIFY(QFile::link(path("nowhere"), path("a")));
    QVERIFY(platform::nameExists(path("a")));
    QVERIFY(platform::nameExists(folder->path()));
}

void PrivateFilesTest::anAppendFileMustExist()
{
    QVERIFY(platform::AppendFile::open(path("missing")) == nullptr);
    QVERIFY(!QFile::exists(path("missing")));
    QVERIFY(platform::AppendFile::open(folder->path()) == nullptr);
}

void PrivateFilesTest::appendingGoesToTheEndWhereverThatIs()
{
    write(path("a"), "one ");
    const auto file = platform::AppendFile::open(path("a"));
    QCOMPARE(file->append("two ", 4).written, std::size_t(4));
    write(path("a"), "three ", QIODevice::Append);
    QCOMPARE(file->append("four", 4).error, 0);
    QCOMPARE(contents(path("a")), QByteArray("one two three four"));
    QCOMPARE(file->append("", 0).written, std::size_t(0));
}

void PrivateFilesTest::removingATailTakesBackTheLastWrite()
{
    write(path("a"), "one ");
    const auto file = platform::AppendFile::open(path("a"));
    file->append("two three", 9);
    file->removeTail(5);
    QCOMPARE(contents(path("a")), QByteArray("one two "));
    file->append("four", 4);
    QCOMPARE(contents(path("a")), QByteArray("one two four"));
}

void PrivateFilesTest::removingATailSparesWhatOthersWrote()
{
    write(path("a"), "");
    const auto file = platform::AppendFile::open(path("a"));
    file->append("one ", 4);
    write(path("a"), "two", QIODevice::Append);
    file->removeTail(4);
    QCOMPARE(contents(path("a")), QByteArray("one two"));
}

TEST_CLASS(PrivateFilesTest, QCoreApplication)
#include "PrivateFilesTest.moc"
