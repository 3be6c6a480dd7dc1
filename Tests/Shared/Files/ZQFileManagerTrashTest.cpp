// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Text/FileName.h"
#include "Shared/Files/ZQFileManager.h"
#include "Tests/Shared/Files/FileManagerFixture.h"
#include "Tests/Support/ConsoleSeat.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/TestProgram.h"

#include <QDateTime>
#include <QRegularExpression>
#include <QTest>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using test::FileManagerFixture;
using test::text;

namespace {

std::string home()
{
    return test::isRoot() ? "/root" : "/home/tester";
}

std::string trash()
{
    return home() + "/.Trash";
}

std::string desktopTrash()
{
    return home() + "/.local/share/Trash";
}

QStringList names(const std::string &folder)
{
    QStringList list;
    for (const auto &entry : fs::directory_iterator(folder)) {
        list << text(entry.path().filename().string());
    }
    list.sort();
    return list;
}

} // namespace

class ZQFileManagerTrashTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void everyNameIsTrashed_data();
    void everyNameIsTrashed();
    void theTrashIsMadeForItsOwnerAlone();
    void aMissingTrashBecomesALinkToTheDesktopsFiles_data();
    void aMissingTrashBecomesALinkToTheDesktopsFiles();
    void whatTheLinkLeadsToIsMadeAnew();
    void aTrashThatIsAFolderStaysOne();
    void whereTheDesktopsTrashCannotBeMadeTheTrashIsAFolder();
    void aNameThatIsTakenInTheTrashGetsANumber();
    void aFailureWithOnesOwnRightsIsNotLogged();
    void aTimeOutOfZeroSaysWhetherTheFileWasGoneRightAfterTheCall();

    void theDesktopsTrashGetsARecordToRestoreFrom_data();
    void theDesktopsTrashGetsARecordToRestoreFrom();
    void theRecordIsLikeTheDesktopsOwn();
    void everyNameHasARecordInTheDesktopsTrash_data() { everyNameIsTrashed_data(); }
    void everyNameHasARecordInTheDesktopsTrash();
    void aNameWithARecordOrAFileInTheDesktopsTrashIsTaken();
    void rootTrashesForTheUserAtTheConsole();
    void anItemOfAnotherFileSystemIsTrashedWhole();

    void allContentsAreTrashedButNotTheFolder();
    void contentsAreTrashedOnAfterAFailure();
    void filesOfATypeAreTrashedInEitherCaseAndAllBelow();
    void filesOfNoTypeAtAllAreNotTrashed();
    void whatMayNotBeLookedAtDoesNotCountAsTrashed();
    void filesOfANameAreTrashedInThatCaseOnlyAndAllBelow();
    void whatWasTriedIsGivenWhetherOrNotItSucceeded();
    void linksAmongTheEntriesAreNotFollowed();

private:
    std::unique_ptr<FileManagerFixture> m_fixture;
};

void ZQFileManagerTrashTest::init()
{
    m_fixture = std::make_unique<FileManagerFixture>();
    fs::remove_all(trash());
    fs::remove_all(home() + "/.local");
}

void ZQFileManagerTrashTest::cleanup()
{
    m_fixture.reset();
}

void ZQFileManagerTrashTest::everyNameIsTrashed_data()
{
    QTest::addColumn<int>("index");
    for (std::size_t i = 0; i < test::oddNames().size(); ++i) {
        QTest::newRow(test::oddNames()[i].why) << static_cast<int>(i);
    }
}

void ZQFileManagerTrashTest::everyNameIsTrashed()
{
    QFETCH(int, index);
    auto &at = *m_fixture;
    const auto name = test::oddNames()[static_cast<std::size_t>(index)].name;
    test::makeFolder(trash());
    test::makeFolder(at / name);
    test::writeFile(at / (name + "/file"));
    const auto whole = test::tree(at / name);
    QVERIFY(ZQFileManager::trashFile(at.path(name), ShouldAuth::No));
    QVERIFY(!test::exists(at / name));
    QCOMPARE(test::tree(trash() + '/' + name), whole);
    // And again, with a number that even the longest name has room for.
    test::writeFile(at / name, "second");
    QVERIFY(ZQFileManager::trashFile(at.path(name), ShouldAuth::No));
    QVERIFY(!test::exists(at / name));
    QCOMPARE(names(trash()).size(), 2);
    QVERIFY(FileManagerFixture::logged().isEmpty());
}

