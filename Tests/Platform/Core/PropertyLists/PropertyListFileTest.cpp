// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Platform/Core/PropertyLists/PropertyListLimits.h"
#include "Tests/Support/TestProgram.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <thread>

using platform::dictionaryFromFile;
using platform::writeDictionaryToFile;

namespace {

const QVariantMap small{{QStringLiteral("a"), qlonglong(1)}};

} // namespace

class PropertyListFileTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void aDictionaryIsReadInEitherForm();
    void whatIsNoDictionaryIsNotRead_data();
    void whatIsNoDictionaryIsNotRead();
    void aFileThatMayNotBeReadIsNotRead();
    void onlyRegularFilesAreReadAndNothingBlocks();
    void aFileLargerThanTheLimitIsNotRead();
    void writingChangesNothingButWhatWasChanged();
    void writingKeepsTheModeOfAnExistingFile();
    void aNewFileHasTheModeThatTheUserWants();
    void aSymbolicLinkStaysAndItsFileIsReplaced();
    void aSymbolicLinkToNothingStaysAndItsFileIsMade();
    void onlyRegularFilesAreReplaced();
    void aFileInAFolderThatMayNotBeWrittenIsUntouched();
    void aFileThatMayNotBeWrittenIsReplacedWhereItsFolderMayBe();
    void aFileThatMayNotBeReadIsReplacedByOneThatMay();
    void aFileIsUntouchedWhenThereIsNoSpace();
    void aFileIsUntouchedWhenTheValueCannotBeWritten();
    void readersSeeTheOldOrTheNewFile();

private:
    void put(const QByteArray &bytes) const;
    QByteArray bytes() const;
    QStringList files() const;

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
    QByteArray m_name;
};

void PropertyListFileTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_path = m_folder->filePath(QString::fromUtf8("Grüße 🎹.plist"));
    m_name = QFile::encodeName(m_path);
}

void PropertyListFileTest::cleanup()
{
    ::chmod(QFile::encodeName(m_folder->path()).constData(), 0700);
    m_folder.reset();
}

void PropertyListFileTest::put(const QByteArray &bytes) const
{
    QFile file(m_path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), qint64(bytes.size()));
}

