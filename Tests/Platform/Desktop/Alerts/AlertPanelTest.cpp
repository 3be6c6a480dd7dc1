// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Desktop/Alerts/AlertPanel.h"

#include "Platform/Desktop/Alerts/AlertText.h"
#include "Tests/Support/AlertWatcher.h"
#include "Tests/Support/TestProgram.h"

#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

using platform::AlertDescription;
using platform::AlertPanel;
using platform::AlertText;

namespace {

AlertDescription description(const QString &message, const QString &body = {})
{
    AlertDescription alert;
    alert.messageText = message;
    alert.informativeText = body;
    return alert;
}

AlertDescription threeButtons()
{
    auto alert = description(QStringLiteral("Headline"), QStringLiteral("Body."));
    alert.defaultButton = QStringLiteral("Save");
    alert.alternateButton = QStringLiteral("Cancel");
    alert.otherButton = QStringLiteral("Don't Save");
    return alert;
}

QList<qlonglong> codes(const QSignalSpy &answers)
{
    QList<qlonglong> all;
    for (const auto &answer : answers) {
        all << answer.constFirst().toLongLong();
    }
    return all;
}

AlertText *text(const AlertPanel &panel, const char *name)
{
    return panel.findChild<AlertText *>(QLatin1String(name));
}

} // namespace

class AlertPanelTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void withoutTitlesThereIsTheSystemsOkButtonOnly();
    void eachTitleMakesAButtonOfItsOwn();
    void aButtonWithoutATitleIsNotMade();
    void buttonsAnswerOneZeroAndMinusOne_data();
    void buttonsAnswerOneZeroAndMinusOne();
    void escAndTheCloseButtonAnswerForTheLeastHarmfulButton_data();
    void escAndTheCloseButtonAnswerForTheLeastHarmfulButton();
    void returnPressesTheDefaultButton();
    void anAlertIsAnsweredOnce();
    void anAlertThatIsOrderedOutIsNotAnswered();
    void theAnswerMayDeleteTheParent();
    void aSheetIsModalToItsParentsWindow();
    void anAlertWithoutParentIsNotModal();
    void aHiddenParentIsShown();
    void aMinimisedParentIsRestored();
    void closingAnAlertDoesNotQuitTheApplication();
    void textsArePlain();
    void anAmpersandInATitleIsShown();
    void aMillionCharactersStayOnTheScreen_data();
    void aMillionCharactersStayOnTheScreen();
    void aLongTextIsNotCutInsideACharacter();
    void aLongTextIsScrolledByKeyboard();
    void aShortTextIsNoStopForTheTabKey();
    void aLongWordIsBrokenInsteadOfCut();
    void oddCharactersAreSurvived();
    void withoutTextsItIsStillAnAlert();
    void theSuppressionBoxStandsBeforeTheButtons();
    void aScreenReaderIsToldAll();
    void textsFollowAChangeToDarkColours();
    void aLargerFontIsGivenItsRoom();
};

void AlertPanelTest::withoutTitlesThereIsTheSystemsOkButtonOnly()
{
    const AlertPanel panel(description(QStringLiteral("Headline")));
    const auto buttons = panel.findChildren<QPushButton *>();
    QCOMPARE(buttons.size(), 1);
    QCOMPARE(buttons.constFirst()->text().remove(QLatin1Char('&')), QStringLiteral("OK"));
    QVERIFY(buttons.constFirst()->isDefault());
}

void AlertPanelTest::eachTitleMakesAButtonOfItsOwn()
{
    const AlertPanel panel(threeButtons());
    QStringList titles;
    for (const auto *name : {"defaultButton", "alternateButton", "otherButton"}) {
        titles << panel.findChild<QPushButton *>(QLatin1String(name))->text();
    }
    QCOMPARE(titles, QStringList({QStringLiteral("Save"), QStringLiteral("Cancel"),
                                  QStringLiteral("Don't Save")}));
    QCOMPARE(panel.findChildren<QPushButton *>().size(), 3);
}

void AlertPanelTest::aButtonWithoutATitleIsNotMade()
{
    auto alert = threeButtons();
    alert.defaultButton = QStringLiteral("");
    alert.alternateButton = QStringLiteral("");
    alert.otherButton = QString();
    const AlertPanel panel(alert);
    QCOMPARE(panel.findChildren<QPushButton *>().size(), 1);
    QCOMPARE(alert.escapeReturn(), qint64(platform::AlertDefaultReturn));
}

void AlertPanelTest::buttonsAnswerOneZeroAndMinusOne_data()
{
    QTest::addColumn<QByteArray>("button");
    QTest::addColumn<qlonglong>("code");
    QTest::newRow("default") << QByteArray("defaultButton") << 1LL;
    QTest::newRow("alternate") << QByteArray("alternateButton") << 0LL;
    QTest::newRow("other") << QByteArray("otherButton") << -1LL;
}

