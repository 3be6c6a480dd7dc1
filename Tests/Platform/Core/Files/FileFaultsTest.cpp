// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/FileContents.h"
#include "Platform/Core/Folders/PrivateFiles.h"
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Tests/Support/FaultMatrix.h"
#include "Tests/Support/FileTree.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <sys/stat.h>

// Files that are replaced while system calls fail, or while the process is killed.
class FileFaultsTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aReplacedFileIsTheOldOrTheNewOne_data();
    void aReplacedFileIsTheOldOrTheNewOne();
    void aPropertyListIsTheOldOrTheNewOne();
    void anEmptiedFileIsTheOldOrTheNewOne();
    void aFileIsReadWholeOrNotAtAll();
    void aReplacedFileSurvivesAKillAtEveryCall();
    void aNewFileLeavesNothingBehindWhenKilled();
};

namespace {

constexpr auto reading = test::Open | test::Read;
constexpr auto writing =
    test::Open | test::Read | test::Write | test::Sync | test::Rename | test::Link | test::Make;

const std::string oldContents = "old";
const std::string newContents = std::string(3000, 'n');

} // namespace

void FileFaultsTest::aReplacedFileIsTheOldOrTheNewOne_data()
{
    QTest::addColumn<bool>("exists");
    QTest::addColumn<bool>("isLink");
    QTest::newRow("existing") << true << false;
    QTest::newRow("new") << false << false;
    QTest::newRow("behind a link") << true << true;
}

void FileFaultsTest::aReplacedFileIsTheOldOrTheNewOne()
{
    QFETCH(bool, exists);
    QFETCH(bool, isLink);
    const test::Folder folder;
    const auto path = folder / "caf\xE9";
    const auto link = folder / "link";
    if (isLink) {
        test::makeLink("caf\xE9", link);
    }
    QString error;
    test::underEveryFault(
        writing,
        [&] {
            ::unlink(path.c_str());
            if (exists) {
                test::writeFile(path, oldContents);
            }
            error = QString();
        },
        [&] {
            return platform::replaceFile(test::text(isLink ? link : path),
                                         QByteArray::fromStdString(newContents), &error);
        },
        [&](bool replaced) {
            if (replaced != error.isNull()) {
                return QStringLiteral("no reason, or one for nothing");
            }
            if (test::exists(path) != (exists || replaced) ||
                (test::exists(path) &&
                 test::readFile(path) != (replaced ? newContents : oldContents))) {
                return QStringLiteral("the file is wrong");
            }
            return folder.names().size() == (test::exists(path) ? 1 : 0) + (isLink ? 1 : 0)
                       ? QString()
                       : QStringLiteral("something is left behind");
        });
}

void FileFaultsTest::aPropertyListIsTheOldOrTheNewOne()
{
    const test::Folder folder;
    const auto path = test::text(folder / "list.plist");
    const QVariantMap old{{QStringLiteral("a"), QStringLiteral("old")}};
    const QVariantMap fresh{{QStringLiteral("a"), QString(5000, u'n')}};
    test::underEveryFault(
        writing, [&] { QVERIFY(platform::writeDictionaryToFile(old, path)); },
        [&] { return platform::writeDictionaryToFile(fresh, path); },
        [&](bool written) {
            return platform::dictionaryFromFile(path) == (written ? fresh : old) &&
                           folder.names().size() == 1
                       ? QString()
                       : QStringLiteral("the file is wrong");
        });
}

void FileFaultsTest::anEmptiedFileIsTheOldOrTheNewOne()
{
    const test::Folder folder;
    const auto path = folder / "log";
    QString error;
    test::underEveryFault(
        writing,
        [&] {
            test::writeFile(path, oldContents);
            error = QString();
        },
        [&] { return platform::createEmptyPrivateFile(test::text(path), &error); },
        [&](bool emptied) {
            return emptied == error.isNull() &&
                           test::readFile(path) == (emptied ? std::string() : oldContents) &&
                           folder.names().size() == 1
                       ? QString()
                       : QStringLiteral("the file is wrong");
        });
}

void FileFaultsTest::aFileIsReadWholeOrNotAtAll()
{
    const test::Folder folder;
    const auto path = folder / "file";
    test::writeFile(path, newContents);
    std::optional<QByteArray> contents;
    test::underEveryFault(
        reading, [] {},
        [&] {
            contents = platform::contentsOfFile(test::text(path), 1000000);
            return contents.has_value();
        },
        [&](bool read) {
            return !read || *contents == QByteArray::fromStdString(newContents)
                       ? QString()
                       : QStringLiteral("only a part was read");
        });
}

void FileFaultsTest::aReplacedFileSurvivesAKillAtEveryCall()
{
    const test::Folder folder;
    const auto path = folder / "file";
    const auto replace = [&](const std::string &contents) {
        return platform::replaceFile(test::text(path), QByteArray::fromStdString(contents));
    };
    test::killedAtEveryCall(
        [&] { test::writeFile(path, oldContents); }, [&] { return replace(newContents); },
        [&](bool finished) {
            const auto contents = test::readFile(path);
            if (contents != newContents && (finished || contents != oldContents)) {
                return QStringLiteral("neither the old nor the new file");
            }
            if (!replace("third") || test::readFile(path) != "third") {
                return QStringLiteral("the next time fails");
            }
            return QString();
        });
    // The file has a temporary name only between two calls, getting it and losing it.
    QVERIFY2(folder.names().size() <= 2, qUtf8Printable(folder.names().join(u'\n')));
}

void FileFaultsTest::aNewFileLeavesNothingBehindWhenKilled()
{
    const test::Folder folder;
    const auto path = folder / "file";
    test::killedAtEveryCall(
        [&] { ::unlink(path.c_str()); },
        [&] {
            return platform::replaceFile(test::text(path), QByteArray::fromStdString(newContents));
        },
        [&](bool finished) {
            const auto exists = test::exists(path);
            return (exists || !finished) && folder.names().size() == (exists ? 1 : 0) &&
                           (!exists || test::readFile(path) == newContents)
                       ? QString()
                       : QStringLiteral("the file is wrong, or something is left behind");
        });
}

TEST_CLASS(FileFaultsTest, QCoreApplication)
#include "FileFaultsTest.moc"
