// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/PropertyLists/DamagedPropertyList.h"

#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Tests/Support/TestProgram.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class DamagedPropertyListTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void aDamagedFileIsKeptBesideAndStays();
    void aNewerDamagedFileTakesThePlaceOfAnOlder();
    void ofASymbolicLinkTheFileBehindItIsKept();
    void aReadableDictionaryAnEmptyAndAMissingFileLeaveNothing();

private:
    void write(const QByteArray &bytes) const;
    static QByteArray read(const QString &path);

    QTemporaryDir m_folder;
    QString m_path;
};

void DamagedPropertyListTest::init()
{
    m_path = m_folder.filePath(QStringLiteral("settings.plist"));
    QFile::remove(m_path);
    QFile::remove(m_path + QStringLiteral(".damaged"));
}

void DamagedPropertyListTest::write(const QByteArray &bytes) const
{
    QFile::remove(m_path);
    QFile file(m_path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

QByteArray DamagedPropertyListTest::read(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void DamagedPropertyListTest::aDamagedFileIsKeptBesideAndStays()
{
    write("no property list");
    QVERIFY(platform::keepDamagedPropertyList(m_path));
    QCOMPARE(read(m_path), QByteArray("no property list"));
    QCOMPARE(read(m_path + QStringLiteral(".damaged")), QByteArray("no property list"));
}

void DamagedPropertyListTest::aNewerDamagedFileTakesThePlaceOfAnOlder()
{
    write("old");
    QVERIFY(platform::keepDamagedPropertyList(m_path));
    write("new");
    QVERIFY(platform::keepDamagedPropertyList(m_path));
    QCOMPARE(read(m_path + QStringLiteral(".damaged")), QByteArray("new"));
}

void DamagedPropertyListTest::ofASymbolicLinkTheFileBehindItIsKept()
{
    const QString target = m_folder.filePath(QStringLiteral("target.plist"));
    QVERIFY(QFile::link(target, m_path));
    QFile file(target);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("damaged");
    file.close();
    QVERIFY(platform::keepDamagedPropertyList(m_path));
    QVERIFY(platform::writeDictionaryToFile({}, m_path));
    QVERIFY(platform::dictionaryFromFile(target));
    QCOMPARE(read(m_path + QStringLiteral(".damaged")), QByteArray("damaged"));
}

void DamagedPropertyListTest::aReadableDictionaryAnEmptyAndAMissingFileLeaveNothing()
{
    QVERIFY(platform::keepDamagedPropertyList(m_path));
    write("");
    QVERIFY(platform::keepDamagedPropertyList(m_path));
    write("<plist version=\"1.0\"><dict><key>a</key><integer>1</integer></dict></plist>");
    QVERIFY(platform::keepDamagedPropertyList(m_path));
    QVERIFY(!QFile::exists(m_path + QStringLiteral(".damaged")));
}

TEST_CLASS(DamagedPropertyListTest, QCoreApplication)
#include "DamagedPropertyListTest.moc"
