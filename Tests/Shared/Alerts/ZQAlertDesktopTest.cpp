// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Bundles/UserDefaults.h"
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Shared/Alerts/ZQAlert.h"
#include "Tests/Support/AlertWatcher.h"
#include "Tests/Support/OnWorker.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QProcess>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <functional>

using platform::AlertPanel;
using Block = ZQAlert::Block;

// A real X server, with the mouse and the keyboard of xdotool.

namespace {

const auto headline = QStringLiteral("Are you sure?");
const auto cancel = QStringLiteral("Cancel");
const auto no = QStringLiteral("No");

void xdotool(const QStringList &arguments)
{
    // Started only: the alert must get its events meanwhile.
    if (!QProcess::startDetached(QStringLiteral("xdotool"), arguments)) {
        qFatal("xdotool is not there");
    }
}

void clickWithTheMouse(AlertPanel &alert, const char *name)
{
    auto *button = alert.findChild<QAbstractButton *>(QLatin1String(name));
    // A check box answers on its mark and text only, which are at its start.
    const auto at = button->mapToGlobal(QPoint(10, button->height() / 2));
    xdotool({QStringLiteral("mousemove"), QString::number(at.x()), QString::number(at.y()),
             QStringLiteral("click"), QStringLiteral("1")});
}

// Acts when the alert had time to come up, and again until it is gone: on a busy machine the window
// may not be there yet.
void keepDoing(AlertPanel &alert, std::function<void()> act)
{
    auto *timer = new QTimer(&alert);
    QObject::connect(timer, &QTimer::timeout, &alert, [timer, act = std::move(act)] {
        timer->setInterval(2000);
        act();
    });
    timer->start(300);
}

qint64 ask(QWidget *window, const QString &binding = {})
{
    return ZQAlert::alertSheetWithMessageText(headline, {}, cancel, no, {}, window, nullptr, {},
                                              Block::Yes, nullptr, binding);
}

} // namespace

class ZQAlertDesktopTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aClickOfTheMouseAnswers_data();
    void aClickOfTheMouseAnswers();
    void aKeyAnswers_data();
    void aKeyAnswers();
    void theParentGetsNoClicksMeanwhile();
    void theBoxIsTickedByMouse();
};

void ZQAlertDesktopTest::aClickOfTheMouseAnswers_data()
{
    QTest::addColumn<QByteArray>("button");
    QTest::addColumn<bool>("onWorker");
    QTest::addColumn<qint64>("code");
    QTest::newRow("default") << QByteArray("defaultButton") << false << qint64(1);
    QTest::newRow("alternate") << QByteArray("alternateButton") << false << qint64(0);
    QTest::newRow("other") << QByteArray("otherButton") << false << qint64(-1);
    QTest::newRow("worker") << QByteArray("otherButton") << true << qint64(-1);
}

void ZQAlertDesktopTest::aClickOfTheMouseAnswers()
{
    QFETCH(const QByteArray, button);
    QFETCH(const bool, onWorker);
    QFETCH(const qint64, code);
    QWidget window;
    window.setGeometry(100, 100, 600, 400);
    const test::AlertWatcher watcher([&](AlertPanel &alert) {
        keepDoing(alert, [&] { clickWithTheMouse(alert, button.constData()); });
    });
    QCOMPARE(onWorker ? test::onWorker([&] { return ask(&window); }) : ask(&window), code);
}

void ZQAlertDesktopTest::aKeyAnswers_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<qint64>("code");
    QTest::newRow("Return") << QStringLiteral("Return") << qint64(1);
    QTest::newRow("space") << QStringLiteral("space") << qint64(1);
    QTest::newRow("Escape") << QStringLiteral("Escape") << qint64(0);
}

void ZQAlertDesktopTest::aKeyAnswers()
{
    QFETCH(const QString, key);
    QFETCH(const qint64, code);
    QWidget window;
    window.setGeometry(100, 100, 600, 400);
    const test::AlertWatcher watcher([&](AlertPanel &alert) {
        keepDoing(alert, [&] { xdotool({QStringLiteral("key"), key}); });
    });
    QCOMPARE(ask(&window), code);
}

void ZQAlertDesktopTest::theParentGetsNoClicksMeanwhile()
{
    QWidget window;
    window.setGeometry(100, 100, 900, 700);
    bool pressed = false;
    auto *button = new QPushButton(&window);
    button->setGeometry(0, 0, 60, 40);
    connect(button, &QPushButton::clicked, this, [&] { pressed = true; });
    int turns = 0;
    const test::AlertWatcher watcher([&](AlertPanel &alert) {
        keepDoing(alert, [&] {
            if (++turns > 2) {
                clickWithTheMouse(alert, "defaultButton");
                return;
            }
            const auto at = button->mapToGlobal(QPoint(30, 20));
            xdotool({QStringLiteral("mousemove"), QString::number(at.x()), QString::number(at.y()),
                     QStringLiteral("click"), QStringLiteral("1")});
        });
    });
    QCOMPARE(ask(&window), qint64(1));
    QVERIFY(!pressed);
}

void ZQAlertDesktopTest::theBoxIsTickedByMouse()
{
    QWidget window;
    window.setGeometry(100, 100, 600, 400);
    const auto stored = [] {
        const auto file = platform::UserDefaults::standardUserDefaults().filePath();
        return platform::dictionaryFromFile(file).value_or(QVariantMap());
    };
    const test::AlertWatcher watcher([&](AlertPanel &alert) {
        keepDoing(alert, [&] {
            clickWithTheMouse(alert, stored().isEmpty() ? "suppressionButton" : "alternateButton");
        });
    });
    QCOMPARE(ask(&window, QStringLiteral("suppress")), qint64(0));
    QCOMPARE(stored(), QVariantMap({{QStringLiteral("suppress"), true}}));
}

TEST_CLASS(ZQAlertDesktopTest, QApplication)
#include "ZQAlertDesktopTest.moc"
