// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QCoreApplication>
#include <QTest>

// A program holds the test classes of a room and runs the one that its first argument names, in a
// process of its own: PROGRAM CLASS [OPTION of Qt Test ...]

namespace test {

// Makes a function run for "PROGRAM NAME ...", with the arguments behind the name.
class Entry {
public:
    using Run = int (*)(int argc, char **argv);
    Entry(const char *name, Run run) noexcept;

    static int runNamed(int argc, char **argv);

private:
    const char *m_name;
    Run m_run;
    const Entry *m_next;
};

struct NoApplication {
    NoApplication(int & /*argc*/, char ** /*argv*/) {}
};

template <class Test, class Application>
int runClass(int argc, char **argv)
{
    // Pictures and places are the same on every screen.
    QCoreApplication::setAttribute(Qt::AA_Use96Dpi);
    [[maybe_unused]] const Application application(argc, argv);
    Test test;
    return QTest::qExec(&test, argc, argv);
}

} // namespace test

// Once in the source of a test class: with a QApplication, a QCoreApplication or
// test::NoApplication ...
#define TEST_CLASS(Class, Application)                                                             \
    static const test::Entry entryOf##Class(#Class, &test::runClass<Class, Application>);
// ... or run by a function of its own.
#define TEST_FUNCTION(Class, function) static const test::Entry entryOf##Class(#Class, function);
