// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Bundles/Bundle.h"

#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Tests/Support/TestProgram.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <dlfcn.h>

#include <cstdio>
#include <cstring>

using platform::Bundle;

namespace {

const char inThisProgram = 0;

// What a copy of this program says about itself, one line each.
int describe()
{
    const auto bundle = Bundle::main();
    for (const auto &line :
         {bundle.path(), bundle.executablePath(), Bundle::containing(&inThisProgram).path(),
          Bundle::containing(&inThisProgram).executablePath()}) {
        std::puts(QFile::encodeName(line).constData());
    }
    return 0;
}

} // namespace

class BundleTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aProgramOutsideAnyBundleCountsAsTheMainBundle();
    void aProgramInABundleBelongsToIt();
    void theMainBundleIsKnownAfterTheProgramWasDeleted();
    void addressesOutsideAnyBundleAreInTheMainBundle();
    void aLibraryInABundleBelongsToIt();
    void onlyContentsMacOSHoldsPrograms();
    void theInformationIsReadAtEachCall();
    void theExecutableIsTheOneThatTheInformationNames();
    void resourcesAreFoundByNameAndType();
    void noBundleHasNothing();

private:
    static QStringList descriptionBy(const QString &program, const QString &how);
    QString copyOfThisProgram(const QString &path) const;

    QTemporaryDir m_folder;
};

QString BundleTest::copyOfThisProgram(const QString &path) const
{
    const auto copy = m_folder.filePath(path);
    QDir().mkpath(QFileInfo(copy).path());
    QFile::remove(copy);
    return QFile::copy(QCoreApplication::applicationFilePath(), copy) ? copy : QString();
}

QStringList BundleTest::descriptionBy(const QString &program, const QString &how)
{
    QProcess process;
    process.start(program, {QStringLiteral("BundleTest"), how});
    return process.waitForFinished() ? QFile::decodeName(process.readAllStandardOutput())
                                           .split(QLatin1Char('\n'))
                                           .mid(0, 4)
                                     : QStringList();
}

void BundleTest::aProgramOutsideAnyBundleCountsAsTheMainBundle()
{
    const auto program = QCoreApplication::applicationFilePath();
    QCOMPARE(Bundle::main().executablePath(), program);
    QCOMPARE(Bundle::main().path(), QFileInfo(program).path());
    QVERIFY(Bundle::main().infoDictionary().isEmpty());
    QCOMPARE(Bundle::containing(&inThisProgram).path(), Bundle::main().path());
    QCOMPARE(Bundle::containing(&inThisProgram).executablePath(), program);
}

void BundleTest::aProgramInABundleBelongsToIt()
{
    const auto program = copyOfThisProgram(QString::fromUtf8("Grüße.app/Contents/MacOS/N"));
    const auto bundle = m_folder.filePath(QString::fromUtf8("Grüße.app"));
    QCOMPARE(descriptionBy(program, QStringLiteral("--describe")),
             (QStringList{bundle, program, bundle, program}));
}

void BundleTest::theMainBundleIsKnownAfterTheProgramWasDeleted()
{
    const auto program = copyOfThisProgram(QStringLiteral("X.app/Contents/MacOS/N"));
    const auto bundle = m_folder.filePath(QStringLiteral("X.app"));
    QCOMPARE(descriptionBy(program, QStringLiteral("--delete-and-describe")),
             (QStringList{bundle, program, bundle, program}));
    QVERIFY(!QFile::exists(program));
}

void BundleTest::addressesOutsideAnyBundleAreInTheMainBundle()
{
    const auto onHeap = std::make_unique<char>();
    const char onStack = 0;
    for (const void *address :
         {static_cast<const void *>(nullptr), static_cast<const void *>(onHeap.get()),
          static_cast<const void *>(&onStack),
          static_cast<const void *>(::dlsym(RTLD_DEFAULT, "strlen")),
          static_cast<const void *>(&QObject::staticMetaObject)}) {
        QCOMPARE(Bundle::containing(address).path(), Bundle::main().path());
    }
}

void BundleTest::aLibraryInABundleBelongsToIt()
{
    const auto path = m_folder.filePath(QStringLiteral("Y.prefPane/Contents/MacOS/N"));
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QVERIFY(QFile::copy(QStringLiteral(PLUGIN_FOR_TEST), path));
    auto *handle = ::dlopen(QFile::encodeName(path).constData(), RTLD_NOW);
    QVERIFY2(handle != nullptr, ::dlerror());
    const auto *address = ::dlsym(handle, "qt_plugin_instance");
    QVERIFY(address != nullptr);
    QCOMPARE(Bundle::containing(address).path(), m_folder.filePath(QStringLiteral("Y.prefPane")));
}