void ZQFileManagerTrashTest::theTrashIsMadeForItsOwnerAlone()
{
    test::writeFile(*m_fixture / "file");
    QVERIFY(ZQFileManager::trashFile(m_fixture->path("file")));
    struct stat status {};
    QCOMPARE(::stat(trash().c_str(), &status), 0);
    QCOMPARE(status.st_mode & 07777U, 0700U);
}

void ZQFileManagerTrashTest::aMissingTrashBecomesALinkToTheDesktopsFiles_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("target");
    const auto elsewhere = home() + "/data";
    QTest::newRow("usual") << QByteArray() << text(".local/share/Trash/files");
    QTest::newRow("relative") << QByteArray("data") << text(".local/share/Trash/files");
    QTest::newRow("in the home") << QByteArray::fromStdString(elsewhere)
                                 << text("data/Trash/files");
    QTest::newRow("elsewhere") << QByteArray("/var/tmp/data") << text("/var/tmp/data/Trash/files");
}

void ZQFileManagerTrashTest::aMissingTrashBecomesALinkToTheDesktopsFiles()
{
    QFETCH(const QByteArray, data);
    QFETCH(const QString, target);
    auto &at = *m_fixture;
    fs::remove_all(home() + "/data");
    const test::EnvironmentVariable variable("XDG_DATA_HOME", data);
    const auto files = fs::path(home()) / target.toStdString();
    for (const auto *name : {"first", "second"}) {
        test::writeFile(at / name, name);
        QVERIFY(ZQFileManager::trashFile(at.path(name), ShouldAuth::No));
        QCOMPARE(text(fs::read_symlink(trash()).string()), target);
        QCOMPARE(test::readFile((files / name).string()), std::string(name));
        const auto record = files.parent_path() / "info" / (std::string(name) + ".trashinfo");
        QVERIFY(test::readFile(record.string()).find("Path=" + (at / name)) != std::string::npos);
    }
    for (const auto &folder : {files, files.parent_path() / "info"}) {
        struct stat status {};
        QCOMPARE(::stat(folder.c_str(), &status), 0);
        QCOMPARE(status.st_mode & 07777U, 0700U);
    }
}

void ZQFileManagerTrashTest::whatTheLinkLeadsToIsMadeAnew()
{
    auto &at = *m_fixture;
    for (int i = 0; i < 2; ++i) {
        test::writeFile(at / "file");
        QVERIFY(ZQFileManager::trashFile(at.path("file"), ShouldAuth::No));
        QVERIFY(test::exists(desktopTrash() + "/files/file"));
        QVERIFY(test::exists(desktopTrash() + "/info/file.trashinfo"));
        fs::remove_all(desktopTrash());
    }
}

void ZQFileManagerTrashTest::aTrashThatIsAFolderStaysOne()
{
    auto &at = *m_fixture;
    test::makeFolder(trash());
    test::writeFile(at / "file");
    QVERIFY(ZQFileManager::trashFile(at.path("file"), ShouldAuth::No));
    QVERIFY(!fs::is_symlink(trash()));
    QVERIFY(test::exists(trash() + "/file"));
    QVERIFY(!test::exists(desktopTrash()));
}

void ZQFileManagerTrashTest::whereTheDesktopsTrashCannotBeMadeTheTrashIsAFolder()
{
    auto &at = *m_fixture;
    test::writeFile(home() + "/.local", "a file in the folder's place");
    test::writeFile(at / "file");
    QVERIFY(ZQFileManager::trashFile(at.path("file"), ShouldAuth::No));
    QVERIFY(!fs::is_symlink(trash()));
    QVERIFY(test::exists(trash() + "/file"));
}

