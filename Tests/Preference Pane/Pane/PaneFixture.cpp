// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Tests/Preference Pane/Pane/PaneFixture.h"

#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Shared/Basics/ZQLocalPaths.h"

#include <QDir>
#include <QFile>
#include <QLabel>
#include <QTest>

PaneFixture::PaneFixture(std::chrono::milliseconds second)
{
    Ostrel_Preference_Pane::setLengthOfSecond(second);
    QDir(preferencesFolder()).removeRecursively();
    QDir().mkpath(preferencesFolder());
    removeJob();
    setInfo({{QStringLiteral("CFBundleVersion"), QStringLiteral("7")},
             {QStringLiteral("CFBundleShortVersionString"), QStringLiteral("3.1")}});
}

PaneFixture::~PaneFixture()
{
    close();
    for (auto &process : m_processes) {
        process->kill();
        process->waitForFinished();
    }
}

void PaneFixture::setInfo(const QVariantMap &info)
{
    QDir(m_folder.path()).mkpath(QStringLiteral("Ostrel.prefPane/Contents"));
    QVERIFY(platform::writeDictionaryToFile(
        info, m_folder.filePath(QStringLiteral("Ostrel.prefPane/Contents/Info.plist"))));
}

void PaneFixture::installJob()
{
    const QString path = Ostrel_Preference_Pane::jobFilePath();
    QDir().mkpath(QFileInfo(path).path());
    QVERIFY(
        platform::writeDictionaryToFile({{QStringLiteral("Label"), QStringLiteral("x")}}, path));
}

void PaneFixture::removeJob()
{
    QFile::remove(Ostrel_Preference_Pane::jobFilePath());
}

void PaneFixture::runProcess(const QString &name)
{
    const QString executable = m_folder.filePath(name);
    QFile::copy(QStringLiteral("/usr/bin/sleep"), executable);
    auto process = std::make_unique<QProcess>();
    process->start(executable, {QStringLiteral("600")});
    QVERIFY(process->waitForStarted());
    m_processes.push_back(std::move(process));
}

void PaneFixture::writePreferences(const QVariantMap &preferences)
{
    QVERIFY(platform::writeDictionaryToFile(preferences, preferencesPath()));
}

void PaneFixture::writePreferencesBytes(const QByteArray &bytes)
{
    QFile file(preferencesPath());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

QVariantMap PaneFixture::preferences()
{
    return platform::dictionaryFromFile(preferencesPath()).value_or(QVariantMap());
}

QString PaneFixture::preferencesFolder()
{
    return ZQLocalPaths::prefsDirectory(Domain::User);
}

QString PaneFixture::preferencesPath()
{
    return preferencesFolder() + QStringLiteral("/com.corvane.OstrelListener.plist");
}

void PaneFixture::open()
{
    m_window = std::make_unique<QMainWindow>();
    m_pane = std::make_unique<Ostrel_Preference_Pane>(
        platform::Bundle(m_folder.filePath(QStringLiteral("Ostrel.prefPane"))));
    m_window->setCentralWidget(m_pane->loadMainView(m_window.get()));
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
}

void PaneFixture::close()
{
    m_pane.reset();
    m_window.reset();
}

void PaneFixture::waitUntilLoaded() const
{
    QTRY_VERIFY_WITH_TIMEOUT(!m_pane->isLoading(), 30000);
}

void PaneFixture::waitUntilIdle() const
{
    QTRY_VERIFY_WITH_TIMEOUT(!m_pane->isProcessing() && masterSwitch().enabled(), 30000);
}

void PaneFixture::emitStatus(const QByteArray &word)
{
    emitUserInfo("{'status': <'" + word + "'>}");
}

void PaneFixture::emitUserInfo(const QByteArray &variantText)
{
    emitSignal(QStringLiteral("/com/corvane/DistributedNotifications"),
               QStringLiteral("com.corvane.DistributedNotifications.Posted"),
               QStringLiteral("ZQOstrelClientStatusUpdate"), variantText);
}

void PaneFixture::emitSignal(const QString &path, const QString &signal, const QString &name,
                             const QByteArray &variantText)
{
    QProcess gdbus;
    gdbus.start(QStringLiteral("gdbus"),
                {QStringLiteral("emit"), QStringLiteral("--session"),
                 QStringLiteral("--object-path"), path, QStringLiteral("--signal"), signal,
                 QLatin1Char('\'') + name + QLatin1Char('\''), QStringLiteral("''"),
                 QString::fromUtf8(variantText)});
    QVERIFY(gdbus.waitForFinished());
    QCOMPARE(gdbus.exitCode(), 0);
}

QString PaneFixture::status() const
{
    return control<QLabel>("statusLabel")->text();
}

QString PaneFixture::notice() const
{
    auto *label = control<QLabel>("noticeLabel");
    return label->isVisible() ? label->text() : QString();
}

void PaneFixture::showStatusOnly(const QString &word) const
{
    control<QLabel>("statusLabel")->setText(QStringLiteral("Status: ") + word);
}
