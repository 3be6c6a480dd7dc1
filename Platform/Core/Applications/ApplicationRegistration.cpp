// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Applications/ApplicationRegistration.h"

#include "Platform/Core/Bundles/Bundle.h"
#include "Platform/Core/Files/ExecutableFile.h"
#include "Platform/Core/Files/FileContents.h"
#include "Platform/Core/Files/FileStatus.h"
#include "Platform/Core/Folders/StandardFolders.h"
#include "Platform/Core/Text/FileName.h"
#include "Platform/Core/Text/PathText.h"
#include "Platform/Core/Trees/CreateFolder.h"

#include <array>

namespace platform {
namespace {

constexpr qint64 maxEntrySize = qint64{1} << 20U;

// "applications" of the user's data folder, where the desktop looks first.
QString entryFolder()
{
    const auto data = fileNameFromBytes(qgetenv("XDG_DATA_HOME"));
    const auto folder =
        data.startsWith(u'/')
            ? data
            : appendingPathComponent(homeDirectory(), QStringLiteral(".local/share"));
    return appendingPathComponent(folder, QStringLiteral("applications"));
}

// Only what a file's name and the desktop's identifiers may have.
QString entryName(const QString &identifier)
{
    auto name = identifier;
    for (auto &character : name) {
        const auto isPlain = character.unicode() < 0x80U && character.isLetterOrNumber();
        if (!isPlain && !QStringLiteral("._-").contains(character)) {
            character = u'_';
        }
    }
    while (name.startsWith(u'.')) {
        name.remove(0, 1);
    }
    return name + QStringLiteral(".desktop");
}

// A value of one line.
QByteArray escaped(QByteArray value)
{
    value.replace('\\', "\\\\").replace('\n', "\\n").replace('\r', "\\r").replace('\t', "\\t");
    return value;
}

// A word of a command line: quoted, then escaped as any value is.
QByteArray commandWord(const QString &path)
{
    QByteArray word = "\"";
    for (const auto byte : fileNameBytes(path)) {
        if (QByteArray("\"\\`$").contains(byte)) {
            word += '\\';
        }
        word += byte == '%' ? QByteArray("%%") : QByteArray(1, byte);
    }
    return escaped(word + '"');
}

QString iconOf(const Bundle &bundle, const QVariantMap &information)
{
    const auto name = information.value(QStringLiteral("CFBundleIconFile")).toString();
    if (name.isEmpty() || name.contains(u'/')) {
        return {};
    }
    // As it is named, or as one of the kinds that the desktop can show.
    for (const auto *kind : std::array{"", "svg", "png"}) {
        auto path = bundle.pathForResource(name, QLatin1String(kind));
        if (path.endsWith(QStringLiteral(".svg")) || path.endsWith(QStringLiteral(".png"))) {
            return path;
        }
    }
    return {};
}

FileError write(const QString &name, const QByteArray &entry)
{
    const auto folder = entryFolder();
    if (auto error = createFolder(folder)) {
        return error;
    }
    const auto path = appendingPathComponent(folder, name);
    return replaceFile(path, entry) ? FileError() : FileError(EIO, path);
}

FileError registerPackage(const QString &path)
{
    const Bundle bundle(path);
    const auto information = bundle.infoDictionary();
    const auto program = bundle.executablePath();
    if (information.isEmpty() || !isExecutableFile(program)) {
        return {EINVAL, path};
    }
    const auto text = [&](const char *key) {
        return information.value(QLatin1String(key)).toString();
    };
    auto name = text("CFBundleDisplayName");
    name = name.isEmpty() ? text("CFBundleName") : name;
    name = name.isEmpty() ? lastPathComponent(deletingPathExtension(path)) : name;
    auto identifier = text("CFBundleIdentifier");
    identifier = identifier.isEmpty() ? name : identifier;

    QByteArray entry = "[Desktop Entry]\nType=Application\nVersion=1.5\nName=";
    entry += escaped(name.toUtf8()) + "\nTryExec=" + escaped(fileNameBytes(program)) +
             "\nExec=" + commandWord(program) + " %F\n";
    if (const auto icon = iconOf(bundle, information); !icon.isNull()) {
        entry += "Icon=" + escaped(fileNameBytes(icon)) + '\n';
    }
    return write(entryName(identifier), entry);
}

} // namespace

FileError registerApplication(const QString &path)
{
    const auto whole = absolutePath(path);
    if (!fileExists(whole)) {
        return {ENOENT, path};
    }
    const auto kind = pathExtension(whole).toLower();
    if (kind == QStringLiteral("app") && isFolder(whole)) {
        return registerPackage(whole);
    }
    if (kind != QStringLiteral("desktop")) {
        return {EINVAL, path};
    }
    const auto entry = contentsOfFile(whole, maxEntrySize);
    if (!entry || !entry->contains("[Desktop Entry]")) {
        return {EINVAL, path};
    }
    if (deletingLastPathComponent(whole) == entryFolder()) {
        return {};
    }
    return write(lastPathComponent(whole), *entry);
}

} // namespace platform
