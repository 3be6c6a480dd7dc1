// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Bundles/UserDefaults.h"

#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Tests/Support/ConsoleCapture.h"
#include "Tests/Support/TestProgram.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

using platform::dictionaryFromFile;
using platform::UserDefaults;
using platform::writeDictionaryToFile;

namespace {

UserDefaults &defaults()
{
    return UserDefaults::standardUserDefaults();
}

QString library()
{
    return ::geteuid() == 0 ? QStringLiteral("/var/root/Library")
                            : QStringLiteral("/home/tester/Library");
}

QVariantMap stored()
{
    return dictionaryFromFile(defaults().filePath()).value_or(QVariantMap());
}

QString text(const char *latin1)
{
    return QString::fromLatin1(latin1);
}

} // namespace

class UserDefaultsTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void theFileIsNamedAfterTheProgram();
    void theFileIsNamedAfterTheIdentifierOfTheProgramsBundle();
    void aValueIsReadByItsKeyPath();
    void settingAValueMakesFolderAndFile();
    void settingAValueKeepsAllOthers();
    void settingAnInvalidValueRemovesIt();
    void aKeyPathThroughAnotherValueChangesNothing();
    void anEmptyKeyPathChangesNothing();
    void aChangeByAnotherProgramIsSeenAndKept();
    void aDamagedFileIsKeptBesideTheNewOne();
    void aFileThatCannotBeWrittenIsReportedAndUntouched();
};

void UserDefaultsTest::init()
{
    ::chmod(QFile::encodeName(library() + text("/Preferences")).constData(), 0700);
    QDir(library()).removeRecursively();
}

void UserDefaultsTest::theFileIsNamedAfterTheProgram()
{
    QCOMPARE(defaults().filePath(), library() + text("/Preferences/BundlesTests.plist"));
}

void UserDefaultsTest::theFileIsNamedAfterTheIdentifierOfTheProgramsBundle()
{
    const QTemporaryDir folder;
    const auto contents = folder.filePath(text("X.app/Contents"));
    QVERIFY(QDir().mkpath(contents + text("/MacOS")));
    const auto program = contents + text("/MacOS/N");
    QVERIFY(QFile::copy(QCoreApplication::applicationFilePath(), program));
    const auto fileFor = [&](const char *identifier) {
        QProcess process;
        return writeDictionaryToFile({{text("CFBundleIdentifier"), text(identifier)}},
                                     contents + text("/Info.plist")) &&
                       (process.start(program, {text("UserDefaultsTest"), text("--set")}),
                        process.waitForFinished()) &&
                       process.exitCode() == 0
                   ? QFile::decodeName(process.readAllStandardOutput())
                   : QString();
    };
    const auto preferences = library() + text("/Preferences/");
    QCOMPARE(fileFor("com.example.X"), preferences + text("com.example.X.plist"));
    QCOMPARE(fileFor("../escape"), preferences + text("N.plist"));
    QCOMPARE(fileFor(""), preferences + text("N.plist"));
    QCOMPARE(QDir(preferences).entryList(QDir::Files),
             (QStringList{text("com.example.X.plist"), text("N.plist")}));
}

void UserDefaultsTest::aValueIsReadByItsKeyPath()
{
    QVERIFY(!defaults().valueForKeyPath(text("a")).isValid());
    QVERIFY(QDir().mkpath(library() + text("/Preferences")));
    const QVariantMap inner{{text("b"), QVariantMap{{text("c"), qlonglong(1)}}}};
    QVERIFY(writeDictionaryToFile({{text("a"), inner}, {text("d"), true}, {text("a.b"), false}},
                                  defaults().filePath()));
    QCOMPARE(defaults().valueForKeyPath(text("d")), QVariant(true));
    QCOMPARE(defaults().valueForKeyPath(text("a")), QVariant(inner));
    QCOMPARE(defaults().valueForKeyPath(text("a.b.c")), QVariant(qlonglong(1)));
    for (const auto *absent : {"", "b", "a.c", "a.b.c.d", "d.e", "a.", ".a", "."}) {
        QVERIFY2(!defaults().valueForKeyPath(text(absent)).isValid(), absent);
    }
}

void UserDefaultsTest::settingAValueMakesFolderAndFile()
{
    QVERIFY(!QFileInfo::exists(library()));
    QVERIFY(defaults().setValueForKeyPath(true, text("a")));
    QCOMPARE(stored(), (QVariantMap{{text("a"), true}}));
}

