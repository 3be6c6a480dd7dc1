// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Desktop/PaneLoading/PreferencePaneLoader.h"

#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Tests/Support/TestProgram.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <dlfcn.h>

using platform::findPreferencePane;
using platform::loadPreferencePane;

class PreferencePaneLoaderTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void aPaneIsLoadedAndKnowsItsBundle();
    void aPaneIsLoadedThroughASymbolicLink();
    void theProgramStaysLoadedWhenThePaneIsGone();
    void aMissingBundleIsNamed();
    void aBundleWithoutInformationIsNamed();
    void aBundleWithoutProgramIsNamed();
    void aProgramThatIsNoPluginIsNamed();
    void aPluginThatIsNoPaneIsNamed();
    void aPluginForAnotherQtIsNamedWithBothVersions();
    void aPluginThatCannotBeLoadedIsNamedWithTheReason();
    void aPluginThatLacksAFunctionIsNamedWithTheReason();
    void anUnknownClassIsNamed();
    void thePaneBesideABuildsProgramIsFoundFirst();
    void theInstalledPaneIsFoundWhereThereIsNoBuild();
    void aFileIsNoPane();

private:
    void makeBundle(const QString &program) const;
    void changeInformation(const QString &key, const QVariant &value) const;
    QString error() const;

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_bundle;
    QString m_program;
};

namespace {

QVariantMap information()
{
    return {{QStringLiteral("CFBundleExecutable"), QStringLiteral("Pane")},
            {QStringLiteral("NSPrincipalClass"), QStringLiteral("PaneForTest")}};
}

void makeFolder(const QString &path)
{
    QVERIFY2(QDir().mkpath(path), qUtf8Printable(path));
}

} // namespace

void PreferencePaneLoaderTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_bundle = m_folder->filePath(QString::fromUtf8("Größe %1.prefPane"));
    m_program = m_bundle + QStringLiteral("/Contents/MacOS/Pane");
    makeBundle(QStringLiteral(PANE_FOR_TEST));
}

void PreferencePaneLoaderTest::makeBundle(const QString &program) const
{
    makeFolder(QFileInfo(m_program).path());
    QFile::remove(m_program);
    QVERIFY(QFile::copy(program, m_program));
    QVERIFY(platform::writeDictionaryToFile(information(),
                                            m_bundle + QStringLiteral("/Contents/Info.plist")));
}

void PreferencePaneLoaderTest::changeInformation(const QString &key, const QVariant &value) const
{
    auto changed = information();
    changed.insert(key, value);
    QVERIFY(platform::writeDictionaryToFile(changed,
                                            m_bundle + QStringLiteral("/Contents/Info.plist")));
}

QString PreferencePaneLoaderTest::error() const
{
    const auto loaded = loadPreferencePane(m_bundle);
    return loaded.pane ? QStringLiteral("It was loaded.") : loaded.error;
}

void PreferencePaneLoaderTest::aPaneIsLoadedAndKnowsItsBundle()
{
    const auto loaded = loadPreferencePane(m_bundle);
    QVERIFY2(loaded.pane != nullptr, qUtf8Printable(loaded.error));
    QVERIFY(loaded.error.isNull());
    const QStringList paths{m_bundle, m_bundle, platform::Bundle::main().path()};
    QCOMPARE(loaded.pane->pages(), paths);
    QVERIFY(paths[2] != m_bundle);
}

void PreferencePaneLoaderTest::aPaneIsLoadedThroughASymbolicLink()
{
    const auto link = m_folder->filePath(QStringLiteral("link.prefPane"));
    QVERIFY(QFile::link(m_bundle, link));
    const auto loaded = loadPreferencePane(link);
    QVERIFY2(loaded.pane != nullptr, qUtf8Printable(loaded.error));
    QCOMPARE(loaded.pane->bundle().path(), m_bundle);
}

void PreferencePaneLoaderTest::theProgramStaysLoadedWhenThePaneIsGone()
{
    const auto isLoaded = [this] {
        auto *handle = ::dlopen(QFile::encodeName(m_program).constData(), RTLD_LAZY | RTLD_NOLOAD);
        return handle != nullptr && ::dlclose(handle) == 0;
    };
    QVERIFY(!isLoaded());
    auto loaded = loadPreferencePane(m_bundle);
    QVERIFY(loaded.pane);
    loaded.pane.reset();
    QVERIFY(isLoaded());
}

