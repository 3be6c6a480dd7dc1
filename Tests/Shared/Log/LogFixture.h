// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

namespace test {

// The log folders, by the letter.
QString userLogFolder();
QString localLogFolder();

// "<folder>/<name>.<number>.log"; without a name that of the running test.
QString generation(int number, const QString &name = {}, const QString &folder = userLogFolder());

// Empties both libraries. The log keeps the file that it has open.
void clearLibraries();

QByteArray contents(const QString &path);
void write(const QString &path, const QByteArray &contents);

// The texts of a log's lines, whose dates are checked; a line of another form stands as "BAD: ...".
QStringList entries(const QString &path);

// How many lines of a new log are its header.
int headerSize(const QStringList &entries);

// The entries after the header.
QStringList body(const QString &path);

struct Run {
    QStringList output;
    int exitCode = -1;
    bool crashed = false;
};

// Runs the program LogProgram, which carries out commands on a log of its own.
Run runLogProgram(const QStringList &commands, const QString &program = {});
QString logProgram();

} // namespace test
