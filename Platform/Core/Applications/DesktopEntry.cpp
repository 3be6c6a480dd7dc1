// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Applications/DesktopEntry.h"

#include "Platform/Core/Text/PathText.h"

#include <QHash>
#include <QStandardPaths>

#include <algorithm>

namespace platform {
namespace {

using Keys = QHash<QByteArray, QByteArray>; // with their locales, and their values as written

// The keys of the group "[Desktop Entry]"; nothing where there is no such group.
std::optional<Keys> keysOfEntry(const QByteArray &data)
{
    Keys keys;
    bool isFound = false;
    bool isInside = false;
    for (const auto &untrimmed : data.split('\n')) {
        const auto line = untrimmed.trimmed();
        if (line.startsWith('[')) {
            isInside = line == "[Desktop Entry]";
            isFound = isFound || isInside;
            continue;
        }
        const auto equals = line.indexOf('=');
        if (isInside && equals > 0 && !line.startsWith('#')) {
            keys.insert(line.left(equals).trimmed(), line.mid(equals + 1).trimmed());
        }
    }
    return isFound ? std::optional(keys) : std::nullopt;
}

// The parts of a value, which a semicolon ends where it is a list; a text is one part. An unknown
// escape stands for itself.
QStringList parts(const QByteArray &value, bool isList)
{
    static const QByteArray escapes("sntr\\;");
    static const QByteArray meanings(" \n\t\r\\;");
    QStringList all;
    QByteArray part;
    for (auto i = 0; i < value.size(); ++i) {
        const auto letter = value.at(i);
        if (letter == '\\' && i + 1 < value.size()) {
            const auto next = value.at(++i);
            const auto known = next == ';' && !isList ? -1 : escapes.indexOf(next);
            part += known < 0 ? QByteArray("\\") + next : QByteArray(1, meanings.at(known));
        } else if (letter == ';' && isList) {
            all << QString::fromUtf8(part);
            part.clear();
        } else {
            part += letter;
        }
    }
    if (!part.isEmpty()) {
        all << QString::fromUtf8(part);
    }
    return all;
}

QString text(const QByteArray &value)
{
    const auto all = parts(value, false);
    return all.isEmpty() ? QString() : all.constFirst();
}

bool booleanValue(const QByteArray &value)
{
    return value == "true" || value == "1"; // "1" is what old entries have
}

// The value in the first locale that has one.
QByteArray localised(const Keys &keys, const QByteArray &key, const QByteArrayList &locales)
{
    for (const auto &locale : locales) {
        auto value = keys.value(key + '[' + locale + ']');
        if (!value.isEmpty()) {
            return value;
        }
    }
    return keys.value(key);
}

// The words of a command line, of which double quotes join several.
QStringList words(const QString &command)
{
    QStringList all;
    QString word;
    bool isQuoted = false;
    bool isWord = false;
    for (auto i = 0; i < command.size(); ++i) {
        const auto letter = command.at(i);
        if (letter == QLatin1Char('"')) {
            isQuoted = !isQuoted;
            isWord = true;
        } else if (letter == QLatin1Char('\\') && isQuoted && i + 1 < command.size()) {
            word += command.at(++i);
        } else if (letter == QLatin1Char(' ') && !isQuoted) {
            if (isWord) {
                all << word;
            }
            word.clear();
            isWord = false;
        } else {
            word += letter;
            isWord = true;
        }
    }
    return isWord ? all << word : all;
}

} // namespace

bool DesktopEntry::isShownIn(const QStringList &desktops) const
{
    for (const auto &desktop : desktops) {
        if (onlyShowIn && onlyShowIn->contains(desktop)) {
            return true;
        }
        if (notShowIn.contains(desktop)) {
            return false;
        }
    }
    return !onlyShowIn;
}

QString DesktopEntry::program() const
{
    const auto all = words(exec);
    const auto word = std::find_if(all.begin(), all.end(), [](const QString &each) {
        return lastPathComponent(each) != QLatin1String("env") && !each.contains(QLatin1Char('='));
    });
    return word == all.end() ? QString() : lastPathComponent(*word);
}

bool DesktopEntry::isInstalled() const
{
    return tryExec.isEmpty() || !QStandardPaths::findExecutable(tryExec).isEmpty();
}

std::optional<DesktopEntry> desktopEntryFromData(const QByteArray &data,
                                                 const QByteArrayList &locales)
{
    const auto found = keysOfEntry(data);
    if (!found || found->value("Type") != "Application") {
        return std::nullopt;
    }
    const auto &keys = *found;
    DesktopEntry entry;
    entry.name = text(localised(keys, "Name", locales));
    entry.genericName = text(localised(keys, "GenericName", locales));
    entry.comment = text(localised(keys, "Comment", locales));
    entry.keywords = parts(localised(keys, "Keywords", locales), true);
    entry.icon = text(localised(keys, "Icon", locales));
    entry.exec = text(keys.value("Exec"));
    entry.tryExec = text(keys.value("TryExec"));
    entry.noDisplay = booleanValue(keys.value("NoDisplay"));
    entry.hidden = booleanValue(keys.value("Hidden"));
    if (keys.contains("OnlyShowIn")) {
        entry.onlyShowIn = parts(keys.value("OnlyShowIn"), true);
    }
    entry.notShowIn = parts(keys.value("NotShowIn"), true);
    return entry;
}

} // namespace platform