QByteArray PropertyListFileTest::bytes() const
{
    QFile file(m_path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QStringList PropertyListFileTest::files() const
{
    return QDir(m_folder->path())
        .entryList(QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot);
}

void PropertyListFileTest::aDictionaryIsReadInEitherForm()
{
    put("<dict><key>a</key><integer>1</integer></dict>");
    QCOMPARE(dictionaryFromFile(m_path), small);
    put(QByteArray::fromHex("62706C6973743030D101025161100108"
                            "0B0D0000000000000101000000000000"
                            "0003000000000000000000000000000000"
                            "0F"));
    QCOMPARE(dictionaryFromFile(m_path), small);
}

void PropertyListFileTest::whatIsNoDictionaryIsNotRead_data()
{
    QTest::addColumn<QByteArray>("contents");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("array") << QByteArray("<plist><array/></plist>");
    QTest::newRow("cut short") << QByteArray("<plist><dict><key>a</key><true/></di");
    QTest::newRow("zeros") << QByteArray(4096, '\0');
    QTest::newRow("text") << QByteArray("Unable to read");
}

void PropertyListFileTest::whatIsNoDictionaryIsNotRead()
{
    QFETCH(QByteArray, contents);
    put(contents);
    QVERIFY(!dictionaryFromFile(m_path));
}

void PropertyListFileTest::aFileThatMayNotBeReadIsNotRead()
{
    QVERIFY(writeDictionaryToFile(small, m_path));
    QCOMPARE(::chmod(m_name.constData(), 0), 0);
    QCOMPARE(dictionaryFromFile(m_path).has_value(), ::geteuid() == 0);
}

void PropertyListFileTest::onlyRegularFilesAreReadAndNothingBlocks()
{
    QVERIFY(!dictionaryFromFile(m_path)); // there is nothing
    QVERIFY(!dictionaryFromFile(QString()));
    QVERIFY(!dictionaryFromFile(m_folder->path()));
    QVERIFY(!dictionaryFromFile(m_path + QStringLiteral("/below")));
    QVERIFY(!dictionaryFromFile(QStringLiteral("/dev/zero")));
    QVERIFY(!dictionaryFromFile(QStringLiteral("/dev/null")));
    QCOMPARE(::mkfifo(m_name.constData(), 0600), 0); // would block without a writer
    QVERIFY(!dictionaryFromFile(m_path));
    QVERIFY(QFile::link(m_path, m_path + QStringLiteral(".link")));
    QVERIFY(!dictionaryFromFile(m_path + QStringLiteral(".link")));

    const auto behindNul = m_folder->filePath(QStringLiteral("a"));
    QVERIFY(writeDictionaryToFile(small, behindNul));
    QVERIFY(!dictionaryFromFile(behindNul + QChar(0) + QStringLiteral("b")));
    QVERIFY(!writeDictionaryToFile(small, behindNul + QChar(0) + QStringLiteral("b")));
}

void PropertyListFileTest::aFileLargerThanTheLimitIsNotRead()
{
    constexpr auto most = static_cast<int>(platform::propertylist::maximumSize);
    put(QByteArray("<dict/>").rightJustified(most, ' '));
    QCOMPARE(dictionaryFromFile(m_path), QVariantMap());
    QCOMPARE(::truncate(m_name.constData(), platform::propertylist::maximumSize + 1), 0);
    QVERIFY(!dictionaryFromFile(m_path));
    QCOMPARE(::truncate(m_name.constData(), qint64(1) << 40U), 0);
    QVERIFY(!dictionaryFromFile(m_path));
}

void PropertyListFileTest::writingChangesNothingButWhatWasChanged()
{
    QVariantMap unknown{
        {QStringLiteral("data"), QByteArray("\0\xFF", 2)},
        {QStringLiteral("date"), QDateTime({1999, 12, 31}, {23, 59, 59}, Qt::UTC)},
        {QStringLiteral("negative"), qlonglong(-5)},
        {QStringLiteral("huge"), ~qulonglong(0)},
        {QStringLiteral("real"), 0.1},
        {QStringLiteral("nested"), QVariantMap{{QString(), QVariantList{QVariantMap(), true}}}},
        {QStringLiteral("uid"), QVariantMap{{QStringLiteral("CF$UID"), qlonglong(1)}}},
        {QStringLiteral("text"), QStringLiteral("a\r\nb")},
    };
    QVERIFY(writeDictionaryToFile(unknown, m_path));
    const auto before = bytes();
    auto read = dictionaryFromFile(m_path).value_or(QVariantMap());
    QCOMPARE(read, unknown);
    QVERIFY(writeDictionaryToFile(read, m_path));
    QCOMPARE(bytes(), before);
    read.insert(QStringLiteral("own"), true);
    unknown.insert(QStringLiteral("own"), true);
    QVERIFY(writeDictionaryToFile(read, m_path));
    QCOMPARE(dictionaryFromFile(m_path), unknown);
    QCOMPARE(files().size(), 1);
}

void PropertyListFileTest::writingKeepsTheModeOfAnExistingFile()
{
    for (const auto mode : {mode_t(0600), mode_t(0640), mode_t(0666), mode_t(0755)}) {
        put("old");
        QCOMPARE(::chmod(m_name.constData(), mode), 0);
        QVERIFY(writeDictionaryToFile(small, m_path));
        struct stat status {};
        QCOMPARE(::stat(m_name.constData(), &status), 0);
        QCOMPARE(status.st_mode & 07777U, mode);
    }
}

void PropertyListFileTest::aNewFileHasTheModeThatTheUserWants()
{
    for (const auto mask : {mode_t(022), mode_t(077)}) {
        const auto old = ::umask(mask);
        const auto path = m_path + QString::number(mask);
        const auto written = writeDictionaryToFile(small, path);
        ::umask(old);
        QVERIFY(written);
        struct stat status {};
        QCOMPARE(::stat(QFile::encodeName(path).constData(), &status), 0);
        QCOMPARE(status.st_mode & 07777U, 0666U & ~mask);
    }
}

void PropertyListFileTest::aSymbolicLinkStaysAndItsFileIsReplaced()
{
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("elsewhere")));
    const auto target = m_folder->filePath(QStringLiteral("elsewhere/target"));
    QVERIFY(writeDictionaryToFile({}, target));
    QCOMPARE(::symlink("elsewhere/target", m_name.constData()), 0);
    QVERIFY(writeDictionaryToFile(small, m_path));
    QCOMPARE(QFile::symLinkTarget(m_path), target);
    QVERIFY(!QFileInfo(target).isSymLink());
    QCOMPARE(dictionaryFromFile(target), small);
    QCOMPARE(files().size(), 2);
    QCOMPARE(QFileInfo(target).dir().entryList(QDir::Files | QDir::Hidden).size(), 1);
}

void PropertyListFileTest::aSymbolicLinkToNothingStaysAndItsFileIsMade()
{
    const auto target = m_folder->filePath(QStringLiteral("target"));
    QVERIFY(QFile::link(target, m_path));
    QVERIFY(writeDictionaryToFile(small, m_path));
    QCOMPARE(QFile::symLinkTarget(m_path), target);
    QCOMPARE(dictionaryFromFile(target), small);
}

void PropertyListFileTest::onlyRegularFilesAreReplaced()
{
    QString error;
    QCOMPARE(::mkfifo(m_name.constData(), 0600), 0);
    QVERIFY(!writeDictionaryToFile(small, m_path, &error));
    QVERIFY(!error.isEmpty());
    struct stat status {};
    QCOMPARE(::stat(m_name.constData(), &status), 0);
    QVERIFY(S_ISFIFO(status.st_mode));
    QVERIFY(!writeDictionaryToFile(small, m_folder->path(), &error));
    QVERIFY(!writeDictionaryToFile(small, QStringLiteral("/dev/null"), &error));
    QVERIFY(!writeDictionaryToFile(small, QString(), &error));
    QVERIFY(!writeDictionaryToFile(small, m_path + QStringLiteral("/below"), &error));
    QCOMPARE(files().size(), 1);
}

