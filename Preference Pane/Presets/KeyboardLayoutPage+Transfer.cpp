// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// Importing, exporting and duplicating presets.
#include "Ostrel/OstrelNames.h"
#include "Ostrel/PresetFiles.h"
#include "Platform/Core/Notifications/DistributedNotificationCenter.h"
#include "Platform/Core/Text/LiteralFormat.h"
#include "Platform/Core/Text/PathText.h"
#include "Platform/Desktop/ApplicationPanel/DesktopFileDialog.h"
#include "Preference Pane/Presets/KeyboardLayoutPage.h"
#include "Preference Pane/Presets/ZQKeyboardLayoutAppBrowser.h"
#include "Shared/Alerts/ZQAlert.h"
#include "Shared/Files/ZQFileManager.h"

#include <QDir>
#include <QFileDialog>
#include <QPointer>

#include <algorithm>

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

// A file that was not imported: what an alert says of it alone, with "%1" for its name, and why.
struct Refusal {
    QString name;
    QString message;
    QString reason;
};

QString quoted(const QString &name)
{
    return KeyboardLayoutPage::tr("“%1”").arg(name);
}

QStringList quoted(QStringList names)
{
    std::transform(names.cbegin(), names.cend(), names.begin(),
                   [](const QString &name) { return quoted(name); });
    return names;
}

QStringList texts(const QList<Refusal> &refusals)
{
    QStringList lines;
    for (const Refusal &refusal : refusals) {
        lines.append(quoted(refusal.name) + QStringLiteral(": ") + refusal.reason);
    }
    return lines;
}

// A line each, for as many as an alert has room for.
QString firstOf(const QStringList &lines)
{
    constexpr int maxLines = 5;
    QStringList shown = lines.mid(0, maxLines);
    if (lines.size() > maxLines) {
        shown.append(KeyboardLayoutPage::tr("and %1 more").arg(lines.size() - maxLines));
    }
    return shown.join(QLatin1Char('\n'));
}

bool isUserFile(const QString &path, const QString &title)
{
    return QFileInfo(path).canonicalFilePath() ==
           QFileInfo(presets::userFile(title)).canonicalFilePath();
}

} // namespace

void KeyboardLayoutPage::alert(const QString &message, const QString &reason)
{
    // Its body is a format.
    ZQAlert::alertSheetWithMessageText(message, platform::literalFormat(reason), window());
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
    // Later: when the dialog is off the page, which may go while a question waits.
    connect(dialog, &QFileDialog::filesSelected, this, &KeyboardLayoutPage::importPresets,
            Qt::QueuedConnection);
    dialog->open();
}

std::optional<bool> KeyboardLayoutPage::mayReplace(const QStringList &titles)
{
    if (titles.isEmpty()) {
        return false;
    }
    const bool one = titles.size() == 1;
    const QString message = one ? tr("You already have a preset “%1”").arg(titles.first())
                                : tr("You already have %1 of these presets").arg(titles.size());
    const QString reason = one ? tr("Replacing it discards your shortcuts in it.")
                               : firstOf(quoted(titles)) + QLatin1Char('\n') +
                                     tr("Replacing them discards your shortcuts in them.");
    const qint64 answer = ZQAlert::alertSheetWithMessageText(
        message, tr("Keep Both"), tr("Cancel"), tr("Replace"), platform::literalFormat(reason),
        window(), ZQAlert::Block::Yes);
    return answer == platform::AlertAlternateReturn
               ? std::nullopt
               : std::optional(answer == platform::AlertOtherReturn);
}

void KeyboardLayoutPage::importPresets(const QStringList &paths)
{
    QList<Refusal> refusals;
    QStringList files;
    QStringList taken;
    QString shown;
    for (const QString &path : paths) {
        const QString name = platform::lastPathComponent(path);
        const QString title = presets::titleOf(name);
        if (const QString reason = presets::reasonAgainst(path); !reason.isNull()) {
            refusals.append({name, tr("“%1” is not a preset"), reason});
        } else if (isUserFile(path, title)) {
            shown = title;
        } else {
            files.append(path);
            if (ZQFileManager::fileExistsAtPath(presets::userFile(title))) {
                taken.append(title);
            }
        }
    }
    const QPointer<KeyboardLayoutPage> self(this);
    const auto replaces = mayReplace(taken);
    if (self == nullptr || !replaces) {
        return;
    }
    QStringList imported;
    for (const QString &path : files) {
        const QString name = platform::lastPathComponent(path);
        QString title = presets::titleOf(name);
        if (!*replaces || imported.contains(title)) {
            title = presets::freeTitle(title);
        }
        presets::KeptPreset replaced(title);
        QString error;
        if (!presets::importFile(path, title, &error)) {
            refusals.append({name, tr("“%1” cannot be imported"), error});
        } else {
            imported.append(title);
        }
        if (self == nullptr) {
            return; // closed while a password was asked for
        }
        if (error.isNull() && !replaced.isNull()) {
            replaced.noteReplacement();
            keep(replaced);
        }
    }
    if (!imported.isEmpty()) {
        presetChangedOutside(imported.last());
    } else if (!shown.isNull()) {
        m_browser->showPreset(shown);
    }
    if (refusals.size() == 1) {
        alert(refusals.first().message.arg(refusals.first().name), refusals.first().reason);
    } else if (!refusals.isEmpty()) {
        alert(tr("%1 of %2 files were not imported").arg(refusals.size()).arg(paths.size()),
              firstOf(texts(refusals)));
    }
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
    const auto save = [this, title](const QString &path) {
        QString error;
        if (!presets::exportFile(m_browser->pathForPreset(title), path, &error)) {
            alert(tr("“%1” cannot be exported").arg(title), error);
        }
    };
    connect(dialog, &QFileDialog::fileSelected, this, save, Qt::QueuedConnection);
    dialog->open();
}

void KeyboardLayoutPage::duplicatePreset()
{
    const QString title = m_browser->selectedTitle();
    if (title.isNull()) {
        return;
    }
    // Not that of a default preset either, which the copy would replace.
    QString copy;
    for (int number = 2; copy.isNull() || m_browser->hasPreset(copy) ||
                         ZQFileManager::fileExistsAtPath(presets::userFile(copy));
         ++number) {
        copy = title + QLatin1Char(' ') + QString::number(number);
    }
    const QPointer<KeyboardLayoutPage> self(this);
    QString error;
    const bool isMade = presets::copyFile(m_browser->pathForPreset(title), copy, &error);
    if (self == nullptr) {
        return; // closed while a password was asked for
    }
    if (isMade) {
        presetChangedOutside(copy);
    } else {
        alert(tr("“%1” cannot be duplicated").arg(title), error);
    }
}
