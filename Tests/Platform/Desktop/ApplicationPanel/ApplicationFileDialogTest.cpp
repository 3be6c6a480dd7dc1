// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Desktop/ApplicationPanel/ApplicationFileDialog.h"

#include "Tests/Platform/Desktop/ApplicationPanel/ApplicationPanelFixture.h"
#include "Tests/Support/AlertWatcher.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QListView>
#include <QTest>

using Opened = test::OpenedPanel;

class ApplicationFileDialogTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void anAppFolderIsChosenAmongTheFilesAsIfItWereAFile();
    void anAppFolderIsNotEntered();
    void aDesktopFileIsChosenAmongTheFiles();
    void otherFilesAreRefusedWithAReason();
    void foldersAreEnteredAndNoneIsMade();
    void cancellingTheFilesKeepsThePanel();
};

void ApplicationFileDialogTest::anAppFolderIsChosenAmongTheFilesAsIfItWereAFile()
{
    const test::DataFolders data;
    const test::Folder folder;
    test::makeApp(folder / "Player.app", "a.b");
    const Opened opened(test::text(folder.path()));
    opened.button("browseButton")->click();
    auto *files = opened.files();
    QVERIFY(files->isVisible());
    QCOMPARE(files->windowModality(), Qt::WindowModal);
    QCOMPARE(files->windowTitle(), QStringLiteral("Choose one"));
    auto *name = files->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
    name->setText(QStringLiteral("Player.app"));
    QTest::keyClick(name, Qt::Key_Return);
    QCOMPARE(opened.codes, QList<int>{1});
    QCOMPARE(opened.paths, QStringList{test::text(folder / "Player.app")});
    QVERIFY(opened.wasHidden);
}

void ApplicationFileDialogTest::anAppFolderIsNotEntered()
{
    const test::DataFolders data;
    const test::Folder folder;
    test::makeApp(folder / "Player.app", "a.b");
    Opened opened(test::text(folder.path()));
    opened.button("browseButton")->click();
    auto *view = opened.files()->findChild<QListView *>(QStringLiteral("listView"));
    QTRY_COMPARE(view->model()->rowCount(view->rootIndex()), 1);
    const auto row = view->visualRect(view->model()->index(0, 0, view->rootIndex()));
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, row.center());
    auto *buttons = opened.files()->findChild<QDialogButtonBox *>();
    QTRY_VERIFY(buttons->button(QDialogButtonBox::Open)->isEnabled());
    QCOMPARE(opened.files()->selectedFiles(), QStringList{test::text(folder / "Player.app")});
    QVERIFY(opened.codes.isEmpty());
    QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, row.center());
    QTRY_COMPARE(opened.codes, QList<int>{1});
    QCOMPARE(opened.paths, QStringList{test::text(folder / "Player.app")});
}

void ApplicationFileDialogTest::aDesktopFileIsChosenAmongTheFiles()
{
    const test::DataFolders data;
    const test::Folder folder;
    test::writeFile(folder / "player.desktop", test::entry("Player"));
    const Opened opened(test::text(folder.path()));
    opened.button("browseButton")->click();
    auto *name = opened.files()->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
    QTest::keyClicks(name, QStringLiteral("player.desktop"));
    QTest::keyClick(name, Qt::Key_Return);
    QCOMPARE(opened.codes, QList<int>{1});
    QCOMPARE(opened.paths, QStringList{test::text(folder / "player.desktop")});
}

void ApplicationFileDialogTest::otherFilesAreRefusedWithAReason()
{
    const test::DataFolders data;
    const test::Folder folder;
    test::writeFile(folder / "notes.txt");
    const Opened opened(test::text(folder.path()));
    opened.button("browseButton")->click();
    auto *name = opened.files()->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
    name->setText(QStringLiteral("notes.txt"));
    QTest::keyClick(name, Qt::Key_Return);
    auto *alert = test::visibleAlert();
    QVERIFY(alert != nullptr);
    QCOMPARE(alert->description().messageText,
             QStringLiteral("\"notes.txt\" is not an application"));
    test::click(*alert, "defaultButton");
    QVERIFY(opened.codes.isEmpty() && opened.files()->isVisible());
}

void ApplicationFileDialogTest::foldersAreEnteredAndNoneIsMade()
{
    const test::DataFolders data;
    const test::Folder folder;
    test::makeFolder(folder / "sub");
    const Opened opened(test::text(folder.path()));
    opened.button("browseButton")->click();
    QVERIFY(opened.files()->testOption(QFileDialog::ReadOnly));
    auto *name = opened.files()->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
    name->setText(QStringLiteral("sub"));
    QTest::keyClick(name, Qt::Key_Return);
    QCOMPARE(opened.files()->directory().absolutePath(), test::text(folder / "sub"));
    QVERIFY(opened.codes.isEmpty() && opened.files()->isVisible());
}

void ApplicationFileDialogTest::cancellingTheFilesKeepsThePanel()
{
    const test::DataFolders data;
    const Opened opened;
    opened.button("browseButton")->click();
    QTest::keyClick(opened.files(), Qt::Key_Escape);
    QTRY_VERIFY(opened.files() == nullptr);
    QVERIFY(opened.codes.isEmpty() && opened.panel.isVisible());
}

TEST_CLASS(ApplicationFileDialogTest, QApplication)
#include "ApplicationFileDialogTest.moc"