void PreferencePaneLoaderTest::aMissingBundleIsNamed()
{
    const auto path = m_folder->filePath(QStringLiteral("None.prefPane"));
    QCOMPARE(loadPreferencePane(path).error,
             QString::fromUtf8("There is no preference pane at “%1”.").arg(path));
    QVERIFY(!loadPreferencePane(m_program).pane);
    QVERIFY(!loadPreferencePane({}).pane);
    QVERIFY(!loadPreferencePane({}).error.isEmpty());
}

void PreferencePaneLoaderTest::aBundleWithoutInformationIsNamed()
{
    const auto file = m_bundle + QStringLiteral("/Contents/Info.plist");
    const auto expected = QString::fromUtf8("The preference pane “%1” is damaged: its file "
                                            "Contents/Info.plist is missing or cannot be read.");
    QVERIFY(QFile::remove(file));
    QCOMPARE(error(), QString(expected).replace(QStringLiteral("%1"), m_bundle));
    QFile damaged(file);
    QVERIFY(damaged.open(QIODevice::WriteOnly));
    damaged.write("<plist>");
    damaged.close();
    QCOMPARE(error(), QString(expected).replace(QStringLiteral("%1"), m_bundle));
}

void PreferencePaneLoaderTest::aBundleWithoutProgramIsNamed()
{
    const auto expected = QString::fromUtf8("The preference pane “%1” is damaged: its program is "
                                            "missing.")
                              .replace(QStringLiteral("%1"), m_bundle);
    const auto key = QStringLiteral("CFBundleExecutable");
    changeInformation(key, QStringLiteral("Other"));
    QCOMPARE(error(), expected);
    changeInformation(key, QVariant());
    QCOMPARE(error(), expected);
    changeInformation(key, QStringLiteral("../MacOS/Pane"));
    QCOMPARE(error(), expected);
    changeInformation(key, QStringLiteral("."));
    QCOMPARE(error(), expected);
}

void PreferencePaneLoaderTest::aProgramThatIsNoPluginIsNamed()
{
    const auto expected = QString::fromUtf8("The preference pane's program “%1” is damaged: it is "
                                            "not a plug-in.")
                              .replace(QStringLiteral("%1"), m_program);
    makeBundle(QStringLiteral("/etc/passwd"));
    QCOMPARE(error(), expected);
    makeBundle(QStringLiteral("/bin/sh"));
    QCOMPARE(error(), expected);
    QVERIFY(QFile(m_program).resize(0));
    QCOMPARE(error(), expected);
}

void PreferencePaneLoaderTest::aPluginThatIsNoPaneIsNamed()
{
    makeBundle(QStringLiteral(PLUGIN_FOR_TEST));
    QCOMPARE(error(), QString::fromUtf8("The plug-in “%1” is not a preference pane.")
                          .replace(QStringLiteral("%1"), m_program));
}

void PreferencePaneLoaderTest::aPluginForAnotherQtIsNamedWithBothVersions()
{
    QFile file(m_program);
    QVERIFY(file.open(QIODevice::ReadWrite));
    auto bytes = file.readAll();
    // The marks of Qt's information, of Qt 5 or 6 or both; one byte for its form, then the version.
    auto marks = 0;
    for (const auto &mark : {QByteArray("QTMETADATA !"), QByteArray("qt-project!", 12)}) {
        if (const auto found = static_cast<int>(bytes.indexOf(mark)); found >= 0) {
            const auto at = found + static_cast<int>(mark.size()) + 1;
            bytes[at] = 9;
            bytes[at + 1] = 8;
            ++marks;
        }
    }
    QVERIFY(marks > 0);
    QVERIFY(file.seek(0));
    file.write(bytes);
    file.close();
    QCOMPARE(error(), QString::fromUtf8("The preference pane's program “%1” was built for Qt 9.8, "
                                        "but this application runs with Qt %2.")
                          .replace(QStringLiteral("%1"), m_program)
                          .replace(QStringLiteral("%2"), QLatin1String(qVersion())));
}