void BundleTest::onlyContentsMacOSHoldsPrograms()
{
    const auto path = [](const char *program) {
        return Bundle::ofProgram(QString::fromLatin1(program)).path();
    };
    QCOMPARE(path("/a/X.app/Contents/MacOS/N"), QStringLiteral("/a/X.app"));
    QCOMPARE(path("/X/Contents/MacOS/N"), QStringLiteral("/X"));
    for (const auto *program : {"/a/X.app/Contents/MacOS/sub/N", "/a/X.app/Contents/Frameworks/N",
                                "/a/X.app/Contents/macos/N", "/a/X.app/MacOS/N", "/usr/bin/N",
                                "/Contents/MacOS/N", "N", "/", ""}) {
        QVERIFY2(path(program).isNull(), program);
    }
}

void BundleTest::theInformationIsReadAtEachCall()
{
    const auto path = m_folder.filePath(QStringLiteral("I.app"));
    QVERIFY(QDir().mkpath(path + QStringLiteral("/Contents")));
    const Bundle bundle(path);
    QVERIFY(bundle.infoDictionary().isEmpty());
    for (const auto version : {1, 2}) {
        const QVariantMap info{{QStringLiteral("CFBundleVersion"), qlonglong(version)}};
        QVERIFY(
            platform::writeDictionaryToFile(info, path + QStringLiteral("/Contents/Info.plist")));
        QCOMPARE(bundle.infoDictionary(), info);
    }
}

void BundleTest::theExecutableIsTheOneThatTheInformationNames()
{
    const auto program = copyOfThisProgram(QStringLiteral("E.app/Contents/MacOS/N"));
    const Bundle bundle(m_folder.filePath(QStringLiteral("E.app")));
    QVERIFY(bundle.executablePath().isNull());
    const auto name = [&](const QString &executable) {
        return platform::writeDictionaryToFile({{QStringLiteral("CFBundleExecutable"), executable}},
                                               bundle.path() +
                                                   QStringLiteral("/Contents/Info.plist"));
    };
    QVERIFY(name(QStringLiteral("N")));
    QCOMPARE(bundle.executablePath(), program);
    for (const auto *bad : {"M", "", ".", "..", "../MacOS/N", "/bin/sh"}) {
        QVERIFY(name(QString::fromLatin1(bad)));
        QVERIFY2(bundle.executablePath().isNull(), bad);
    }
}

void BundleTest::resourcesAreFoundByNameAndType()
{
    const Bundle bundle(m_folder.filePath(QStringLiteral("R.app")));
    const auto resources = bundle.path() + QStringLiteral("/Contents/Resources/");
    QVERIFY(QDir().mkpath(resources + QStringLiteral("Default Layouts")));
    for (const auto *name : {"User Manual.pdf", "plain"}) {
        QFile file(resources + QString::fromLatin1(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    QCOMPARE(bundle.pathForResource(QStringLiteral("User Manual"), QStringLiteral("pdf")),
             resources + QStringLiteral("User Manual.pdf"));
    QCOMPARE(bundle.pathForResource(QStringLiteral("plain"), {}),
             resources + QStringLiteral("plain"));
    QCOMPARE(bundle.pathForResource(QStringLiteral("Default Layouts"), {}),
             resources + QStringLiteral("Default Layouts"));
    QVERIFY(bundle.pathForResource(QStringLiteral("plain"), QStringLiteral("pdf")).isNull());
    QVERIFY(bundle.pathForResource(QStringLiteral("User Manual"), {}).isNull());
    QVERIFY(bundle.pathForResource({}, {}).isNull());
}

void BundleTest::noBundleHasNothing()
{
    const Bundle none;
    QVERIFY(none.isNull());
    QVERIFY(none.path().isNull());
    QVERIFY(none.infoDictionary().isEmpty());
    QVERIFY(none.executablePath().isNull());
    QVERIFY(none.pathForResource(QStringLiteral("etc/passwd"), {}).isNull());
    QVERIFY(!Bundle(QStringLiteral("/none")).isNull());
    QVERIFY(Bundle(QStringLiteral("/none")).executablePath().isNull());
}

static int run(int argc, char *argv[])
{
    if (argc == 2 && std::strcmp(argv[1], "--describe") == 0) {
        return describe();
    }
    if (argc == 2 && std::strcmp(argv[1], "--delete-and-describe") == 0) {
        QFile::remove(QString::fromLocal8Bit(argv[0]));
        return describe();
    }
    const QCoreApplication application(argc, argv);
    BundleTest test;
    return QTest::qExec(&test, argc, argv);
}

TEST_FUNCTION(BundleTest, run)
#include "BundleTest.moc"
