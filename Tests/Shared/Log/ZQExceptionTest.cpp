// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Log/ZQException.h"

#include "Shared/Log/ZQLog.h"
#include "Tests/Shared/Log/LogFixture.h"
#include "Tests/Support/StandardOutputCapture.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>

class ZQExceptionTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();

    void anExceptionIsReturnedLoggedAndPrinted_data();
    void anExceptionIsReturnedLoggedAndPrinted();
    void onlyThePortTimeoutIsATimeout();
};

namespace {

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

} // namespace

void ZQExceptionTest::init()
{
    ZQLog::finishWriting();
    test::clearLibraries();
    ZQLog::createNewLog();
}

void ZQExceptionTest::anExceptionIsReturnedLoggedAndPrinted_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("reason");
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QString>("returned");
    QTest::addColumn<QString>("printed");
    QTest::addColumn<QString>("logged");
    const auto method = QByteArray("-[Ostrel_Preference_Pane setupClient]");
    const auto plain = text("Exception in -[Ostrel_Preference_Pane setupClient]. Name - Reason.");
    QTest::newRow("plain") << text("Name") << text("Reason") << method << plain << plain << plain;
    const auto empty = text("Exception in (null). (null) - (null).");
    QTest::newRow("nothing") << QString() << QString() << QByteArray() << empty << empty << empty;
    QTest::newRow("percent signs")
        << text("%@") << text("100%%%%") << method
        << text("Exception in -[Ostrel_Preference_Pane setupClient]. %@ - 100%%%%.")
        << text("Exception in -[Ostrel_Preference_Pane setupClient]. (null) - 100%%.")
        << text("Exception in -[Ostrel_Preference_Pane setupClient]. (null) - 100%.");
}

void ZQExceptionTest::anExceptionIsReturnedLoggedAndPrinted()
{
    QFETCH(QString, name);
    QFETCH(QString, reason);
    QFETCH(QByteArray, method);
    QFETCH(QString, returned);
    QFETCH(QString, printed);
    QFETCH(QString, logged);
    QString result;
    const auto output = test::outputOf([&] {
        result = ZQException::logException(platform::Exception(name, reason),
                                           method.isNull() ? nullptr : method.constData());
    });
    QCOMPARE(result, returned);
    QCOMPARE(output, printed + QLatin1Char('\n'));
    ZQLog::finishWriting();
    QCOMPARE(test::body(test::generation(1)), QStringList(logged));
}

void ZQExceptionTest::onlyThePortTimeoutIsATimeout()
{
    const auto didTimeout = [](const QString &name) {
        return ZQException::didTimeout(platform::Exception(name, text("NSPortTimeoutException")));
    };
    QVERIFY(didTimeout(text("NSPortTimeoutException")));
    QVERIFY(!didTimeout(text("NSPortTimeoutException ")));
    QVERIFY(!didTimeout(text("nsporttimeoutexception")));
    QVERIFY(!didTimeout(text("")));
    QVERIFY(!didTimeout(QString()));
}

TEST_CLASS(ZQExceptionTest, QCoreApplication)
#include "ZQExceptionTest.moc"
