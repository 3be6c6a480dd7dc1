// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/UserDefaults.h"

#include "Platform/Bundle.h"
#include "Platform/PropertyList.h"
#include "Platform/StandardFolders.h"

#include <QDir>
#include <QFileInfo>

namespace platform {
namespace {

// Sets the value at the path below the dictionary; false when a value on the way is no dictionary.
bool setValue(QVariantMap &dictionary, const QStringList &path, int at, const QVariant &value)
{
    auto &slot = dictionary[path.at(at)];
    if (at + 1 == path.size()) {
        slot = value;
        return true;
    }
    if (slot.isValid() && slot.userType() != QMetaType::QVariantMap) {
        return false;
    }
    auto inner = slot.toMap();
    if (!setValue(inner, path, at + 1, value)) {
        return false;
    }
    slot = inner;
    return true;
}

} // namespace

UserDefaults &UserDefaults::standardUserDefaults()
{
    static UserDefaults defaults;
    return defaults;
}

QString UserDefaults::filePath() const
{
    const auto libraries = searchPathForDirectories(SearchPathDirectory::Library, UserDomain);
    const auto library =
        libraries.isEmpty() ? homeDirectory() + QStringLiteral("/Library") : libraries.constFirst();
    const auto bundle = Bundle::main();
    auto name = bundle.infoDictionary().value(QStringLiteral("CFBundleIdentifier")).toString();
    if (name.isEmpty()) {
        name = QFileInfo(bundle.executablePath()).fileName();
    }
    return library + QStringLiteral("/Preferences/") + name + QStringLiteral(".plist");
}

QVariant UserDefaults::valueForKeyPath(const QString &keyPath) const
{
    QVariant value = dictionaryFromFile(filePath()).value_or(QVariantMap());
    for (const auto &key : keyPath.split(QLatin1Char('.'))) {
        if (value.userType() != QMetaType::QVariantMap) {
            return {};
        }
        value = value.toMap().value(key);
    }
    return value;
}

bool UserDefaults::setValueForKeyPath(const QVariant &value, const QString &keyPath)
{
    const auto path = filePath();
    auto values = dictionaryFromFile(path).value_or(QVariantMap());
    return setValue(values, keyPath.split(QLatin1Char('.')), 0, value) &&
           QDir().mkpath(QFileInfo(path).path()) && writeDictionaryToFile(values, path);
}

} // namespace platform