void ZQFileManagerTrashTest::aNameThatIsTakenInTheTrashGetsANumber()
{
    auto &at = *m_fixture;
    for (const auto *contents : {"1", "2", "3"}) {
        test::writeFile(at / "notes.txt", contents);
        QVERIFY(ZQFileManager::trashFile(at.path("notes.txt")));
    }
    QCOMPARE(test::readFile(trash() + "/notes.txt"), std::string("1"));
    QCOMPARE(test::readFile(trash() + "/notes 2.txt"), std::string("2"));
    QCOMPARE(test::readFile(trash() + "/notes 3.txt"), std::string("3"));
}

void ZQFileManagerTrashTest::aFailureWithOnesOwnRightsIsNotLogged()
{
    auto &at = *m_fixture;
    test::writeFile(trash(), "a file in the trash's place");
    test::writeFile(at / "file");
    QVERIFY(!ZQFileManager::trashFile(at.path("file"), ShouldAuth::No));
    QVERIFY(FileManagerFixture::logged().isEmpty());
    QVERIFY(at.console().isEmpty());
    // Root has the tool started, whatever comes of it; others cannot be asked here.
    QCOMPARE(ZQFileManager::trashFile(at.path("file")), test::isRoot());
    QVERIFY(FileManagerFixture::logged().isEmpty());
    QVERIFY(test::exists(at / "file"));
}

void ZQFileManagerTrashTest::aTimeOutOfZeroSaysWhetherTheFileWasGoneRightAfterTheCall()
{
    auto &at = *m_fixture;
    test::writeFile(at / "file");
    QVERIFY(ZQFileManager::trashFile(at.path("file"), 0s));
    QVERIFY(!test::exists(at / "file"));
    QVERIFY(ZQFileManager::trashFile(at.path("file"), 0s));
    fs::remove_all(trash());
    test::writeFile(trash(), "a file in the trash's place");
    test::writeFile(at / "file");
    QVERIFY(
        !ZQFileManager::trashFile(at.path("file"), 0s)); // also where the tool counts as started
    QVERIFY(test::exists(at / "file"));
}

void ZQFileManagerTrashTest::theDesktopsTrashGetsARecordToRestoreFrom_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("target");
    QTest::newRow("link to the trash") << QByteArray() << text(desktopTrash());
    QTest::newRow("link to its files") << QByteArray() << text(desktopTrash() + "/files");
    QTest::newRow("data folder elsewhere")
        << QByteArray::fromStdString(home() + "/.local/elsewhere")
        << text(home() + "/.local/elsewhere/Trash");
}

void ZQFileManagerTrashTest::theDesktopsTrashGetsARecordToRestoreFrom()
{
    QFETCH(QByteArray, data);
    QFETCH(QString, target);
    auto &at = *m_fixture;
    const test::EnvironmentVariable variable("XDG_DATA_HOME", data);
    const auto folder = target.toStdString();
    test::makeFolder(folder);
    test::makeLink(folder, trash());
    const auto base = folder.ends_with("/files") ? fs::path(folder).parent_path().string() : folder;
    test::writeFile(at / "a b%.txt", "contents");
    const auto before = QDateTime::currentDateTime().addSecs(-1);
    QVERIFY(ZQFileManager::trashFile(at.path("a b%.txt"), ShouldAuth::No));
    QCOMPARE(test::readFile(base + "/files/a b%.txt"), std::string("contents"));
    const auto record = QString::fromStdString(test::readFile(base + "/info/a b%.txt.trashinfo"));
    static const QRegularExpression form(QStringLiteral(
        R"(^\[Trash Info\]\nPath=(/.*)\nDeletionDate=(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d)\n$)"));
    const auto match = form.match(record);
    QVERIFY2(match.hasMatch(), qUtf8Printable(record));
    QCOMPARE(match.captured(1), at.path("a%20b%25.txt"));
    const auto date = QDateTime::fromString(match.captured(2), Qt::ISODate);
    QVERIFY(before <= date && date <= QDateTime::currentDateTime());
    QCOMPARE(names(base), (QStringList{QStringLiteral("files"), QStringLiteral("info")}));
}