void UserDefaultsTest::settingAValueKeepsAllOthers()
{
    QVERIFY(QDir().mkpath(library() + text("/Preferences")));
    QVariantMap values{{text("unknown"), QVariantList{QByteArray("\0", 1), qlonglong(-1)}},
                       {text("a"), QVariantMap{{text("b"), 0.1}}}};
    QVERIFY(writeDictionaryToFile(values, defaults().filePath()));
    QVERIFY(defaults().setValueForKeyPath(text("x"), text("a.c.d")));
    values[text("a")] =
        QVariantMap{{text("b"), 0.1}, {text("c"), QVariantMap{{text("d"), text("x")}}}};
    QCOMPARE(stored(), values);
    QVERIFY(defaults().setValueForKeyPath(text("y"), text("a.c")));
    values[text("a")] = QVariantMap{{text("b"), 0.1}, {text("c"), text("y")}};
    QCOMPARE(stored(), values);
}

void UserDefaultsTest::settingAnInvalidValueRemovesIt()
{
    QVERIFY(defaults().setValueForKeyPath(true, text("a.b")));
    QVERIFY(defaults().setValueForKeyPath(true, text("c")));
    QVERIFY(defaults().setValueForKeyPath({}, text("c")));
    QVERIFY(defaults().setValueForKeyPath({}, text("none")));
    QVERIFY(defaults().setValueForKeyPath({}, text("no.such.path")));
    QCOMPARE(stored(), (QVariantMap{{text("a"), QVariantMap{{text("b"), true}}}}));
    QVERIFY(defaults().setValueForKeyPath({}, text("a.b")));
    QCOMPARE(stored(), (QVariantMap{{text("a"), QVariantMap()}}));
}

void UserDefaultsTest::aKeyPathThroughAnotherValueChangesNothing()
{
    const QVariantMap values{{text("a"), text("text")},
                             {text("b"), QVariantMap{{text("c"), QVariantList()}}}};
    QVERIFY(QDir().mkpath(library() + text("/Preferences")));
    QVERIFY(writeDictionaryToFile(values, defaults().filePath()));
    for (const auto *path : {"a.b", "a.b.c", "b.c.d", "b.c.0"}) {
        QVERIFY2(!defaults().setValueForKeyPath(true, text(path)), path);
        QVERIFY2(!defaults().setValueForKeyPath({}, text(path)), path);
    }
    QCOMPARE(stored(), values);
}

void UserDefaultsTest::anEmptyKeyPathChangesNothing()
{
    QVERIFY(!defaults().setValueForKeyPath(true, {}));
    QVERIFY(!QFileInfo::exists(library()));
}

void UserDefaultsTest::aChangeByAnotherProgramIsSeenAndKept()
{
    QVERIFY(defaults().setValueForKeyPath(true, text("a")));
    QVERIFY(writeDictionaryToFile({{text("b"), true}}, defaults().filePath()));
    QVERIFY(!defaults().valueForKeyPath(text("a")).isValid());
    QVERIFY(defaults().setValueForKeyPath(true, text("c")));
    QCOMPARE(stored(), (QVariantMap{{text("b"), true}, {text("c"), true}}));
}

void UserDefaultsTest::aDamagedFileIsKeptBesideTheNewOne()
{
    QVERIFY(QDir().mkpath(library() + text("/Preferences")));
    QFile file(defaults().filePath());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("<plist><dict><key>a");
    file.close();
    QVERIFY(!defaults().valueForKeyPath(text("a")).isValid());
    QVERIFY(defaults().setValueForKeyPath(true, text("b")));
    QCOMPARE(stored(), (QVariantMap{{text("b"), true}}));
    QFile kept(defaults().filePath() + text(".damaged"));
    QVERIFY(kept.open(QIODevice::ReadOnly));
    QCOMPARE(kept.readAll(), QByteArray("<plist><dict><key>a"));
}

void UserDefaultsTest::aFileThatCannotBeWrittenIsReportedAndUntouched()
{
    if (::geteuid() == 0) {
        QSKIP("root may write everywhere");
    }
    test::ConsoleCapture console;
    QVERIFY(defaults().setValueForKeyPath(true, text("a")));
    QVERIFY(console.lines().isEmpty());
    QCOMPARE(::chmod(QFile::encodeName(library() + text("/Preferences")).constData(), 0500), 0);
    QVERIFY(!defaults().setValueForKeyPath(false, text("a")));
    QCOMPARE(stored(), (QVariantMap{{text("a"), true}}));
    QCOMPARE(console.lines().size(), 1);
    QVERIFY2(console.lines().constFirst().contains(defaults().filePath()),
             qUtf8Printable(console.lines().constFirst()));
}

static int run(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    if (argc == 2 && std::strcmp(argv[1], "--set") == 0) {
        std::fputs(QFile::encodeName(defaults().filePath()).constData(), stdout);
        return defaults().setValueForKeyPath(true, text("a")) ? 0 : 1;
    }
    UserDefaultsTest test;
    return QTest::qExec(&test, argc, argv);
}

TEST_FUNCTION(UserDefaultsTest, run)
#include "UserDefaultsTest.moc"
