// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/ditto/Arguments.h"

#include "Platform/Core/Text/FileName.h"

#include <QStringList>

const char *const usage =
    "usage: ditto -c -k [--keepParent] SOURCE ARCHIVE  make a zip archive of a file or folder\n"
    "       ditto -x -k ARCHIVE FOLDER                 unpack a zip archive into a folder\n"
    "       ditto --help\n"
    "\n"
    "Of a folder the archive holds what is in it; with --keepParent, the folder itself.\n";

namespace {

struct Options {
    bool compress = false;
    bool extract = false;
    bool zip = false;
    bool keepParent = false;
    bool help = false;
};

bool readLetters(const QString &word, Options &options)
{
    for (const auto letter : word.mid(1)) {
        switch (letter.unicode()) {
        case u'c':
            options.compress = true;
            break;
        case u'x':
            options.extract = true;
            break;
        case u'k':
            options.zip = true;
            break;
        case u'h':
            options.help = true;
            break;
        default:
            return false;
        }
    }
    return true;
}

bool readOption(const QString &word, Options &options)
{
    if (!word.startsWith(QStringLiteral("--"))) {
        return readLetters(word, options);
    }
    if (word == QStringLiteral("--help")) {
        options.help = true;
    } else if (word == QStringLiteral("--keepParent")) {
        options.keepParent = true;
    } else {
        return false;
    }
    return true;
}

QString contradiction(const Options &options, const QStringList &paths)
{
    if (options.compress == options.extract) {
        return options.compress ? QStringLiteral("-c and -x exclude each other")
                                : QStringLiteral("one of -c and -x is needed");
    }
    if (!options.zip) {
        return QStringLiteral("only zip archives are known (-k)");
    }
    if (options.extract && options.keepParent) {
        return QStringLiteral("--keepParent is for -c only");
    }
    if (paths.size() != 2) {
        return QStringLiteral("two paths are needed");
    }
    return paths.contains(QString()) ? QStringLiteral("a path is empty") : QString();
}

} // namespace

std::optional<Arguments> readArguments(int count, char **values, QString &reason)
{
    Options options;
    QStringList paths;
    auto optionsEnd = false;
    for (auto at = 1; at < count; ++at) {
        const auto word = platform::fileNameFromBytes(values[at]); // NOLINT(*-pointer-arithmetic)
        if (optionsEnd || word.size() < 2 || !word.startsWith(u'-')) {
            paths << word;
        } else if (word == QStringLiteral("--")) {
            optionsEnd = true;
        } else if (!readOption(word, options)) {
            reason = QStringLiteral("unknown option \"%1\"").arg(word);
            return std::nullopt;
        }
    }
    if (options.help) {
        return Arguments();
    }
    reason = contradiction(options, paths);
    if (!reason.isNull()) {
        return std::nullopt;
    }
    return Arguments{options.compress ? Task::Compress : Task::Extract, options.keepParent,
                     paths.at(0), paths.at(1)};
}
