// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// Writing the preset back.
#include "Ostrel/OstrelNames.h"
#include "Ostrel/PresetFiles.h"
#include "Platform/Core/Notifications/DistributedNotificationCenter.h"
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Platform/Core/Text/Console.h"
#include "Platform/Core/Text/PathText.h"
#include "Preference Pane/Authorization/AuthorizationUse.h"
#include "Preference Pane/Presets/ZQKeyboardLayoutEditController.h"
#include "Shared/Files/ZQFileManager.h"

#include <QPointer>

QVariantMap ZQKeyboardLayoutEditController::keysToWrite() const
{
    QVariantMap keys;
    for (const QVariantMap &row : m_keyArray) {
        QVariantMap entry{
            {presets::valueKey, row.value(presets::valueKey, QString(QLatin1String("")))}};
        for (const QString &key : {presets::keyCodeKey, presets::modifiersKey}) {
            if (row.contains(key)) {
                entry[key] = row.value(key);
            }
        }
        const QVariant identifier = row.value(QStringLiteral("key"), QStringLiteral("unknown"));
        keys[identifier.toString()] = entry;
    }
    return keys;
}

void ZQKeyboardLayoutEditController::updatePresetFile()
{
    const AuthorizationUse use; // the pane may be hidden by now
    // Always the user's folder: the pane's own bundle is never written to.
    const QString target =
        presets::userFolder() + QLatin1Char('/') + platform::lastPathComponent(m_currentFile);
    const QString folder = platform::deletingLastPathComponent(target);
    if (!ZQFileManager::fileExistsAtPath(folder)) {
        const QPointer<ZQKeyboardLayoutEditController> self(this);
        ZQFileManager::createDirectory(folder); // which may ask for a password
        if (self == nullptr) {
            return;
        }
    }
    if (target.isEmpty()) {
        return;
    }
    QString error;
    if (auto preset = presets::read(m_currentFile)) {
        preset->insert(presets::keysKey, keysToWrite());
        if (!platform::writeDictionaryToFile(*preset, target, &error)) {
            platform::consoleLog(QStringLiteral("Cannot write the preset %@: %@"), target, error);
        }
    } else {
        error = tr("The preset cannot be read.");
    }
    m_isUnsaved = !error.isNull();
    platform::postDistributedNotification({names::keyboardLayoutModified, {}, {}});
    Q_EMIT presetWritten(error);
}
