// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/ditto/Arguments.h"

#include "Platform/Core/Text/FileName.h"

#include <QStringList>

#include <algorithm>

const char *const usage =
    "usage: ditto -c -k [--keepParent] SOURCE ARCHIVE  make a zip archive of a file or folder\n"
    "       ditto -x -k ARCHIVE FOLDER                 unpack a zip archive into a folder\n"
    "       ditto --help\n"
    "\n"
    "The archive of a folder holds the folder's contents, or with --keepParent the folder "
    "itself.\n";

namespace {

constexpr QChar compress = u'c';
constexpr QChar extract = u'x';
constexpr QChar zip = u'k';
constexpr QChar help = u'h';
constexpr QChar keepParent = u'K';

QString usageError(const QString &options, const QStringList &paths)
{
    if (options.contains(compress) == options.contains(extract)) {
        return options.contains(compress) ? QStringLiteral("-c and -x cannot be used together")
                                          : QStringLiteral("-c or -x is needed");
    }
    if (!options.contains(zip)) {
        return QStringLiteral("only zip archives are supported (-k)");
    }
    if (options.contains(extract) && options.contains(keepParent)) {
        return QStringLiteral("--keepParent can only be used with -c");
    }
    if (paths.size() != 2) {
        return QStringLiteral("two paths are needed");
    }
    return paths.contains(QString()) ? QStringLiteral("a path is empty") : QString();
}

} // namespace

std::optional<Arguments> readArguments(int count, char **values, QString &reason)
{
    const auto letters = QStringLiteral("cxkh");
    QString options; // a letter for each that is given
    QStringList paths;
    auto optionsEnd = false;
    for (auto at = 1; at < count; ++at) {
        const auto word = platform::fileNameFromBytes(values[at]); // NOLINT(*-pointer-arithmetic)
        if (optionsEnd || word.size() < 2 || !word.startsWith(u'-')) {
            paths << word;
        } else if (word == QStringLiteral("--")) {
            optionsEnd = true;
        } else if (word == QStringLiteral("--help")) {
            options += help;
        } else if (word == QStringLiteral("--keepParent")) {
            options += keepParent;
        } else if (std::all_of(word.begin() + 1, word.end(),
                               [&](QChar letter) { return letters.contains(letter); })) {
            options += word.mid(1);
        } else {
            reason = QStringLiteral("unknown option \"%1\"").arg(word);
            return std::nullopt;
        }
    }
    if (options.contains(help)) {
        return Arguments();
    }
    reason = usageError(options, paths);
    if (!reason.isNull()) {
        return std::nullopt;
    }
    return Arguments{options.contains(compress) ? Task::Compress : Task::Extract,
                     options.contains(keepParent), paths.at(0), paths.at(1)};
}
