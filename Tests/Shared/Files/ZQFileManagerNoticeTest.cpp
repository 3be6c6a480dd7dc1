// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Files/ZQFileManager.h"
#include "Tests/Support/FileTree.h"
#include "Tests/Support/OnWorker.h"
#include "Tests/Support/TestProgram.h"

#include <QDBusConnection>
#include <QTest>

#include <unistd.h>

using test::text;

// Tells what file managers hear.
class Listener : public QObject {
    Q_OBJECT
public:
    QStringList urls;
    int notices = 0;

public Q_SLOTS:
    void filesChanged(const QStringList &changed)
    {
        ++notices;
        urls += changed;
    }
};

class ZQFileManagerNoticeTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void eachCallSendsOneNoticeWithTheItemsUrl();
    void aNameOfAnyBytesIsEncoded();
    void anyThreadMaySend();
    void nothingIsSentForWhatDoesNotExist();
    void aReferenceThatLeadsNowhereIsAnErrorAndSendsNothing();

private:
    std::unique_ptr<Listener> m_listener;
};

void ZQFileManagerNoticeTest::init()
{
    m_listener = std::make_unique<Listener>();
    // A connection of its own, as another program has.
    auto bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("other"));
    QVERIFY(bus.connect(QString(), QStringLiteral("/"), QStringLiteral("org.kde.KDirNotify"),
                        QStringLiteral("FilesChanged"), m_listener.get(),
                        SLOT(filesChanged(QStringList))));
}

void ZQFileManagerNoticeTest::cleanup()
{
    m_listener.reset();
    QDBusConnection::disconnectFromBus(QStringLiteral("other"));
}

void ZQFileManagerNoticeTest::eachCallSendsOneNoticeWithTheItemsUrl()
{
    const test::Folder folder;
    test::writeFile(folder / "file");
    const auto url = QStringLiteral("file://") + text(folder / "file");
    ZQFileManager::notifyFileSystemChanged(text(folder / "file"));
    QTRY_COMPARE_WITH_TIMEOUT(m_listener->urls, QStringList(url), 60000);
    ZQFileManager::notifyFileSystemChanged(text(folder / "file"));
    ZQFileManager::notifyFileSystemChanged(text(folder.path()));
    QTRY_COMPARE_WITH_TIMEOUT(m_listener->notices, 3, 60000);
    QCOMPARE(m_listener->urls.last(), QStringLiteral("file://") + text(folder.path()));
}

void ZQFileManagerNoticeTest::aNameOfAnyBytesIsEncoded()
{
    const test::Folder folder;
    test::writeFile(folder / "a %\n\xFF\xC3\xA4#?");
    ZQFileManager::notifyFileSystemChanged(text(folder / "a %\n\xFF\xC3\xA4#?"));
    QTRY_COMPARE_WITH_TIMEOUT(m_listener->urls.size(), 1, 60000);
    QCOMPARE(m_listener->urls.first(), QStringLiteral("file://") + text(folder.path()) +
                                           QStringLiteral("/a%20%25%0A%FF%C3%A4%23%3F"));
}

void ZQFileManagerNoticeTest::anyThreadMaySend()
{
    QVERIFY(test::onWorker([] {
        ZQFileManager::notifyFileSystemChanged(QStringLiteral("/tmp"));
        return true;
    }));
    QTRY_COMPARE_WITH_TIMEOUT(m_listener->urls, QStringList(QStringLiteral("file:///tmp")), 60000);
}

void ZQFileManagerNoticeTest::nothingIsSentForWhatDoesNotExist()
{
    ZQFileManager::notifyFileSystemChanged(QStringLiteral("/tmp/missing"));
    ZQFileManager::notifyFileSystemChanged(QString());
    // What is sent after it comes after it.
    ZQFileManager::notifyFileSystemChanged(QStringLiteral("/"));
    QTRY_COMPARE_WITH_TIMEOUT(m_listener->urls, QStringList(QStringLiteral("file:///")), 60000);
}

void ZQFileManagerNoticeTest::aReferenceThatLeadsNowhereIsAnErrorAndSendsNothing()
{
    const test::Folder folder;
    test::writeFile(folder / "file");
    const auto reference = ZQFileManager::stringToFSRef(text(folder / "file"));
    QVERIFY(reference.has_value());
    QCOMPARE(SendFinderSyncEvent(*reference), 0);
    QTRY_COMPARE_WITH_TIMEOUT(m_listener->notices, 1, 60000);
    ::unlink((folder / "file").c_str());
    QCOMPARE(SendFinderSyncEvent(*reference), ENOENT);
    test::writeFile(folder / "other");
    ZQFileManager::notifyFileSystemChanged(text(folder / "other"));
    QTRY_COMPARE_WITH_TIMEOUT(m_listener->notices, 2, 60000);
    QVERIFY(m_listener->urls.last().endsWith(QStringLiteral("/other")));
}

TEST_CLASS(ZQFileManagerNoticeTest, QCoreApplication)
#include "ZQFileManagerNoticeTest.moc"
