// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Ostrel/ListenerPreferences.h"

#include "Ostrel/OstrelNames.h"
#include "Platform/Core/Folders/PrivateFiles.h"
#include "Platform/Core/PropertyLists/DamagedPropertyList.h"
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Shared/Basics/ZQLocalPaths.h"

#include <QFileInfo>
#include <QMetaType>

#include <cmath>
#include <limits>

namespace listenerPreferences {
namespace {

qlonglong truncated(double real)
{
    using Limits = std::numeric_limits<qlonglong>;
    constexpr double end = 0x1p63; // which a double holds exactly
    return std::isnan(real) ? 0
           : real >= end    ? Limits::max()
           : real <= -end   ? Limits::min()
                            : static_cast<qlonglong>(real);
}

} // namespace

QString filePath()
{
    return ZQLocalPaths::prefsDirectory(Domain::User) + QLatin1Char('/') + names::listenerFile;
}

QVariantMap load()
{
    return platform::dictionaryFromFile(filePath()).value_or(QVariantMap());
}

bool write(const QVariantMap &preferences)
{
    const QString path = filePath();
    // A home that no program of ours has used yet has no such folder.
    platform::createPrivateFolder(QFileInfo(path).path());
    platform::keepDamagedPropertyList(path);
    return platform::writeDictionaryToFile(preferences, path);
}

std::optional<qlonglong> number(const QVariant &value)
{
    switch (value.userType()) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
        return value.toLongLong();
    case QMetaType::ULongLong:
        return static_cast<qlonglong>(
            qMin(value.toULongLong(), qulonglong{std::numeric_limits<qlonglong>::max()}));
    case QMetaType::Double:
        return truncated(value.toDouble());
    default:
        return std::nullopt;
    }
}

bool isOnUnlessZero(const QVariantMap &preferences, const QString &key)
{
    return number(preferences.value(key)) != 0;
}

bool isOnOnlyAtOne(const QVariantMap &preferences, const QString &key)
{
    return number(preferences.value(key)) == 1;
}

} // namespace listenerPreferences
