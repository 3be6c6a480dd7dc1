// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// Importing, exporting and restoring presets.
#include "Platform/DesktopFileDialog.h"
#include "Platform/DistributedNotificationCenter.h"
#include "Platform/PathText.h"
#include "Preference Pane/KeyboardLayoutPage.h"
#include "Preference Pane/OstrelNames.h"
#include "Preference Pane/PresetFiles.h"
#include "Preference Pane/ZQKeyboardLayoutAppBrowser.h"
#include "Shared/ZQAlert.h"
#include "Shared/ZQFileManager.h"

#include <QDir>
#include <QFileDialog>

namespace {

QString kindOfFiles()
{
    return KeyboardLayoutPage::tr("Keyboard-layout presets") + QStringLiteral(" (*.okl)");
}

// A sheet on the page's window that deletes itself.
QFileDialog *fileSheet(QWidget *page, const QString &title)
{
    auto *dialog = new QFileDialog(page->window(), title, QDir::homePath(), kindOfFiles());
    dialog->setOption(QFileDialog::DontUseNativeDialog, !platform::canShowDesktopFileDialog());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowModality(Qt::WindowModal);
    return dialog;
}

// The text of an alert is a format.
QString literal(QString text)
{
    return text.replace(QLatin1Char('%'), QStringLiteral("%%"));
}

} // namespace

void KeyboardLayoutPage::alert(const QString &message, const QString &reason)
{
    ZQAlert::alertSheetWithMessageText(message, literal(reason), window());
}

void KeyboardLayoutPage::presetChangedOutside(const QString &title)
{
    platform::postDistributedNotification({names::keyboardLayoutModified, {}, {}});
    m_browser->populateApplications();
    m_browser->showPreset(title);
    updateControls();
}

void KeyboardLayoutPage::chooseImport()
{
    auto *dialog = fileSheet(this, tr("Import Presets"));
    dialog->setFileMode(QFileDialog::ExistingFiles);
    connect(dialog, &QFileDialog::filesSelected, this, &KeyboardLayoutPage::importPresets);
    dialog->open();
}

void KeyboardLayoutPage::importPresets(const QStringList &paths)
{
    for (const QString &path : paths) {
        if (!importPreset(path)) {
            return;
        }
    }
}

// False when the user wants no more of it.
bool KeyboardLayoutPage::importPreset(const QString &path)
{
    const QString name = platform::lastPathComponent(path);
    if (const QString reason = presets::reasonAgainst(path); !reason.isNull()) {
        alert(tr("“%1” is not a preset").arg(name), reason);
        return true;
    }
    QString title = presets::titleOf(name);
    const bool same = QFileInfo(path).canonicalFilePath() ==
                      QFileInfo(presets::userFile(title)).canonicalFilePath();
    if (same) {
        m_browser->showPreset(title);
        return true;
    }
    if (ZQFileManager::fileExistsAtPath(presets::userFile(title))) {
        const qint64 answer = ZQAlert::alertSheetWithMessageText(
            tr("You have a preset “%1” already").arg(title), tr("Keep Both"), tr("Cancel"),
            tr("Replace"), literal(tr("Replacing it discards your shortcuts in it.")), window(),
            ZQAlert::Block::Yes);
        if (answer == platform::AlertAlternateReturn) {
            return false;
        }
        if (answer == platform::AlertDefaultReturn) {
            title = presets::freeTitle(title);
        }
    }
    QString error;
    if (presets::importFile(path, title, &error)) {
        presetChangedOutside(title);
    } else {
        alert(tr("“%1” cannot be imported").arg(name), error);
    }
    return true;
}

void KeyboardLayoutPage::exportPreset()
{
    const QString title = m_browser->selectedTitle();
    if (title.isNull()) {
        return;
    }
    auto *dialog = fileSheet(this, tr("Export “%1”").arg(title));
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setDefaultSuffix(QStringLiteral("okl"));
    dialog->selectFile(title + presets::ending);
    connect(dialog, &QFileDialog::fileSelected, this, [this, title](const QString &path) {
        QString error;
        if (!presets::exportFile(m_browser->pathForPreset(title), path, &error)) {
            alert(tr("“%1” cannot be exported").arg(title), error);
        }
    });
    dialog->open();
}

void KeyboardLayoutPage::restorePreset()
{
    if (m_removed.isNull()) {
        return;
    }
    QString error;
    const QString title = m_removed.putBack(&error);
    if (title.isNull()) {
        alert(tr("“%1” cannot be restored").arg(m_removed.title()), error);
        return;
    }
    m_removed = {};
    presetChangedOutside(title);
}