void AlertPanelTest::buttonsAnswerOneZeroAndMinusOne()
{
    QFETCH(const QByteArray, button);
    QFETCH(const qlonglong, code);
    AlertPanel panel(threeButtons());
    const QSignalSpy answers(&panel, &AlertPanel::answered);
    panel.begin();
    test::click(panel, button.constData());
    QCOMPARE(codes(answers), {code});
    QVERIFY(panel.isHidden());
}

void AlertPanelTest::escAndTheCloseButtonAnswerForTheLeastHarmfulButton_data()
{
    QTest::addColumn<bool>("alternate");
    QTest::addColumn<bool>("other");
    QTest::addColumn<qlonglong>("code");
    QTest::newRow("default only") << false << false << 1LL;
    QTest::newRow("with alternate") << true << false << 0LL;
    QTest::newRow("with other") << false << true << -1LL;
    QTest::newRow("all three") << true << true << 0LL;
}

void AlertPanelTest::escAndTheCloseButtonAnswerForTheLeastHarmfulButton()
{
    QFETCH(const bool, alternate);
    QFETCH(const bool, other);
    QFETCH(const qlonglong, code);
    auto alert = threeButtons();
    if (!alternate) {
        alert.alternateButton = QString();
    }
    if (!other) {
        alert.otherButton = QString();
    }
    QCOMPARE(alert.escapeReturn(), code);

    AlertPanel escaped(alert);
    const QSignalSpy escapeAnswers(&escaped, &AlertPanel::answered);
    escaped.begin();
    QTest::keyClick(&escaped, Qt::Key_Escape);
    QCOMPARE(codes(escapeAnswers), {code});

    AlertPanel closed(alert);
    const QSignalSpy closeAnswers(&closed, &AlertPanel::answered);
    closed.begin();
    closed.close();
    QCOMPARE(codes(closeAnswers), {code});
}

void AlertPanelTest::returnPressesTheDefaultButton()
{
    AlertPanel panel(threeButtons());
    const QSignalSpy answers(&panel, &AlertPanel::answered);
    panel.begin();
    QVERIFY(QTest::qWaitForWindowActive(&panel));
    QCOMPARE(panel.focusWidget()->objectName(), QStringLiteral("defaultButton"));
    QTest::keyClick(panel.focusWidget(), Qt::Key_Return);
    QCOMPARE(codes(answers), {1LL});
}

void AlertPanelTest::anAlertIsAnsweredOnce()
{
    AlertPanel panel(threeButtons());
    const QSignalSpy answers(&panel, &AlertPanel::answered);
    panel.begin();
    panel.findChild<QPushButton *>(QStringLiteral("otherButton"))->click();
    panel.findChild<QPushButton *>(QStringLiteral("defaultButton"))->click();
    panel.reject();
    QCOMPARE(codes(answers), {-1LL});
}

void AlertPanelTest::anAlertThatIsOrderedOutIsNotAnswered()
{
    AlertPanel panel(threeButtons());
    const QSignalSpy answers(&panel, &AlertPanel::answered);
    const QSignalSpy finishes(&panel, &QDialog::finished);
    panel.begin();
    panel.orderOut();
    QVERIFY(panel.isHidden());
    panel.findChild<QPushButton *>(QStringLiteral("defaultButton"))->click();
    panel.close();
    QCOMPARE(answers.size(), 0);
    QCOMPARE(finishes.size(), 0);
}

void AlertPanelTest::theAnswerMayDeleteTheParent()
{
    auto *parent = new QWidget;
    const QPointer<AlertPanel> panel = new AlertPanel(threeButtons(), parent);
    connect(panel.data(), &AlertPanel::answered, parent, [parent] { delete parent; });
    panel->begin();
    test::click(*panel, "defaultButton");
    QVERIFY(panel.isNull());
}

void AlertPanelTest::aSheetIsModalToItsParentsWindow()
{
    QWidget window;
    auto *inside = new QWidget(&window);
    QWidget other;
    AlertPanel panel(threeButtons(), inside);
    other.show();
    panel.begin();
    QCOMPARE(panel.windowModality(), Qt::WindowModal);
    QCOMPARE(panel.parentWidget(), &window);
    QCOMPARE(QApplication::activeModalWidget(), &panel);
    QVERIFY(panel.isWindow());
}

void AlertPanelTest::anAlertWithoutParentIsNotModal()
{
    AlertPanel panel(threeButtons());
    panel.begin();
    QVERIFY(panel.isVisible());
    QVERIFY(!panel.isModal());
}