void PropertyListFileTest::aFileInAFolderThatMayNotBeWrittenIsUntouched()
{
    QVERIFY(writeDictionaryToFile(small, m_path));
    QCOMPARE(::chmod(QFile::encodeName(m_folder->path()).constData(), 0500), 0);
    QString error;
    const auto isRoot = ::geteuid() == 0;
    QCOMPARE(writeDictionaryToFile({}, m_path, &error), isRoot);
    QCOMPARE(error.isEmpty(), isRoot);
    QCOMPARE(dictionaryFromFile(m_path), isRoot ? QVariantMap() : small);
    QCOMPARE(writeDictionaryToFile({}, m_folder->filePath(QStringLiteral("new"))), isRoot);
    QCOMPARE(files().size(), isRoot ? 2 : 1);
    QVERIFY(!writeDictionaryToFile(small, m_folder->filePath(QStringLiteral("none/new")), &error));
    QVERIFY(!error.isEmpty());
}

void PropertyListFileTest::aFileThatMayNotBeWrittenIsReplacedWhereItsFolderMayBe()
{
    for (const auto mode : {mode_t(0444), mode_t(0400)}) {
        put("old");
        QCOMPARE(::chmod(m_name.constData(), mode), 0);
        QString error;
        QVERIFY2(writeDictionaryToFile(small, m_path, &error), qUtf8Printable(error));
        QCOMPARE(dictionaryFromFile(m_path), small);
        struct stat status {};
        QCOMPARE(::stat(m_name.constData(), &status), 0);
        QCOMPARE(status.st_mode & 07777U, mode);
        QCOMPARE(files().size(), 1);
        QVERIFY(QFile::remove(m_path));
    }
}

void PropertyListFileTest::aFileThatMayNotBeReadIsReplacedByOneThatMay()
{
    put("old");
    QCOMPARE(::chmod(m_name.constData(), 0), 0);
    QVERIFY(writeDictionaryToFile(small, m_path));
    QCOMPARE(dictionaryFromFile(m_path), small);
    struct stat status {};
    QCOMPARE(::stat(m_name.constData(), &status), 0);
    QCOMPARE(status.st_mode & 07777U, 0400U);
}

void PropertyListFileTest::aFileIsUntouchedWhenThereIsNoSpace()
{
    QVERIFY(writeDictionaryToFile(small, m_path));
    const auto before = bytes();
    rlimit limit{};
    QCOMPARE(::getrlimit(RLIMIT_FSIZE, &limit), 0);
    const auto soft = limit.rlim_cur;
    limit.rlim_cur = 100000;
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    QCOMPARE(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    QString error;
    const auto big = QVariantMap{{QStringLiteral("a"), QString(200000, QLatin1Char('a'))}};
    const auto written = writeDictionaryToFile(big, m_path, &error);
    limit.rlim_cur = soft;
    QCOMPARE(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    std::signal(SIGXFSZ, handler);
    QVERIFY(!written);
    QVERIFY(!error.isEmpty());
    QCOMPARE(bytes(), before);
    QCOMPARE(files().size(), 1);
}

void PropertyListFileTest::aFileIsUntouchedWhenTheValueCannotBeWritten()
{
    QVERIFY(writeDictionaryToFile(small, m_path));
    QString error;
    QVERIFY(!writeDictionaryToFile({{QStringLiteral("a"), QVariant(QChar(0x61))}}, m_path, &error));
    QVERIFY2(error.contains(QStringLiteral("QChar")), qUtf8Printable(error));
    QCOMPARE(dictionaryFromFile(m_path), small);
}

void PropertyListFileTest::readersSeeTheOldOrTheNewFile()
{
    const auto value = [](int i) {
        const QString text(10000, QLatin1Char(static_cast<char>('a' + i % 26)));
        return QVariantMap{{QStringLiteral("a"), text}, {QStringLiteral("b"), text}};
    };
    QVERIFY(writeDictionaryToFile(value(0), m_path));
    std::atomic<bool> writing = true;
    std::thread writer([&] {
        for (auto i = 0; i < 100; ++i) {
            writeDictionaryToFile(value(i), m_path);
        }
        writing = false;
    });
    auto whole = true;
    do {
        const auto read = dictionaryFromFile(m_path).value_or(QVariantMap());
        whole = whole && read.size() == 2 && read.first() == read.last();
    } while (writing);
    writer.join();
    QVERIFY(whole);
}

TEST_CLASS(PropertyListFileTest, QCoreApplication)
#include "PropertyListFileTest.moc"
