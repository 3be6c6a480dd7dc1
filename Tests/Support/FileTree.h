// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <string>
#include <vector>

namespace test {

// A new empty folder that goes with the object, whatever is in it and whatever its mode.
class Folder {
public:
    explicit Folder(const std::string &where = "/tmp");
    ~Folder();
    Folder(const Folder &) = delete;
    Folder &operator=(const Folder &) = delete;

    const std::string &path() const { return m_path; }
    // Of an item in it.
    std::string operator/(const std::string &name) const { return m_path + '/' + name; }
    // The names in it, sorted.
    QStringList names() const;

private:
    std::string m_path;
};

// A path as text.
QString text(const std::string &path);

void writeFile(const std::string &path, const std::string &contents = "contents");
void makeFolder(const std::string &path);
void makeLink(const std::string &target, const std::string &path);
std::string readFile(const std::string &path);
bool exists(const std::string &path); // the item itself

// A line for the item at the path and for each below it, sorted: name, kind, mode, time of the last
// change and contents. "nothing" where there is none. The item's own name is left out.
QStringList tree(const std::string &path);

// Makes a folder with files, folders, links and unusual modes in it; the largest file has that many
// bytes.
void makeTree(const std::string &path, std::size_t largest = 300000);

// Names that are easily handled wrongly, each with a word that says why.
struct OddName {
    const char *why;
    std::string name;
};
const std::vector<OddName> &oddNames();

} // namespace test
