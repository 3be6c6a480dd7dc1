// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Basics/Descriptor.h"
#include "Platform/Core/Folders/Trash.h"
#include "Platform/Core/Trees/CopyItem.h"
#include "Platform/Core/Trees/CreateFolder.h"
#include "Platform/Core/Trees/MoveItem.h"
#include "Platform/Core/Trees/RemoveItem.h"
#include "Platform/Core/Trees/UnfinishedItem.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/FaultMatrix.h"
#include "Tests/Support/FileTree.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <memory>

namespace {

constexpr auto changing = test::Open | test::Read | test::Write | test::Sync | test::Rename |
                          test::Link | test::Make | test::Copy;

constexpr std::size_t fileSize = 5000; // there are thousands of runs

const auto elsewhere = std::string("/var/tmp"); // another file system in the sandbox

} // namespace

// Items that are copied, moved, removed, made and trashed while system calls fail, or while the
// process is killed.
class ItemFaultsTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void aCopyIsWholeOrNotThere_data();
    void aCopyIsWholeOrNotThere();
    void aMovedItemIsWholeInOnePlace_data() { aCopyIsWholeOrNotThere_data(); }
    void aMovedItemIsWholeInOnePlace();
    void anItemMovedToAnotherFileSystemIsNeverLost_data() { aCopyIsWholeOrNotThere_data(); }
    void anItemMovedToAnotherFileSystemIsNeverLost();
    void aFailedMoveLeavesNothingAtItsDestination_data() { aCopyIsWholeOrNotThere_data(); }
    void aFailedMoveLeavesNothingAtItsDestination();
    void whatComesIntoAMovedFolderMeanwhileStaysThere();
    void aNeighbourWhoSwapsNamesGetsNoOtherModeChanged();
    void aNeighbourWhoSwapsNamesGetsNothingElseRemoved();
    void aRemovedItemIsGoneOrAnError_data() { aCopyIsWholeOrNotThere_data(); }
    void aRemovedItemIsGoneOrAnError();
    void removingGoesOnAfterAFailureAndGivesTheFirst();
    void foldersAreMadeAllOrNone();
    void aTrashedItemIsWholeInOnePlaceWithOrWithoutItsRecord_data();
    void aTrashedItemIsWholeInOnePlaceWithOrWithoutItsRecord();

    void aCopySurvivesAKillAtEveryCall_data() { aCopyIsWholeOrNotThere_data(); }
    void aCopySurvivesAKillAtEveryCall();
    void aMoveSurvivesAKillAtEveryCall_data();
    void aMoveSurvivesAKillAtEveryCall();

private:
    void prepare(bool isFolder);
    static std::string itemIn(const test::Folder &folder) { return folder / "item"; }
    // Besides the items of those names there may be nothing in the folder.
    static bool hasOnly(const test::Folder &folder, const QStringList &names);

    std::unique_ptr<test::Folder> m_folder;
    std::unique_ptr<test::Folder> m_other; // where copies go
    std::string m_item;
    std::string m_copy;
    QStringList m_before; // the item as it is to be
};

void ItemFaultsTest::init()
{
    m_folder = std::make_unique<test::Folder>();
    m_other = std::make_unique<test::Folder>();
    m_item = itemIn(*m_folder);
    m_copy = *m_other / "copy";
}

void ItemFaultsTest::cleanup()
{
    m_folder.reset();
    m_other.reset();
}

void ItemFaultsTest::prepare(bool isFolder)
{
    for (const auto &path : {m_copy, m_item}) {
        if (test::exists(path) && platform::removeItem(test::text(path))) {
            std::filesystem::permissions(path + "/closed", std::filesystem::perms::owner_all);
            QVERIFY(!platform::removeItem(test::text(path)));
        }
    }
    if (isFolder) {
        test::makeTree(m_item, fileSize);
    } else {
        test::writeFile(m_item, std::string(fileSize, 'i'));
    }
    m_before = test::tree(m_item);
}

bool ItemFaultsTest::hasOnly(const test::Folder &folder, const QStringList &names)
{
    const auto all = folder.names();
    return std::all_of(all.begin(), all.end(),
                       [&](const QString &name) { return names.contains(name); });
}

void ItemFaultsTest::aCopyIsWholeOrNotThere_data()
{
    QTest::addColumn<bool>("isFolder");
    QTest::newRow("file") << false;
    QTest::newRow("folder") << true;
}

