// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

#include <string>
#include <vector>

namespace test {

// Makes a folder with that many small files in folders of 50, all of different sizes, modes and
// times, some with an extended attribute where the file system has such.
void makeManyFiles(const std::string &path, int files);

// What test::tree() does not tell of the items of a tree: times to the nanosecond, extended
// attributes, owners, numbers of hard links, folders' times included. Sorted.
QStringList attributes(const std::string &path);

// Whether "diff -r" finds no difference.
bool isSameByDiff(const std::string &path, const std::string &other);

// Names in many scripts.
const std::vector<std::string> &namesInEveryScript();

} // namespace test