void ZQFileManagerTrashTest::theRecordIsLikeTheDesktopsOwn()
{
    const auto name = std::string("Gr\xC3\xBC\xC3\x9F"
                                  "e 100% 'a' -\xE9\n.txt");
    const auto path = home() + '/' + name;
    const auto record = desktopTrash() + "/info/" + name + ".trashinfo";
    const auto withoutDate = [&] {
        const auto contents = test::readFile(record);
        return contents.substr(0, contents.find("DeletionDate="));
    };
    test::makeFolder(desktopTrash());
    test::makeLink(desktopTrash(), trash());
    test::writeFile(path);
    QVERIFY(ZQFileManager::trashFile(text(path), ShouldAuth::No));
    const auto ours = withoutDate();
    QVERIFY(!ours.empty());
    fs::remove_all(desktopTrash());

    test::writeFile(path);
    const auto gio = ::fork(); // QProcess has no arguments of any bytes
    if (gio == 0) {
        ::execl("/usr/bin/gio", "gio", "trash", path.c_str(), nullptr);
        ::_exit(127);
    }
    int status = 0;
    QCOMPARE(::waitpid(gio, &status, 0), gio);
    QCOMPARE(status, 0);
    // The same once decoded: some characters may be encoded or not.
    const auto decoded = [](const std::string &encoded) {
        return QByteArray::fromPercentEncoding(QByteArray::fromStdString(encoded));
    };
    QCOMPARE(decoded(ours), decoded(withoutDate()));
}

void ZQFileManagerTrashTest::everyNameHasARecordInTheDesktopsTrash()
{
    QFETCH(int, index);
    auto &at = *m_fixture;
    test::makeFolder(desktopTrash());
    test::makeLink(desktopTrash(), trash());
    const auto name = test::oddNames()[static_cast<std::size_t>(index)].name;
    for (int i = 0; i < 2; ++i) {
        test::writeFile(at / name, "contents");
        QVERIFY(ZQFileManager::trashFile(at.path(name), ShouldAuth::No));
    }
    const auto records = names(desktopTrash() + "/info");
    QCOMPARE(records.size(), 2);
    QStringList files;
    for (const auto &record : records) {
        QVERIFY(record.endsWith(QStringLiteral(".trashinfo")));
        files << record.chopped(10);
        const auto contents = test::readFile(desktopTrash() + "/info/" +
                                             platform::fileNameBytes(record).toStdString());
        const auto line = QByteArray::fromStdString(contents).split('\n').value(1);
        QCOMPARE(QByteArray::fromPercentEncoding(line),
                 QByteArray::fromStdString("Path=" + (at / name)));
    }
    files.sort();
    QCOMPARE(names(desktopTrash() + "/files"), files);
}

void ZQFileManagerTrashTest::aNameWithARecordOrAFileInTheDesktopsTrashIsTaken()
{
    auto &at = *m_fixture;
    test::makeFolder(desktopTrash() + "/files");
    test::makeFolder(desktopTrash() + "/info");
    test::makeLink(desktopTrash(), trash());
    test::writeFile(desktopTrash() + "/info/file.txt.trashinfo", "somebody's");
    test::writeFile(desktopTrash() + "/files/file 2.txt", "somebody's");
    test::writeFile(at / "file.txt", "ours");
    QVERIFY(ZQFileManager::trashFile(at.path("file.txt"), ShouldAuth::No));
    QCOMPARE(test::readFile(desktopTrash() + "/info/file.txt.trashinfo"),
             std::string("somebody's"));
    QCOMPARE(test::readFile(desktopTrash() + "/files/file 2.txt"), std::string("somebody's"));
    QCOMPARE(test::readFile(desktopTrash() + "/files/file 3.txt"), std::string("ours"));
    QCOMPARE(names(desktopTrash() + "/info"), (QStringList{QStringLiteral("file 3.txt.trashinfo"),
                                                           QStringLiteral("file.txt.trashinfo")}));
}