void AlertPanelTest::aHiddenParentIsShown()
{
    QWidget window;
    AlertPanel panel(threeButtons(), &window);
    panel.begin();
    QVERIFY(window.isVisible());
}

void AlertPanelTest::aMinimisedParentIsRestored()
{
    QWidget window;
    window.showMinimized();
    QVERIFY(window.isMinimized());
    AlertPanel panel(threeButtons(), &window);
    panel.begin();
    QVERIFY(!window.isMinimized());
}

void AlertPanelTest::closingAnAlertDoesNotQuitTheApplication()
{
    QVERIFY(QApplication::quitOnLastWindowClosed());
    AlertPanel panel(threeButtons());
    panel.begin();
    bool quit = true;
    QTimer::singleShot(50, &panel, [&] { panel.close(); });
    QTimer::singleShot(300, &panel, [&] {
        quit = false;
        QCoreApplication::exit();
    });
    QCoreApplication::exec();
    QVERIFY(!quit);
}

void AlertPanelTest::textsArePlain()
{
    const auto markup = QStringLiteral("<b>bold</b> &amp; <a href=\"file:///\">link</a>");
    const AlertPanel panel(description(markup, markup));
    QCOMPARE(text(panel, "messageText")->toPlainText(), markup);
    QCOMPARE(text(panel, "informativeText")->toPlainText(), markup);
}

void AlertPanelTest::anAmpersandInATitleIsShown()
{
    auto alert = threeButtons();
    alert.defaultButton = QStringLiteral("Save & Quit");
    const AlertPanel panel(alert);
    const auto *button = panel.findChild<QPushButton *>(QStringLiteral("defaultButton"));
    QCOMPARE(button->text(), QStringLiteral("Save && Quit"));
    QVERIFY(button->shortcut().isEmpty());
    auto *accessible = QAccessible::queryAccessibleInterface(panel.findChild<QPushButton *>());
    QCOMPARE(accessible->text(QAccessible::Name), QStringLiteral("Save & Quit"));
}

void AlertPanelTest::aMillionCharactersStayOnTheScreen_data()
{
    QTest::addColumn<QString>("piece");
    QTest::newRow("one word") << QStringLiteral("x");
    QTest::newRow("words") << QStringLiteral("word ");
    QTest::newRow("lines") << QStringLiteral("line\n");
    QTest::newRow("empty lines") << QStringLiteral("\n");
}

void AlertPanelTest::aMillionCharactersStayOnTheScreen()
{
    QFETCH(const QString, piece);
    const auto longText = piece.repeated(1000000 / static_cast<int>(piece.size()));
    AlertDescription alert;
    alert.messageText = longText;
    alert.informativeText = longText;
    alert.defaultButton = longText + QLatin1Char('x');
    alert.alternateButton = longText + QLatin1Char('x');
    alert.otherButton = longText + QLatin1Char('x');
    QWidget window;
    AlertPanel panel(alert, &window);
    panel.suppressionButton();
    panel.begin();
    QVERIFY(QTest::qWaitForWindowExposed(&panel));
    const auto room = panel.screen()->availableGeometry().size();
    QVERIFY2(panel.width() <= room.width(), qPrintable(QString::number(panel.width())));
    QVERIFY2(panel.height() <= room.height(), qPrintable(QString::number(panel.height())));
    const auto *body = text(panel, "informativeText");
    QVERIFY(body->verticalScrollBar()->maximum() > 0);
    QVERIFY(body->toPlainText().endsWith(QChar(0x2026)));
}

void AlertPanelTest::aLongTextIsNotCutInsideACharacter()
{
    const uint keyboard = 0x2328F;
    const auto pair = QString::fromUcs4(reinterpret_cast<const char32_t *>(&keyboard), 1);
    QCOMPARE(pair.size(), 2);
    const AlertPanel panel(description(QLatin1Char('x') + pair.repeated(600)));
    const auto shown = text(panel, "messageText")->toPlainText();
    QCOMPARE(shown, QLatin1Char('x') + pair.repeated(499) + QChar(0x2026));
}

void AlertPanelTest::aLongTextIsScrolledByKeyboard()
{
    AlertPanel panel(
        description(QStringLiteral("Headline"), QStringLiteral("line\n").repeated(500)));
    panel.begin();
    QVERIFY(QTest::qWaitForWindowActive(&panel));
    QTest::keyClick(panel.focusWidget(), Qt::Key_Tab);
    auto *body = text(panel, "informativeText");
    QVERIFY(body->hasFocus());
    QTest::keyClick(body, Qt::Key_PageDown);
    QVERIFY(body->verticalScrollBar()->value() > 0);

    const QSignalSpy answers(&panel, &AlertPanel::answered);
    QTest::keyClick(body, Qt::Key_Return);
    QCOMPARE(codes(answers), {1LL});
}

