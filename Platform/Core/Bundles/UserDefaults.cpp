// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Bundles/UserDefaults.h"

#include "Platform/Core/Bundles/Bundle.h"
#include "Platform/Core/Folders/StandardFolders.h"
#include "Platform/Core/PropertyLists/DamagedPropertyList.h"
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Platform/Core/Text/Console.h"

#include <QDir>
#include <QFileInfo>

namespace platform {
namespace {

// Sets the value at the path from its key number at on, or removes it where it is invalid. False,
// with nothing changed, when a value on the way is no dictionary.
bool setValue(QVariantMap &dictionary, const QStringList &path, int at, const QVariant &value)
{
    const auto &key = path.at(at);
    if (at + 1 == path.size()) {
        if (value.isValid()) {
            dictionary.insert(key, value);
        } else {
            dictionary.remove(key);
        }
        return true;
    }
    const auto old = dictionary.value(key);
    if (old.isValid() ? old.userType() != QMetaType::QVariantMap : !value.isValid()) {
        return !old.isValid(); // nothing to remove
    }
    auto inner = old.toMap();
    if (!setValue(inner, path, at + 1, value)) {
        return false;
    }
    dictionary.insert(key, inner);
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
    if (name.isEmpty() || name.contains(QLatin1Char('/'))) {
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

bool UserDefaults::setValueForKeyPath(const QVariant &value, const QString &keyPath) const
{
    const auto path = filePath();
    auto values = dictionaryFromFile(path).value_or(QVariantMap());
    if (keyPath.isEmpty() || !setValue(values, keyPath.split(QLatin1Char('.')), 0, value)) {
        return false;
    }
    QString error;
    if (!keepDamagedPropertyList(path)) {
        error = QStringLiteral("The file there is damaged, and a copy of it could not be kept.");
    } else if (QDir().mkpath(QFileInfo(path).path()) &&
               writeDictionaryToFile(values, path, &error)) {
        return true;
    }
    consoleLog(QStringLiteral("Unable to write the preferences file %@. %@"), path, error);
    return false;
}

} // namespace platform
