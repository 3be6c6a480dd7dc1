// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Applications/ApplicationIcon.h"

#include "Platform/Core/Applications/ApplicationBundle.h"

#include <QFileInfo>
#include <QImageReader>

#include <algorithm>
#include <array>

namespace platform {
namespace {

constexpr qint64 maxFileSize = qint64(16) * 1024 * 1024;
constexpr int maxSide = 4096;

constexpr std::array pictureEndings{".png", ".svg", ".svgz", ".xpm"};

// A small file may hold a picture that fills the memory, and reading from a pipe would never end.
QIcon iconInFile(const QString &path)
{
    const QFileInfo file(path);
    if (!file.isFile() || file.size() > maxFileSize) {
        return {};
    }
    const auto size = QImageReader(path).size();
    return size.isEmpty() || std::max(size.width(), size.height()) > maxSide ? QIcon()
                                                                             : QIcon(path);
}

// Names of theme icons have no extension, but many entries give one.
QString themeName(QString icon)
{
    const auto ends = [&](const char *ending) { return icon.endsWith(QLatin1String(ending)); };
    if (std::any_of(pictureEndings.begin(), pictureEndings.end(), ends)) {
        icon.truncate(icon.lastIndexOf(QLatin1Char('.')));
    }
    return icon;
}

QIcon iconOfTheme(const QString &icon)
{
    const auto name = themeName(icon);
    // The form with a fallback is the one that tells that there is no such icon.
    return name.isEmpty() || name.contains(QLatin1Char('/')) ? QIcon()
                                                             : QIcon::fromTheme(name, QIcon());
}

QIcon iconInResources(const QString &bundle, const QString &name)
{
    if (name.isEmpty() || name.contains(QLatin1Char('/'))) {
        return {};
    }
    const auto path = bundle + QLatin1String("/Contents/Resources/") + name;
    for (const auto *ending : {"", ".icns", ".png", ".svg", ".xpm"}) {
        auto icon = iconInFile(path + QLatin1String(ending));
        if (!icon.isNull()) {
            return icon;
        }
    }
    return {};
}

} // namespace

QIcon applicationIcon(const ApplicationBundle &application)
{
    const auto &icon = application.icon();
    if (application.isFolder()) {
        return iconInResources(application.path(), icon);
    }
    return icon.startsWith(QLatin1Char('/')) ? iconInFile(icon) : iconOfTheme(icon);
}

} // namespace platform