void PreferencePaneLoaderTest::aPluginThatCannotBeLoadedIsNamedWithTheReason()
{
    // One of the libraries that it needs gets a name that no library has.
    QFile file(m_program);
    QVERIFY(file.open(QIODevice::ReadWrite));
    auto bytes = file.readAll();
    const QByteArray library("libstdc++.so.6");
    QVERIFY(bytes.contains(library));
    bytes.replace(library, "libmissin.so.6");
    QVERIFY(file.seek(0));
    file.write(bytes);
    file.close();
    const auto text = error();
    QVERIFY2(text.startsWith(QString::fromUtf8("The preference pane's program “%1” could not be "
                                               "loaded: ")
                                 .replace(QStringLiteral("%1"), m_program)),
             qUtf8Printable(text));
    QVERIFY2(text.contains(QStringLiteral("libmissin.so.6")), qUtf8Printable(text));
}

void PreferencePaneLoaderTest::aPluginThatLacksAFunctionIsNamedWithTheReason()
{
    makeBundle(QStringLiteral(BROKEN_PANE_FOR_TEST));
    const auto text = error();
    QVERIFY2(text.contains(m_program) && text.contains(QStringLiteral("functionThatNobodyHas")),
             qUtf8Printable(text));
}

void PreferencePaneLoaderTest::anUnknownClassIsNamed()
{
    changeInformation(QStringLiteral("NSPrincipalClass"), QStringLiteral("Unknown"));
    QCOMPARE(error(), QString::fromUtf8("The preference pane “%1” is damaged: it has no class "
                                        "named “Unknown”.")
                          .replace(QStringLiteral("%1"), m_bundle));
    changeInformation(QStringLiteral("NSPrincipalClass"), QVariant());
    QVERIFY(error().endsWith(QString::fromUtf8("it has no class named “”.")));
}

void PreferencePaneLoaderTest::thePaneBesideABuildsProgramIsFoundFirst()
{
    const auto name = QStringLiteral("A.prefPane");
    const auto program = m_folder->filePath(QStringLiteral("build/Hosts/bin/program"));
    makeFolder(QFileInfo(program).path());
    QVERIFY(QFile::copy(m_program, program));
    const auto installed = m_folder->filePath(QStringLiteral("installed"));
    makeFolder(installed + QStringLiteral("/A.prefPane"));
    makeFolder(m_folder->filePath(QStringLiteral("build/A.prefPane")));
    QCOMPARE(findPreferencePane(name, program, installed),
             m_folder->filePath(QStringLiteral("build/A.prefPane")));
    makeFolder(m_folder->filePath(QStringLiteral("build/Hosts/bin/A.prefPane")));
    QCOMPARE(findPreferencePane(name, program, installed),
             m_folder->filePath(QStringLiteral("build/Hosts/bin/A.prefPane")));
    const auto link = m_folder->filePath(QStringLiteral("link"));
    QVERIFY(QFile::link(program, link));
    QCOMPARE(findPreferencePane(name, link, installed),
             m_folder->filePath(QStringLiteral("build/Hosts/bin/A.prefPane")));
}

void PreferencePaneLoaderTest::theInstalledPaneIsFoundWhereThereIsNoBuild()
{
    const auto name = QStringLiteral("A.prefPane");
    const auto installed = m_folder->filePath(QStringLiteral("installed"));
    QVERIFY(findPreferencePane(name, m_program, installed).isNull());
    makeFolder(installed + QStringLiteral("/A.prefPane"));
    QCOMPARE(findPreferencePane(name, m_program, installed),
             installed + QStringLiteral("/A.prefPane"));
    // A program that cannot be told: only the installed one counts, not one in the current folder.
    makeFolder(QStringLiteral("A.prefPane"));
    QCOMPARE(findPreferencePane(name, {}, installed), installed + QStringLiteral("/A.prefPane"));
    QVERIFY(findPreferencePane(name, QStringLiteral("/none/program"), QStringLiteral("/none"))
                .isNull());
    QVERIFY(QDir(QStringLiteral("A.prefPane")).removeRecursively());
    QVERIFY(findPreferencePane({}, m_program, installed).isNull());
}

void PreferencePaneLoaderTest::aFileIsNoPane()
{
    const auto installed = m_folder->filePath(QStringLiteral("installed"));
    makeFolder(installed);
    QVERIFY(QFile::copy(m_program, installed + QStringLiteral("/A.prefPane")));
    QVERIFY(QFile::copy(m_program, m_folder->filePath(QStringLiteral("A.prefPane"))));
    QVERIFY(findPreferencePane(QStringLiteral("A.prefPane"), m_program, installed).isNull());
}

TEST_CLASS(PreferencePaneLoaderTest, QCoreApplication)
#include "PreferencePaneLoaderTest.moc"
