// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Basics/Descriptor.h"
#include "Shared/Files/ZQFileManager.h"
#include "Tests/Shared/Files/FileManagerFixture.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstring>

using namespace std::chrono_literals;
using test::FileManagerFixture;
using test::text;

class ZQFileManagerMoveTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() { m_fixture = std::make_unique<FileManagerFixture>(); }
    void cleanup() { m_fixture.reset(); }

    void everyNameIsMoved_data();
    void everyNameIsMoved();
    void aMoveReplacesNothingWithOnesOwnRights();
    void authorizingIsASecondLineAndOnlyWhereItMay();
    void aMissingSourceFails();

    void aChangeOfCaseSucceedsWhereCaseCounts();
    void aChangeOfCaseToATakenNameLeavesBothFiles();
    void aMoveToANameThatIsTheSameGoesThroughAnother();
    void aTimedChangeOfCaseReturnsTrueWithoutWaiting();
    void aFolderIsMovedToAnotherFileSystem();

private:
    std::unique_ptr<FileManagerFixture> m_fixture;
};

void ZQFileManagerMoveTest::everyNameIsMoved_data()
{
    QTest::addColumn<int>("index");
    for (std::size_t i = 0; i < test::oddNames().size(); ++i) {
        QTest::newRow(test::oddNames()[i].why) << static_cast<int>(i);
    }
}

void ZQFileManagerMoveTest::everyNameIsMoved()
{
    QFETCH(int, index);
    auto &at = *m_fixture;
    const auto name = test::oddNames()[static_cast<std::size_t>(index)].name;
    test::makeTree(at / name);
    const auto whole = test::tree(at / name);
    test::makeFolder(at / "other");
    QVERIFY(ZQFileManager::moveFile(at.path(name), at.path("other/" + name), ShouldAuth::No));
    QCOMPARE(test::tree(at / ("other/" + name)), whole);
    QVERIFY(ZQFileManager::moveFile(at.path("other/" + name), at.path("plain"), 0s));
    QCOMPARE(test::tree(at / "plain"), whole);
    QVERIFY(ZQFileManager::moveFile(at.path("plain"), at.path(name)));
    QCOMPARE(test::tree(at / name), whole);
    QCOMPARE(at.folder().names().size(), 2);
}

void ZQFileManagerMoveTest::aMoveReplacesNothingWithOnesOwnRights()
{
    auto &at = *m_fixture;
    test::writeFile(at / "a", "a");
    test::writeFile(at / "b", "b");
    QVERIFY(!ZQFileManager::moveFile(at.path("a"), at.path("b"), ShouldAuth::No));
    QCOMPARE(test::readFile(at / "a"), std::string("a"));
    QCOMPARE(test::readFile(at / "b"), std::string("b"));
    // The tool replaces it; for an ordinary user that has to be authorised first.
    QCOMPARE(ZQFileManager::moveFile(at.path("a"), at.path("b"), 60s), test::isRoot());
    QCOMPARE(test::readFile(at / "b"), std::string(test::isRoot() ? "a" : "b"));
    QCOMPARE(test::exists(at / "a"), !test::isRoot());
}

void ZQFileManagerMoveTest::authorizingIsASecondLineAndOnlyWhereItMay()
{
    auto &at = *m_fixture;
    const auto line =
        QStringLiteral("Error moving file: %1: No such file or directory.").arg(at.path("missing"));
    QVERIFY(!ZQFileManager::moveFile(at.path("missing"), at.path("moved"), ShouldAuth::No));
    QCOMPARE(FileManagerFixture::logged(), QStringList(line));
    QVERIFY(!ZQFileManager::moveFile(at.path("missing"), at.path("moved"), ShouldAuth::Yes));
    QCOMPARE(FileManagerFixture::logged(),
             (QStringList{line, line, QStringLiteral("Authorizing...")}));
}

