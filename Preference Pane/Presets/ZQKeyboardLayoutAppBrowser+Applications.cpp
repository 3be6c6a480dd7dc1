// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// Adding the preset of an application, and removing one.
#include "Ostrel/OstrelNames.h"
#include "Ostrel/PresetFiles.h"
#include "Platform/Core/Applications/ApplicationBundle.h"
#include "Platform/Core/Notifications/DistributedNotificationCenter.h"
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Platform/Core/Text/LiteralFormat.h"
#include "Platform/Core/Text/PathText.h"
#include "Platform/Core/Text/TextFormat.h"
#include "Platform/Desktop/Alerts/MainWindow.h"
#include "Platform/Desktop/ApplicationPanel/ApplicationPanel.h"
#include "Preference Pane/Authorization/AuthorizationUse.h"
#include "Preference Pane/Presets/ZQKeyboardLayoutAppBrowser.h"
#include "Shared/Alerts/ZQAlert.h"
#include "Shared/Basics/ZQLocalPaths.h"
#include "Shared/Files/ZQFileManager.h"

#include <QPointer>

#include <algorithm>

using namespace std::chrono_literals;

namespace {

void alertSheet(const QString &message, const QString &information)
{
    ZQAlert::alertSheetWithMessageText(message, platform::literalFormat(information),
                                       platform::mainWindow());
}

} // namespace

// Only the user's own files count, whatever folder the row is from: an application that a default
// preset alone serves may get one of the user's, who wants to begin with an empty one.
QString ZQKeyboardLayoutAppBrowser::servingTitle(const QString &identifier) const
{
    const auto found =
        std::find_if(m_dataArray.begin(), m_dataArray.end(), [&identifier](const Row &row) {
            const auto preset = presets::read(presets::userFile(row.title));
            return presets::identifiers(preset.value_or(QVariantMap())).contains(identifier);
        });
    return found == m_dataArray.end() ? QString() : found->title;
}

QHash<QString, QString> ZQKeyboardLayoutAppBrowser::notesOnApplications() const
{
    QHash<QString, QString> notes;
    for (const bool isUsers : {false, true}) { // the user's own is what counts
        for (const Row &row : m_dataArray) {
            const QString note = isUsers ? tr("You have a preset for it: “%1”")
                                         : tr("Ostrel has a preset for it: “%1”");
            for (const QString &identifier : row.bundleIDs) {
                if (row.isUsers == isUsers) {
                    notes.insert(identifier, note.arg(row.title));
                }
            }
        }
    }
    return notes;
}

void ZQKeyboardLayoutAppBrowser::addApplication()
{
    auto *panel = new platform::ApplicationPanel;
    m_panel.reset(panel);
    panel->setWindowTitle(QStringLiteral("Browse for the application to add"));
    panel->setFolder(ZQLocalPaths::applicationDirectory(Domain::Local));
    panel->setNotes(notesOnApplications());
    // Later: an alert waits for its answer, and who closes us meanwhile destroys the panel too.
    panel->begin(platform::mainWindow(), [this, panel = QPointer(panel)](int returnCode,
                                                                         const QString &path) {
        QMetaObject::invokeMethod(
            this, [this, panel, returnCode, path] { appBrowseDidEnd(panel, returnCode, path); },
            Qt::QueuedConnection);
    });
}

void ZQKeyboardLayoutAppBrowser::appBrowseDidEnd(platform::ApplicationPanel *panel, int returnCode,
                                                 const QString &path)
{
    if (returnCode != platform::PanelOKButton) {
        return;
    }
    if (panel != nullptr) {
        panel->close();
    }
    const auto application = platform::ApplicationBundle::withPath(path);
    const QString &identifier = application.bundleIdentifier();
    if (identifier.isEmpty()) {
        alertSheet(QStringLiteral("Unable to load application information"),
                   QStringLiteral("Please make sure you selected a valid application."));
        return;
    }
    if (const QString title = servingTitle(identifier); !title.isNull()) {
        const QPointer<ZQKeyboardLayoutAppBrowser> self(this);
        alertSheet(QStringLiteral("A layout preset already exists for this application"),
                   QStringLiteral("Please edit the existing preset."));
        if (self != nullptr) {
            showPreset(title);
        }
        return;
    }
    addPresetFor(path, identifier);
}

void ZQKeyboardLayoutAppBrowser::addPresetFor(const QString &path, const QString &identifier)
{
    const AuthorizationUse use; // the pane may be hidden by now
    const QPointer<ZQKeyboardLayoutAppBrowser> self(this);
    const QString title = platform::deletingPathExtension(platform::lastPathComponent(path));
    const QString folder = presets::userFolder();
    if (!ZQFileManager::fileExistsAtPath(folder)) {
        ZQFileManager::createDirectory(folder); // which may ask for a password
    }
    // Another application's may have that name.
    presets::KeptPreset replaced(title);
    if (!platform::writeDictionaryToFile(presets::blank(title, identifier),
                                         presets::userFile(title))) {
        alertSheet(QStringLiteral("Unable to create preset"),
                   platform::format(QStringLiteral("Please make sure you have read and write "
                                                   "permissions for the directory %@."),
                                    folder));
        return;
    }
    if (self == nullptr) {
        return;
    }
    if (!replaced.isNull()) {
        replaced.noteReplacement();
        Q_EMIT presetTakenAway(replaced);
    }
    populateApplications();
    showPreset(title);
}

void ZQKeyboardLayoutAppBrowser::removeApplication()
{
    const QPointer<ZQKeyboardLayoutAppBrowser> self(this);
    const QString title = selectedTitle();
    if (title.isNull()) {
        return;
    }
    const qint64 answer = ZQAlert::alertSheetWithMessageText(
        platform::format(QStringLiteral("Are you sure you wish to remove '%@'?"), title),
        QStringLiteral("Remove"), QStringLiteral("Cancel"), {},
        QStringLiteral("If this application is supported by default in Ostrel, the layout will be "
                       "reset to the defaults instead of being removed."),
        platform::mainWindow(), ZQAlert::Block::Yes);
    if (answer != platform::AlertDefaultReturn) {
        return;
    }
    const AuthorizationUse use; // the pane may be hidden by now
    const QString path = presets::userFile(title);
    const presets::KeptPreset removed(title);
    const bool gone = ZQFileManager::trashFile(path, 20s) && !ZQFileManager::fileExistsAtPath(path);
    // Whoever confirmed it may have closed us since: while the alert or the Trash was waited for.
    if (self != nullptr) {
        if (gone && !removed.isNull()) {
            Q_EMIT presetTakenAway(removed);
        }
        populateApplications();
        loadSelectedPreset();
    }
    platform::postDistributedNotification({names::keyboardLayoutModified, {}, {}});
}