void ItemFaultsTest::aCopyIsWholeOrNotThere()
{
    QFETCH(bool, isFolder);
    test::underEveryFault(
        changing, [&] { prepare(isFolder); },
        [&] { return !platform::copyItem(test::text(m_item), test::text(m_copy)); },
        [&](bool copied) {
            if (test::tree(m_item) != m_before) {
                return QStringLiteral("the original has changed");
            }
            if (test::exists(m_copy) != copied) {
                return QStringLiteral("the result is wrong");
            }
            if (copied && test::tree(m_copy) != m_before) {
                return QStringLiteral("the copy is not whole: ") + test::tree(m_copy).join(u'\n');
            }
            // What could not even be opened then is cleared by the next.
            const platform::Descriptor other(
                ::open(m_other->path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
            platform::clearUnfinishedItems(other.fd());
            return hasOnly(*m_other, {QStringLiteral("copy")})
                       ? QString()
                       : QStringLiteral("left behind: ") + m_other->names().join(u' ');
        });
}

void ItemFaultsTest::aMovedItemIsWholeInOnePlace()
{
    QFETCH(bool, isFolder);
    test::underEveryFault(
        changing, [&] { prepare(isFolder); },
        [&] { return !platform::moveItem(test::text(m_item), test::text(m_copy)); },
        [&](bool moved) {
            return test::exists(m_item) != moved && test::exists(m_copy) == moved &&
                           test::tree(moved ? m_copy : m_item) == m_before &&
                           hasOnly(*m_other, {QStringLiteral("copy")})
                       ? QString()
                       : QStringLiteral("the item is not whole in one place");
        });
}

void ItemFaultsTest::anItemMovedToAnotherFileSystemIsNeverLost()
{
    QFETCH(bool, isFolder);
    m_other = std::make_unique<test::Folder>(elsewhere);
    m_copy = *m_other / "copy";
    test::underEveryFault(
        changing | test::Remove,
        [&] {
            prepare(isFolder);
            // Else an ordinary user may not remove it.
            if (isFolder) {
                std::filesystem::permissions(m_item + "/closed", std::filesystem::perms::owner_all);
                m_before = test::tree(m_item);
            }
        },
        [&] { return !platform::moveItem(test::text(m_item), test::text(m_copy)); },
        [&](bool moved) {
            const auto isWhole = test::tree(m_item) == m_before;
            if (test::exists(m_copy) && test::tree(m_copy) != m_before && !isWhole) {
                return QStringLiteral("the item is nowhere whole");
            }
            if (moved && (test::exists(m_item) || !test::exists(m_copy))) {
                return QStringLiteral("the result is wrong");
            }
            return test::exists(m_copy) || isWhole ? QString() : QStringLiteral("the item is lost");
        });
}

void ItemFaultsTest::aFailedMoveLeavesNothingAtItsDestination()
{
    QFETCH(bool, isFolder);
    m_other = std::make_unique<test::Folder>(elsewhere);
    m_copy = *m_other / "copy";
    auto failures = 0;
    for (int nth = 1, hasStruck = 1; hasStruck != 0; ++nth) {
        prepare(isFolder);
        auto moved = false;
        {
            const test::Faults faults(
                {changing | test::Remove, nth, test::Outcome::Fails, EACCES, false, false});
            moved = !platform::moveItem(test::text(m_item), test::text(m_copy));
            hasStruck = test::Faults::haveStruck() ? 1 : 0;
        }
        failures += moved ? 0 : 1;
        QVERIFY2(test::exists(m_item) != moved && test::exists(m_copy) == moved &&
                     test::tree(moved ? m_copy : m_item) == m_before,
                 qPrintable(QStringLiteral("call %1").arg(nth)));
        QVERIFY(nth < 2000);
    }
    QVERIFY(failures > 0);
}

// The neighbour may write in the folder where the copy is put, but not look into our own.
void ItemFaultsTest::whatComesIntoAMovedFolderMeanwhileStaysThere()
{
    m_other = std::make_unique<test::Folder>(elsewhere);
    m_copy = *m_other / "copy";
    prepare(true);
    const auto writeInto = [&] {
        for (const auto &name : m_folder->names()) {
            test::writeFile(*m_folder / name.toStdString() + "/late", "late");
        }
    };
    {
        const test::Faults faults(
            {test::Remove, 1, test::Outcome::Interferes, 0, true, false, writeInto});
        platform::moveItem(test::text(m_item), test::text(m_copy));
        QVERIFY(test::Faults::haveStruck());
    }
    QVERIFY(test::exists(m_item + "/late"));
    // Nor does the next operation clear it.
    QVERIFY(!platform::copyItem(test::text(m_copy), test::text(*m_folder / "again")));
    QVERIFY(test::exists(m_item + "/late"));
}

void ItemFaultsTest::aNeighbourWhoSwapsNamesGetsNoOtherModeChanged()
{
    test::writeFile(*m_folder / "secret", "secret");
    ::chmod((*m_folder / "secret").c_str(), 0600);
    ::mkfifo(m_item.c_str(), 0600);
    ::chmod(m_item.c_str(), 0666);
    auto swaps = 0;
    const auto swap = [&] {
        for (const auto &name : m_other->names()) {
            const auto path = *m_other / name.toStdString();
            ::rename(path.c_str(), (*m_folder / std::to_string(++swaps)).c_str());
            test::makeLink(*m_folder / "secret", path);
        }
    };
    {
        const test::Faults faults(
            {test::Make, 1, test::Outcome::Interferes, 0, true, false, swap}); // whatever is made
        platform::copyItem(test::text(m_item), test::text(m_copy));
    }
    QVERIFY(swaps > 0);
    struct stat status {};
    ::stat((*m_folder / "secret").c_str(), &status);
    QCOMPARE(status.st_mode & 07777U, 0600U);
}

void ItemFaultsTest::aNeighbourWhoSwapsNamesGetsNothingElseRemoved()
{
    // Folders with just the names that the copy has, at any depth that it may have them.
    test::makeTree(m_item, fileSize);
    const auto victim = *m_folder / "victim";
    test::makeTree(victim, fileSize);
    test::makeTree(victim + "/item", fileSize);
    const auto before = test::tree(victim);
    auto swaps = 0;
    const auto swap = [&] {
        for (const auto &name : m_other->names()) {
            const auto path = *m_other / name.toStdString();
            ::rename(path.c_str(), (*m_folder / std::to_string(++swaps)).c_str());
            test::makeLink(victim, path);
        }
    };
    {
        const test::Faults faults({test::Link, 1, test::Outcome::Fails, EIO, false, false, swap});
        QVERIFY(platform::copyItem(test::text(m_item), test::text(m_copy)));
        QVERIFY(test::Faults::haveStruck());
    }
    QVERIFY(swaps > 0);
    QCOMPARE(test::tree(victim), before);
}

void ItemFaultsTest::aRemovedItemIsGoneOrAnError()
{
    QFETCH(bool, isFolder);
    test::underEveryFault(
        changing | test::Remove,
        [&] {
            prepare(isFolder);
            if (isFolder) {
                std::filesystem::permissions(m_item + "/closed", std::filesystem::perms::owner_all);
            }
            test::writeFile(*m_other / "copy", "beside");
        },
        [&] { return !platform::removeItem(test::text(m_item)); },
        [&](bool removed) {
            return test::exists(m_item) != removed && test::readFile(m_copy) == "beside"
                       ? QString()
                       : QStringLiteral("the result is wrong");
        });
}

void ItemFaultsTest::removingGoesOnAfterAFailureAndGivesTheFirst()
{
    for (const auto *name : {"a", "b", "c"}) {
        test::makeFolder(m_item + "/closed");
        test::writeFile(m_item + "/closed/" + name);
    }
    test::writeFile(m_item + "/closed/last");
    ::chmod((m_item + "/closed").c_str(), 0500);
    platform::FileError error;
    {
        // The first is that the item is not a file, the second the first file's.
        const test::Faults faults({test::Remove, 2, test::Outcome::Fails, EIO, false, false});
        error = platform::removeItem(test::text(m_item));
        QVERIFY(test::Faults::haveStruck());
    }
    QCOMPARE(error.code(), EIO);
    QVERIFY(test::exists(error.path().toStdString()));
    QCOMPARE(test::tree(m_item).size(), 3); // the item, "closed" and that file
    struct stat status {};
    ::stat((m_item + "/closed").c_str(), &status);
    QCOMPARE(status.st_mode & 07777U, 0500U); // what stays is as it was
}

void ItemFaultsTest::foldersAreMadeAllOrNone()
{
    test::underEveryFault(
        changing, [&] { prepare(false); },
        [&] { return !platform::createFolder(test::text(m_copy + "/b/c/d")); },
        [&](bool made) {
            return test::exists(m_copy) == made && test::exists(m_copy + "/b/c/d") == made
                       ? QString()
                       : QStringLiteral("only some folders are there");
        });
}

void ItemFaultsTest::aTrashedItemIsWholeInOnePlaceWithOrWithoutItsRecord_data()
{
    QTest::addColumn<bool>("isFolder");
    QTest::addColumn<bool>("isDesktops");
    QTest::addColumn<bool>("isElsewhere");
    QTest::newRow("file, plain trash") << false << false << false;
    QTest::newRow("folder, desktop's trash") << true << true << false;
    QTest::newRow("file, desktop's trash") << false << true << false;
    QTest::newRow("file, desktop's trash elsewhere") << false << true << true;
    QTest::newRow("folder, plain trash elsewhere") << true << false << true;
}

void ItemFaultsTest::aTrashedItemIsWholeInOnePlaceWithOrWithoutItsRecord()
{
    QFETCH(bool, isFolder);
    QFETCH(bool, isDesktops);
    QFETCH(bool, isElsewhere);
    const test::Folder data(isElsewhere ? elsewhere : "/tmp");
    const test::EnvironmentVariable home("XDG_DATA_HOME",
                                         isDesktops ? data.path().c_str() : "/nowhere");
    const auto trash = data / "Trash";
    const auto files = isDesktops ? trash + "/files" : trash;
    const auto record = trash + "/info/item.trashinfo";
    test::underEveryFault(
        changing,
        [&] {
            if (test::exists(files + "/item") && platform::removeItem(test::text(trash))) {
                std::filesystem::permissions(files + "/item/closed",
                                             std::filesystem::perms::owner_all);
            }
            QVERIFY(!test::exists(trash) || !platform::removeItem(test::text(trash)));
            test::makeFolder(trash);
            prepare(isFolder);
            if (isFolder && isElsewhere) {
                std::filesystem::permissions(m_item + "/closed", std::filesystem::perms::owner_all);
                m_before = test::tree(m_item);
            }
        },
        [&] { return !platform::recycleItem(test::text(m_item), test::text(trash)); },
        [&](bool trashed) {
            if (test::exists(record) != (trashed && isDesktops)) {
                return QStringLiteral("the record is wrong");
            }
            if (trashed) {
                return !test::exists(m_item) && test::tree(files + "/item") == m_before
                           ? QString()
                           : QStringLiteral("the item is not whole in the trash");
            }
            return test::tree(m_item) == m_before || test::tree(files + "/item") == m_before
                       ? QString()
                       : QStringLiteral("the item is lost");
        });
}

void ItemFaultsTest::aCopySurvivesAKillAtEveryCall()
{
    QFETCH(bool, isFolder);
    test::killedAtEveryCall(
        [&] { prepare(isFolder); },
        [&] { platform::copyItem(test::text(m_item), test::text(m_copy)); },
        [&](bool finished) {
            if (test::tree(m_item) != m_before) {
                return QStringLiteral("the original has changed");
            }
            const auto isThere = test::exists(m_copy);
            if ((finished && !isThere) || (isThere && test::tree(m_copy) != m_before)) {
                return QStringLiteral("the copy is not whole");
            }
            if (isThere) {
                return QString();
            }
            if (platform::copyItem(test::text(m_item), test::text(m_copy)) ||
                test::tree(m_copy) != m_before) {
                return QStringLiteral("the next time fails");
            }
            return hasOnly(*m_other, {QStringLiteral("copy")})
                       ? QString()
                       : QStringLiteral("the next one has not cleared what was left");
        });
}

void ItemFaultsTest::aMoveSurvivesAKillAtEveryCall_data()
{
    QTest::addColumn<bool>("isFolder");
    QTest::addColumn<bool>("isElsewhere");
    QTest::newRow("file") << false << false;
    QTest::newRow("folder") << true << false;
    QTest::newRow("file to another file system") << false << true;
    QTest::newRow("folder to another file system") << true << true;
}

void ItemFaultsTest::aMoveSurvivesAKillAtEveryCall()
{
    QFETCH(bool, isFolder);
    QFETCH(bool, isElsewhere);
    if (isElsewhere) {
        m_other = std::make_unique<test::Folder>(elsewhere);
        m_copy = *m_other / "copy";
    }
    test::killedAtEveryCall(
        [&] {
            prepare(isFolder);
            if (isFolder && isElsewhere) {
                std::filesystem::permissions(m_item + "/closed", std::filesystem::perms::owner_all);
                m_before = test::tree(m_item);
            }
        },
        [&] { platform::moveItem(test::text(m_item), test::text(m_copy)); },
        [&](bool finished) {
            const auto isThere = test::exists(m_copy);
            if (isThere && test::tree(m_copy) != m_before) {
                return QStringLiteral("what has the new name is not whole");
            }
            if (!isThere && (finished || test::tree(m_item) != m_before)) {
                return QStringLiteral("the item is lost");
            }
            if (!isThere && platform::moveItem(test::text(m_item), test::text(m_copy))) {
                return QStringLiteral("the next time fails");
            }
            return QString();
        });
}

TEST_CLASS(ItemFaultsTest, QCoreApplication)
#include "ItemFaultsTest.moc"
