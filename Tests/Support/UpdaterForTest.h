// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>
#include <QVariant>

namespace test {

// Updater applications whose executables note that they were run.
namespace updater {

// "/Applications/Corvane/Corvane Software Update.app".
QString installedPath();

// Makes one there, in place of what is there. An invalid version is none.
void make(const QString &path, const QVariant &version);
void remove(const QString &path);

// The runs since the last forget(), in order: the executable's path and then each argument in
// brackets. waitForRuns() gives them when there are that many, or after some seconds.
QStringList runs();
QStringList waitForRuns(int count);
void forget();

} // namespace updater
} // namespace test