void ZQFileManagerTrashTest::rootTrashesForTheUserAtTheConsole()
{
    if (!test::isRoot()) {
        QSKIP("for root only");
    }
    auto &at = *m_fixture;
    test::ConsoleSeat seat;
    seat.activate(QStringLiteral("bob"), 1001);
    test::writeFile(at / "file");
    QVERIFY(ZQFileManager::trashFile(at.path("file")));
    QVERIFY(test::exists("/home/bob/.Trash/file"));
    QVERIFY(test::exists("/home/bob/.local/share/Trash/info/file.trashinfo"));
    fs::remove_all("/home/bob/.Trash");
    fs::remove_all("/home/bob/.local");
    test::makeFolder("/home/bob/.local/share/Trash");
    test::makeLink(".local/share/Trash", "/home/bob/.Trash");
    test::writeFile(at / "file");
    QVERIFY(ZQFileManager::trashFile(at.path("file")));
    QVERIFY(test::exists("/home/bob/.local/share/Trash/files/file"));
    QVERIFY(test::exists("/home/bob/.local/share/Trash/info/file.trashinfo"));
    fs::remove_all("/home/bob/.local");
    fs::remove("/home/bob/.Trash");
}

void ZQFileManagerTrashTest::anItemOfAnotherFileSystemIsTrashedWhole()
{
    const test::Folder other("/var/tmp");
    test::makeTree(other / "tree");
    ::chmod((other / "tree/closed").c_str(), 0700);
    const auto whole = test::tree(other / "tree");
    QVERIFY(ZQFileManager::trashFile(text(other / "tree"), ShouldAuth::No));
    QCOMPARE(test::tree(trash() + "/tree"), whole);
    QVERIFY(other.names().isEmpty());
}

void ZQFileManagerTrashTest::allContentsAreTrashedButNotTheFolder()
{
    auto &at = *m_fixture;
    test::makeFolder(at / "folder/below");
    test::writeFile(at / "folder/.hidden");
    test::writeFile(at / "folder/file");
    QVERIFY(ZQFileManager::trashDirectoryContents(at.path("folder")));
    QCOMPARE(test::tree(at / "folder").size(), 1);
    QCOMPARE(names(trash()), (QStringList{QStringLiteral(".hidden"), QStringLiteral("below"),
                                          QStringLiteral("file")}));
    QVERIFY(ZQFileManager::trashDirectoryContents(at.path("folder")));
    QVERIFY(ZQFileManager::trashDirectoryContents(at.path("missing"), ShouldAuth::No));
}

void ZQFileManagerTrashTest::contentsAreTrashedOnAfterAFailure()
{
    if (test::isRoot()) {
        QSKIP("root may trash them all");
    }
    auto &at = *m_fixture;
    test::makeFolder(at / "folder");
    for (const auto *name : {"a", "b-closed", "c"}) {
        test::writeFile(at / "folder/" + name);
    }
    // The trash is on another file system, so that it would have to be read.
    ::chmod((at / "folder/b-closed").c_str(), 0);
    QVERIFY(!ZQFileManager::trashDirectoryContents(at.path("folder"), ShouldAuth::No));
    QCOMPARE(names(at / "folder"), QStringList(QStringLiteral("b-closed")));
}

void ZQFileManagerTrashTest::filesOfATypeAreTrashedInEitherCaseAndAllBelow()
{
    auto &at = *m_fixture;
    for (const auto *name : {"a.OKL", "b.okl", "c.okl.txt", "okl", "below/d.Okl",
                             "Program.app/Contents/e.okl", "folder.okl/f.okl", "folder.okl/g"}) {
        test::makeFolder(fs::path(at / name).parent_path());
        test::writeFile(at / name);
    }
    const auto trashed =
        ZQFileManager::trashFilesOfType(QStringLiteral("oKL"), text(at.folder().path()));
    QCOMPARE(trashed,
             (QStringList{at.path("Program.app/Contents/e.okl"), at.path("a.OKL"), at.path("b.okl"),
                          at.path("below/d.Okl"), at.path("folder.okl/f.okl")}));
    for (const auto &path : trashed) {
        QVERIFY(!ZQFileManager::fileExistsAtPath(path));
    }
    QVERIFY(test::exists(at / "folder.okl/g"));
    QVERIFY(test::exists(at / "c.okl.txt"));
    QVERIFY(test::exists(at / "okl"));
    QVERIFY(ZQFileManager::trashFilesOfType(QStringLiteral("okl"), at.path("missing")).isEmpty());
}