void AlertPanelTest::aShortTextIsNoStopForTheTabKey()
{
    AlertPanel panel(threeButtons());
    panel.begin();
    QVERIFY(QTest::qWaitForWindowActive(&panel));
    for (int i = 0; i < 6; ++i) {
        QVERIFY(qobject_cast<QPushButton *>(panel.focusWidget()) != nullptr);
        QTest::keyClick(panel.focusWidget(), Qt::Key_Tab);
    }
}

void AlertPanelTest::aLongWordIsBrokenInsteadOfCut()
{
    const AlertPanel panel(description(QStringLiteral("Headline"), QString(400, QLatin1Char('w'))));
    const auto *body = text(panel, "informativeText");
    QVERIFY(body->document()->size().width() <= body->width());
    QVERIFY(body->document()->size().height() <= body->height());
    QVERIFY(body->height() > 3 * body->fontMetrics().height());
}

void AlertPanelTest::oddCharactersAreSurvived()
{
    QString odd;
    for (const char16_t unit :
         {u'\x0000', u'\x0001', u'\x0008', u'\x001b', u'\x0085', u'\x202e', u'\x2028', u'\x2029',
          u'\xd800', u'\xfdd0', u'\xfdd1', u'\xfffc', u'\xffff', u'\xdc00', u'\xd800'}) {
        odd += QChar(unit);
    }
    auto alert = description(odd, odd);
    alert.defaultButton = odd;
    AlertPanel panel(alert);
    panel.begin();
    QVERIFY(!panel.grab().isNull());
}

void AlertPanelTest::withoutTextsItIsStillAnAlert()
{
    AlertPanel panel(AlertDescription{});
    panel.begin();
    QVERIFY(panel.isVisible());
    QCOMPARE(text(panel, "messageText")->toPlainText(), QString());
    QVERIFY(!text(panel, "informativeText")->isVisible());
}

void AlertPanelTest::theSuppressionBoxStandsBeforeTheButtons()
{
    AlertPanel panel(threeButtons());
    auto *box = panel.suppressionButton();
    QCOMPARE(panel.suppressionButton(), box);
    QCOMPARE(box->text(), QStringLiteral("Do not show this message again"));
    panel.begin();
    QVERIFY(QTest::qWaitForWindowActive(&panel));
    QCOMPARE(panel.focusWidget()->objectName(), QStringLiteral("defaultButton"));
    QTest::keyClick(panel.focusWidget(), Qt::Key_Backtab);
    QCOMPARE(panel.focusWidget(), box);
    const auto *button = panel.findChild<QPushButton *>(QStringLiteral("defaultButton"));
    QVERIFY(box->mapTo(&panel, QPoint()).y() < button->mapTo(&panel, QPoint()).y());
}

void AlertPanelTest::aScreenReaderIsToldAll()
{
    AlertPanel panel(threeButtons());
    auto *alert = QAccessible::queryAccessibleInterface(&panel);
    QCOMPARE(alert->role(), QAccessible::AlertMessage);
    QCOMPARE(alert->text(QAccessible::Name), QStringLiteral("Headline"));
    QCOMPARE(alert->text(QAccessible::Description), QStringLiteral("Body."));
    auto *body = QAccessible::queryAccessibleInterface(text(panel, "informativeText"));
    QCOMPARE(body->role(), QAccessible::StaticText);
}

void AlertPanelTest::textsFollowAChangeToDarkColours()
{
    AlertPanel panel(threeButtons());
    panel.begin();
    QPalette dark;
    dark.setColor(QPalette::Window, Qt::black);
    dark.setColor(QPalette::WindowText, Qt::yellow);
    dark.setColor(QPalette::Text, Qt::black); // dark text on light input fields
    panel.setPalette(dark);
    const auto colour = [&] { return text(panel, "messageText")->palette().color(QPalette::Text); };
    QCOMPARE(colour(), QColor(Qt::yellow));
    dark.setColor(QPalette::WindowText, Qt::white);
    panel.setPalette(dark);
    QCOMPARE(colour(), QColor(Qt::white));
}

void AlertPanelTest::aLargerFontIsGivenItsRoom()
{
    AlertPanel panel(threeButtons());
    const auto before = text(panel, "informativeText")->height();
    auto font = panel.font();
    font.setPointSize(3 * font.pointSize());
    panel.setFont(font);
    QVERIFY(text(panel, "informativeText")->height() > 2 * before);
}

TEST_CLASS(AlertPanelTest, QApplication)
#include "AlertPanelTest.moc"