void ZQFileManagerMoveTest::aMissingSourceFails()
{
    auto &at = *m_fixture;
    test::writeFile(at / "file");
    QVERIFY(!ZQFileManager::moveFile(QString(), at.path("moved")));
    QVERIFY(!ZQFileManager::moveFile(at.path("file"), QString()));
    QVERIFY(!ZQFileManager::moveFile(QString(), QString()));
    QVERIFY(!ZQFileManager::moveFile(at.path("file"), at.path("missing/moved"), ShouldAuth::No));
    QCOMPARE(at.folder().names(), QStringList(QStringLiteral("file")));
}

void ZQFileManagerMoveTest::aChangeOfCaseSucceedsWhereCaseCounts()
{
    auto &at = *m_fixture;
    test::writeFile(at / "File", "contents");
    QVERIFY(ZQFileManager::moveFile(at.path("File"), at.path("file"), ShouldAuth::No));
    QCOMPARE(at.folder().names(), QStringList(QStringLiteral("file")));
    QCOMPARE(test::readFile(at / "file"), std::string("contents"));
    QVERIFY(FileManagerFixture::logged().isEmpty());
}

void ZQFileManagerMoveTest::aChangeOfCaseToATakenNameLeavesBothFiles()
{
    auto &at = *m_fixture;
    test::writeFile(at / "File", "upper");
    test::writeFile(at / "file", "lower");
    QVERIFY(!ZQFileManager::moveFile(at.path("File"), at.path("file"), ShouldAuth::No));
    QCOMPARE(at.folder().names().size(), 2);
    QCOMPARE(test::readFile(at / "File"), std::string("upper"));
    QCOMPARE(test::readFile(at / "file"), std::string("lower"));
}

// What a file system does for which "File" and "file" are the same, for any file system.
void ZQFileManagerMoveTest::aMoveToANameThatIsTheSameGoesThroughAnother()
{
    auto &at = *m_fixture;
    test::writeFile(at / "File", "contents");
    const platform::Descriptor watch(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    QVERIFY(::inotify_add_watch(watch.fd(), at.folder().path().c_str(), IN_MOVE) >= 0);
    QVERIFY(ZQFileManager::moveFile(at.path("File"), at.path("File"), ShouldAuth::No));
    QCOMPARE(at.folder().names(), QStringList(QStringLiteral("File")));
    QCOMPARE(test::readFile(at / "File"), std::string("contents"));

    std::array<char, 4096> events{};
    const auto size = ::read(watch.fd(), events.data(), events.size());
    QStringList names;
    for (ssize_t i = 0; i < size;) {
        inotify_event event{};
        std::memcpy(&event, events.data() + i, sizeof event);
        i += static_cast<ssize_t>(sizeof event);
        names << QString::fromUtf8(events.data() + i);
        i += event.len;
    }
    const auto name = QStringLiteral("File");
    const auto between = QStringLiteral("File 2");
    QCOMPARE(names, (QStringList{name, between, between, name}));
}

void ZQFileManagerMoveTest::aTimedChangeOfCaseReturnsTrueWithoutWaiting()
{
    auto &at = *m_fixture;
    test::writeFile(at / "File");
    // The source is still there at the end, for which every other move would wait in vain.
    QVERIFY(ZQFileManager::moveFile(at.path("File"), at.path("File"), 3600s));
    QVERIFY(test::exists(at / "File"));
    QVERIFY(ZQFileManager::moveFile(at.path("File"), at.path("file"), 3600s));
    QVERIFY(!ZQFileManager::moveFile(at.path("Missing"), at.path("missing"), 3600s));
}

void ZQFileManagerMoveTest::aFolderIsMovedToAnotherFileSystem()
{
    auto &at = *m_fixture;
    const test::Folder other("/var/tmp");
    test::makeTree(at / "tree");
    ::chmod((at / "tree/closed").c_str(), 0700);
    const auto whole = test::tree(at / "tree");
    QVERIFY(ZQFileManager::moveFile(at.path("tree"), text(other / "tree"), ShouldAuth::No));
    QCOMPARE(test::tree(other / "tree"), whole);
    QVERIFY(at.folder().names().isEmpty());
}

TEST_CLASS(ZQFileManagerMoveTest, QCoreApplication)
#include "ZQFileManagerMoveTest.moc"