void ZQFileManagerTrashTest::filesOfNoTypeAtAllAreNotTrashed()
{
    auto &at = *m_fixture;
    test::writeFile(at / "plain");
    test::writeFile(at / "typed.txt");
    const auto all = text(at.folder().path());
    QVERIFY(ZQFileManager::trashFilesOfType(QString(), all).isEmpty());
    QVERIFY(test::exists(at / "plain"));
    // The empty extension is one: that of files without any.
    QCOMPARE(ZQFileManager::trashFilesOfType(QStringLiteral(""), all),
             QStringList(at.path("plain")));
    QVERIFY(!test::exists(at / "plain"));
    QVERIFY(test::exists(at / "typed.txt"));
}

void ZQFileManagerTrashTest::whatMayNotBeLookedAtDoesNotCountAsTrashed()
{
    if (test::isRoot()) {
        QSKIP("root may look at everything");
    }
    auto &at = *m_fixture;
    test::makeFolder(at / "closed");
    test::writeFile(at / "closed/file");
    ::chmod((at / "closed").c_str(), 0600);
    QVERIFY(!ZQFileManager::trashFile(at.path("closed/file"), ShouldAuth::No));
    // The next step has other rights, which it would ask for, as the console says.
    QVERIFY(!ZQFileManager::trashFile(at.path("closed/file"), ShouldAuth::Yes));
    QVERIFY(!at.console().isEmpty());
    ::chmod((at / "closed").c_str(), 0700);
    QVERIFY(test::exists(at / "closed/file"));
}

void ZQFileManagerTrashTest::filesOfANameAreTrashedInThatCaseOnlyAndAllBelow()
{
    auto &at = *m_fixture;
    for (const auto *name :
         {"name", "Name", "below/name", "folder/name/name", "folder/name/other"}) {
        test::makeFolder(fs::path(at / name).parent_path());
        test::writeFile(at / name);
    }
    const auto trashed =
        ZQFileManager::trashFilesNamed(QStringLiteral("name"), text(at.folder().path()));
    QCOMPARE(trashed,
             (QStringList{at.path("below/name"), at.path("folder/name/name"), at.path("name")}));
    QVERIFY(test::exists(at / "Name"));
    QVERIFY(test::exists(at / "folder/name/other")); // a folder of that name is searched
}

void ZQFileManagerTrashTest::whatWasTriedIsGivenWhetherOrNotItSucceeded()
{
    if (test::isRoot()) {
        QSKIP("root may trash it");
    }
    auto &at = *m_fixture;
    test::makeFolder(at / "closed");
    test::writeFile(at / "closed/a.txt");
    ::chmod((at / "closed").c_str(), 0500);
    QCOMPARE(ZQFileManager::trashFilesOfType(QStringLiteral("txt"), text(at.folder().path())),
             QStringList(at.path("closed/a.txt")));
    QVERIFY(test::exists(at / "closed/a.txt"));
}

void ZQFileManagerTrashTest::linksAmongTheEntriesAreNotFollowed()
{
    auto &at = *m_fixture;
    test::makeFolder(at / "searched");
    test::makeFolder(at / "outside");
    test::writeFile(at / "outside/kept.txt");
    test::makeLink("../outside", at / "searched/link");
    test::makeLink("..", at / "searched/up");
    test::makeLink("../outside", at / "searched/link.txt");
    QCOMPARE(ZQFileManager::trashFilesOfType(QStringLiteral("txt"), at.path("searched")),
             QStringList(at.path("searched/link.txt")));
    QVERIFY(test::exists(at / "outside/kept.txt"));
    QVERIFY(!test::exists(at / "searched/link.txt"));
}

TEST_CLASS(ZQFileManagerTrashTest, QCoreApplication)
#include "ZQFileManagerTrashTest.moc"
