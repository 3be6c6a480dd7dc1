// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Trees/CopyItem.h"
#include "Platform/Core/Trees/CopyProgress.h"
#include "Tests/Support/FaultMatrix.h"
#include "Tests/Support/FileTree.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <algorithm>
#include <array>
#include <filesystem>
#include <memory>

namespace {

constexpr auto changing = test::Open | test::Read | test::Write | test::Rename | test::Link |
                          test::Make | test::Copy | test::Thread;

constexpr std::size_t fileSize = 5000; // there are thousands of runs

int copy(const std::string &from, const std::string &to)
{
    platform::CopyProgress progress;
    return platform::copyItem(test::text(from), test::text(to), &progress).code();
}

} // namespace

// Copies whose progress is followed while system calls of any of their threads fail, or while the
// process is killed.
class ParallelCopyFaultsTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void aCopyIsWholeOrNotThere_data();
    void aCopyIsWholeOrNotThere();
    void aCopyThatMeetsOneFaultLeavesNothing_data() { aCopyIsWholeOrNotThere_data(); }
    void aCopyThatMeetsOneFaultLeavesNothing();
    void aKilledCopyHasNotItsName_data() { aCopyIsWholeOrNotThere_data(); }
    void aKilledCopyHasNotItsName();

private:
    void prepare(bool isFolder);

    std::unique_ptr<test::Folder> m_folder;
    std::unique_ptr<test::Folder> m_other; // where copies go
    std::string m_item;
    std::string m_copy;
    QStringList m_before;
};

void ParallelCopyFaultsTest::init()
{
    m_folder = std::make_unique<test::Folder>();
    m_item = *m_folder / "item";
}

void ParallelCopyFaultsTest::cleanup()
{
    m_folder.reset();
    m_other.reset();
}

void ParallelCopyFaultsTest::prepare(bool isFolder)
{
    m_other = std::make_unique<test::Folder>();
    m_copy = *m_other / "copy";
    if (test::exists(m_item)) {
        return; // it never changes
    }
    if (isFolder) {
        test::makeTree(m_item, fileSize);
        std::filesystem::create_hard_link(m_item + "/large", m_item + "/folder/linked");
    } else {
        test::writeFile(m_item, std::string(fileSize, 'i'));
    }
    m_before = test::tree(m_item);
}

void ParallelCopyFaultsTest::aCopyIsWholeOrNotThere_data()
{
    QTest::addColumn<bool>("isFolder");
    QTest::newRow("file") << false;
    QTest::newRow("folder") << true;
}

void ParallelCopyFaultsTest::aCopyIsWholeOrNotThere()
{
    QFETCH(bool, isFolder);
    test::underFaults(
        test::faultKinds, test::Threads::All, changing, [&] { prepare(isFolder); },
        [&] { return copy(m_item, m_copy) == 0; },
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
            // Where nothing can be opened any more, nothing can be removed.
            const auto names = m_other->names();
            const auto isExpected = [](const QString &name) {
                return name == QStringLiteral("copy") ||
                       name.startsWith(QStringLiteral(".unfinished-"));
            };
            return std::all_of(names.begin(), names.end(), isExpected) && names.size() < 2
                       ? QString()
                       : QStringLiteral("left behind: ") + names.join(u' ');
        });
}

void ParallelCopyFaultsTest::aCopyThatMeetsOneFaultLeavesNothing()
{
    QFETCH(bool, isFolder);
    for (const auto error : {EIO, ENOSPC, EMFILE, EACCES}) {
        for (int nth = 1, hasStruck = 1; hasStruck != 0; ++nth) {
            prepare(isFolder);
            int result = 0;
            {
                const test::Faults faults(
                    {changing, nth, test::Outcome::Fails, error, false, true});
                result = copy(m_item, m_copy);
                hasStruck = test::Faults::haveStruck() ? 1 : 0;
            }
            const auto names = m_other->names();
            QVERIFY2(names.size() == (result == 0 ? 1 : 0),
                     qUtf8Printable(QStringLiteral("call %1: ").arg(nth) + names.join(u' ')));
            QVERIFY(nth < 2000);
        }
    }
}

void ParallelCopyFaultsTest::aKilledCopyHasNotItsName()
{
    QFETCH(bool, isFolder);
    test::killedAtEveryCall(
        [&] { prepare(isFolder); }, [&] { copy(m_item, m_copy); },
        [&](bool finished) {
            if (test::tree(m_item) != m_before) {
                return QStringLiteral("the original has changed");
            }
            const auto isThere = test::exists(m_copy);
            if ((finished && !isThere) || (isThere && test::tree(m_copy) != m_before)) {
                return QStringLiteral("the copy is not whole");
            }
            if (!isThere && (copy(m_item, m_copy) != 0 || test::tree(m_copy) != m_before)) {
                return QStringLiteral("the next time fails");
            }
            return QString();
        });
    if (!isFolder) {
        QCOMPARE(m_other->names(), QStringList(QStringLiteral("copy")));
    }
}

TEST_CLASS(ParallelCopyFaultsTest, QCoreApplication)
#include "ParallelCopyFaultsTest.moc"
