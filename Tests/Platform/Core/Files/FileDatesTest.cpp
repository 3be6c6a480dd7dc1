// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/FileDates.h"

#include "Platform/Core/Files/FilePermissions.h"
#include "Platform/Core/Files/FinderInfo.h"
#include "Tests/Support/FileTree.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>

class FileDatesTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aDateIsSetToTheMillisecond();
    void theTimeOfTheLastAccessStays();
    void aCreationDateIsThatOfTheFileSystemUntilOneIsSet();
    void datesOfWhatIsNotThereAreInvalid();
    void permissionsAreSetOrTheReasonIsTold();
    void finderFlagsAreTheNinthAndTenthByte();
    void theRestOfTheFinderInformationIsKept();
    void whatHasNoFinderInformationHasNoFlags();
};

void FileDatesTest::aDateIsSetToTheMillisecond()
{
    const test::Folder folder;
    test::writeFile(folder / "file");
    const auto path = test::text(folder / "file");
    for (const auto milliseconds : {qint64{1234567890123}, qint64{0}, qint64{-1500}, qint64{-1}}) {
        const auto date = QDateTime::fromMSecsSinceEpoch(milliseconds);
        QVERIFY(platform::setModificationDate(date, path));
        QCOMPARE(platform::modificationDate(path), date);
    }
}

void FileDatesTest::theTimeOfTheLastAccessStays()
{
    const test::Folder folder;
    test::writeFile(folder / "file");
    struct stat before {};
    struct stat after {};
    QCOMPARE(::stat((folder / "file").c_str(), &before), 0);
    QVERIFY(platform::setModificationDate(QDateTime::fromMSecsSinceEpoch(5000),
                                          test::text(folder / "file")));
    QCOMPARE(::stat((folder / "file").c_str(), &after), 0);
    QCOMPARE(after.st_atim.tv_sec, before.st_atim.tv_sec);
    QCOMPARE(after.st_atim.tv_nsec, before.st_atim.tv_nsec);
    QCOMPARE(after.st_mtim.tv_sec, time_t{5});
}

void FileDatesTest::aCreationDateIsThatOfTheFileSystemUntilOneIsSet()
{
    const test::Folder folder;
    const auto before = QDateTime::currentDateTimeUtc();
    test::writeFile(folder / "file");
    const auto path = test::text(folder / "file");
    QVERIFY(qAbs(before.secsTo(platform::creationDate(path))) < 60);
    const auto date = QDateTime::fromMSecsSinceEpoch(1234567890123);
    QVERIFY(platform::setCreationDate(date, path));
    QCOMPARE(platform::creationDate(path), date);
    QCOMPARE(::setxattr((folder / "file").c_str(), "user.creation_date", "never", 5, 0), 0);
    QVERIFY(qAbs(before.secsTo(platform::creationDate(path))) < 60);
}

void FileDatesTest::datesOfWhatIsNotThereAreInvalid()
{
    const auto now = QDateTime::currentDateTimeUtc();
    const test::Folder folder;
    test::writeFile(folder / "file");
    for (const auto &path :
         {test::text(folder / "missing"), QString(), test::text(folder / "file") + QChar(0)}) {
        QVERIFY(!platform::modificationDate(path).isValid());
        QVERIFY(!platform::setModificationDate(now, path));
        QVERIFY(!platform::creationDate(path).isValid());
        QVERIFY(!platform::setCreationDate(now, path));
        QVERIFY(!platform::isWritable(path));
    }
    QVERIFY(!platform::setModificationDate(QDateTime(), test::text(folder / "file")));
    QVERIFY(!platform::setCreationDate(QDateTime(), test::text(folder / "file")));
}

void FileDatesTest::permissionsAreSetOrTheReasonIsTold()
{
    const test::Folder folder;
    test::writeFile(folder / "file");
    const auto path = test::text(folder / "file");
    QVERIFY(!platform::setPermissions(path, 0640));
    struct stat status {};
    QCOMPARE(::stat((folder / "file").c_str(), &status), 0);
    QCOMPARE(status.st_mode & 07777U, 0640U);
    QVERIFY(platform::isWritable(path));
    QVERIFY(!platform::setPermissions(path, 0400));
    QCOMPARE(platform::isWritable(path), ::getuid() == 0);
    QCOMPARE(platform::setPermissions(test::text(folder / "missing"), 0600).code(), ENOENT);
    QCOMPARE(platform::setPermissions(path + QChar(0), 0600).code(), EINVAL);
    QCOMPARE(platform::setPermissions(QString(), 0600).code(), ENOENT);
}

void FileDatesTest::finderFlagsAreTheNinthAndTenthByte()
{
    const test::Folder folder;
    test::makeFolder(folder / "folder");
    const auto path = folder / "folder";
    QVERIFY(platform::setFinderFlags(0x1234, test::text(path)));
    std::array<unsigned char, 64> bytes{};
    QCOMPARE(::getxattr(path.c_str(), "user.com.apple.FinderInfo", bytes.data(), bytes.size()),
             ssize_t{32});
    QCOMPARE(int{bytes[8]}, 0x12);
    QCOMPARE(int{bytes[9]}, 0x34);
    QCOMPARE(platform::finderFlags(test::text(path)).value_or(0), std::uint16_t{0x1234});
}

void FileDatesTest::theRestOfTheFinderInformationIsKept()
{
    const test::Folder folder;
    test::writeFile(folder / "file");
    const auto path = folder / "file";
    std::array<unsigned char, 32> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes.at(i) = static_cast<unsigned char>(i + 100);
    }
    auto expected = bytes;
    expected[8] = 0xAB;
    expected[9] = 0xCD;
    const auto *name = "user.com.apple.FinderInfo";
    QCOMPARE(::setxattr(path.c_str(), name, bytes.data(), bytes.size(), 0), 0);
    QVERIFY(platform::setFinderFlags(0xABCD, test::text(path)));
    QCOMPARE(::getxattr(path.c_str(), name, bytes.data(), bytes.size()), ssize_t{32});
    QVERIFY(bytes == expected);
}

void FileDatesTest::whatHasNoFinderInformationHasNoFlags()
{
    const test::Folder folder;
    test::writeFile(folder / "file");
    test::makeLink("file", folder / "link");
    const auto path = test::text(folder / "file");
    QCOMPARE(platform::finderFlags(path).value_or(1), std::uint16_t{0});
    QVERIFY(!platform::finderFlags(test::text(folder / "missing")).has_value());
    QVERIFY(!platform::setFinderFlags(2, test::text(folder / "missing")));
    // A link cannot have any, and what it leads to is not meant.
    QVERIFY(!platform::setFinderFlags(2, test::text(folder / "link")));
    QCOMPARE(platform::finderFlags(path).value_or(1), std::uint16_t{0});
    // Too much of it: nobody knows what that is.
    const std::string much(100, 'x');
    QCOMPARE(::setxattr((folder / "file").c_str(), "user.com.apple.FinderInfo", much.data(),
                        much.size(), 0),
             0);
    QVERIFY(!platform::finderFlags(path).has_value());
    QVERIFY(!platform::setFinderFlags(2, path));
    QCOMPARE(::getxattr((folder / "file").c_str(), "user.com.apple.FinderInfo", nullptr, 0),
             ssize_t{100});
}

TEST_CLASS(FileDatesTest, QCoreApplication)
#include "FileDatesTest.moc"
