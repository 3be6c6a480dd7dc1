// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/FinderInfo.h"
#include "Platform/Core/Text/PathText.h"
#include "Shared/Files/ZQFileManagerDesktop.h"

#include <array>

namespace {

// Where the Finder flags have the colour.
constexpr std::uint16_t colourBits = 0x000E;

} // namespace

std::uint16_t ZQFileManagerDesktop::finderColorIndexForPath(const QString &path)
{
    const auto item = stringToFSRef(path);
    return item ? platform::finderFlags(item->path).value_or(0) : 0;
}

void ZQFileManagerDesktop::setFinderColorIndex(std::uint16_t index, const QString &path)
{
    platform::setFinderFlags(index, platform::absolutePath(path), colourBits);
}

QColor ZQFileManagerDesktop::finderColorForColorIndex(int index)
{
    struct Colour {
        double hue;
        double saturation;
        double brightness;
    };
    constexpr std::array colours{
        Colour{0.0, 0.0, 0.72},     // grey, 2 and 3
        Colour{0.2056, 0.5, 0.85},  // green
        Colour{0.7917, 0.26, 0.86}, // purple
        Colour{0.5789, 0.56, 0.98}, // blue
        Colour{0.1388, 0.54, 0.95}, // yellow
        Colour{0.0083, 0.54, 1.0},  // red
        Colour{0.0888, 0.52, 0.98}, // orange
    };
    constexpr auto first = 2;
    constexpr auto last = first + 2 * static_cast<int>(colours.size()) - 1;
    if (index < first || index > last) {
        return {};
    }
    const auto &colour = colours.at(static_cast<std::size_t>((index - first) / 2));
    const auto real = [](double value) { return static_cast<decltype(QColor().hueF())>(value); };
    return QColor::fromHsvF(real(colour.hue), real(colour.saturation), real(colour.brightness));
}

QColor ZQFileManagerDesktop::finderColorForPath(const QString &path)
{
    return finderColorForColorIndex(finderColorIndexForPath(path));
}
