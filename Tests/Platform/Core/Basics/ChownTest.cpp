// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Tests/Support/TestProgram.h"

#include <QProcess>
#include <QTest>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <vector>

// Our own command for systems that have none under the path; here without a group "wheel", and with
// nobody's number but root's.
namespace {

int chown(const QList<QByteArray> &arguments)
{
    std::vector<const char *> words{CHOWN};
    for (const auto &argument : arguments) {
        words.push_back(argument.constData());
    }
    words.push_back(nullptr);
    const auto child = ::fork();
    if (child == 0) {
        ::execv(CHOWN, const_cast<char *const *>(words.data())); // NOLINT(*-const-cast)
        ::_exit(127);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WEXITSTATUS(status);
}

bool makeFile(const QByteArray &path)
{
    const int file = ::open(path.constData(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644);
    return file >= 0 && ::close(file) == 0;
}

} // namespace

class ChownTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void groupWheelIsGroupZeroWhereThereIsNone();
    void otherGroupsThatDoNotExistStayAnError();
    void theOwnerIsFoundBehindOptions();
    void aReferenceMeansThatEveryArgumentIsAFile();
    void theValueOfFromHasAGroupToo();
    void namesOfAnyBytesPassThrough();
    void theExitStatusAndMessagesAreTheSystems();
};

void ChownTest::init()
{
    QCOMPARE(::chdir("/tmp"), 0);
    QVERIFY(makeFile("file"));
}

void ChownTest::groupWheelIsGroupZeroWhereThereIsNone()
{
    QCOMPARE(chown({"root:wheel", "/tmp/file"}), 0);
    QCOMPARE(chown({":wheel", "/tmp/file"}), 0);
}

void ChownTest::otherGroupsThatDoNotExistStayAnError()
{
    QCOMPARE(chown({"root:wheels", "/tmp/file"}), 1);
    QCOMPARE(chown({"root:nobody-has-this", "/tmp/file"}), 1);
    QCOMPARE(chown({"wheel", "/tmp/file"}), 1);
}

void ChownTest::theOwnerIsFoundBehindOptions()
{
    QVERIFY(makeFile("-file"));
    QCOMPARE(chown({"-R", "-h", "root:wheel", "/tmp/file"}), 0);
    QCOMPARE(chown({"--verbose", "--", "root:wheel", "-file"}), 0);
    QCOMPARE(chown({"root:wheel", "-R", "/tmp/file"}), 0);
}

void ChownTest::aReferenceMeansThatEveryArgumentIsAFile()
{
    QVERIFY(makeFile("file:wheel"));
    QCOMPARE(chown({"--reference=/tmp/file", "file:wheel"}), 0);
    QCOMPARE(chown({"--ref", "/tmp/file", "file:wheel"}), 0);
    QCOMPARE(::unlink("file:wheel"), 0);
    QCOMPARE(chown({"--reference=/tmp/file", "file:wheel"}), 1);
}

void ChownTest::theValueOfFromHasAGroupToo()
{
    QCOMPARE(chown({"--from=root:wheel", "root:wheel", "/tmp/file"}), 0);
    QCOMPARE(chown({"--from", "root:wheel", "root:wheel", "/tmp/file"}), 0);
    QCOMPARE(chown({"--fr", ":wheel", "root:wheel", "/tmp/file"}), 0);
}

void ChownTest::namesOfAnyBytesPassThrough()
{
    for (const QByteArray name : {"not \xFF\xFE UTF-8", "two\nlines", "100%s", " ", "a'\"b"}) {
        QVERIFY(makeFile(name));
        QCOMPARE(chown({"root:wheel", name}), 0);
        QCOMPARE(::unlink(name.constData()), 0);
        QCOMPARE(chown({"root:wheel", name}), 1);
    }
}

void ChownTest::theExitStatusAndMessagesAreTheSystems()
{
    const auto output = [](const QString &program) {
        QProcess process;
        process.start(program, {QStringLiteral("root:root"), QStringLiteral("/tmp/missing")});
        process.waitForFinished();
        return QByteArray::number(process.exitCode()) + process.readAllStandardError();
    };
    auto ours = output(QStringLiteral(CHOWN));
    QCOMPARE(ours.replace(CHOWN, "/usr/bin/chown"), output(QStringLiteral("/usr/bin/chown")));
    QCOMPARE(chown({}), 1);
    QCOMPARE(chown({"--help"}), 0);
}

TEST_CLASS(ChownTest, QCoreApplication)
#include "ChownTest.moc"
