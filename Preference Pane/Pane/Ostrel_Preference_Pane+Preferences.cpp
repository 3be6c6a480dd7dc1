// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// The controls and the listener preferences file.
#include "Ostrel/ListenerPreferences.h"
#include "Ostrel/OstrelNames.h"
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Platform/Core/Text/LeadingInteger.h"
#include "Platform/Core/Text/LiteralFormat.h"
#include "Platform/Core/Text/TextFormat.h"
#include "Preference Pane/Authorization/AuthorizationUse.h"
#include "Preference Pane/Pane/Ostrel_Preference_Pane.h"
#include "Shared/Alerts/ZQAlert.h"
#include "Shared/Authorization/ZQAuthorization.h"
#include "Shared/Basics/ZQLocalPaths.h"
#include "ui_Ostrel_Preference_Pane.h"

#include <QFile>
#include <QPointer>

namespace keys = listenerPreferences;

namespace {

// The state as the file holds it: 1 on, 0 off.
int state(const QCheckBox *box)
{
    return box->isChecked() ? 1 : 0;
}

// Writes to the temporary folder and has an administrator move the file into place.
bool writeWithAuthorization(const QVariantMap &preferences)
{
    const AuthorizationUse use; // the pane may be hidden by now
    const QString temporary =
        ZQLocalPaths::tempDirectory() + QLatin1Char('/') + names::listenerFile;
    if (!platform::writeDictionaryToFile(preferences, temporary)) {
        return false;
    }
    if (ZQAuthorization::sharedController().authMoveFile(
            temporary, ZQLocalPaths::prefsDirectory(Domain::User))) {
        return true;
    }
    QFile::remove(temporary);
    return false;
}

QVariantMap withControls(const Ui::Ostrel_Preference_Pane &ui, QVariantMap preferences)
{
    preferences[keys::autoUpdateCheck] = state(ui.autoUpdateCheck);
    preferences[keys::volChangeFeedback] = state(ui.volFeedbackCheck);
    const QString address = ui.networkInterfacePopUp->currentData().toString();
    if (address.isNull()) {
        preferences.remove(keys::selectedMACAddress);
    } else {
        preferences[keys::selectedMACAddress] = address;
    }
    preferences[keys::customPortSet] = state(ui.networkCustomPortCheck);
    preferences[keys::customPort] = platform::leadingInteger(ui.networkCustomPortText->text());
    preferences[keys::disableBonjour] = state(ui.networkDisableBonjour);
    preferences[keys::confirmConnections] = state(ui.securityConfirmConnections);
    preferences[keys::limitToOneConnection] = state(ui.securityAllowOneConnection);
    return preferences;
}

QString unwritten()
{
    return QStringLiteral("Unable to write preferences");
}

// As the body of an alert, which is a format.
QString checkPermissions()
{
    return platform::literalFormat(
        platform::format(QStringLiteral("Please check the permissions for the directory %@."),
                         ZQLocalPaths::prefsDirectory(Domain::User)));
}

void askForRelaunch()
{
    platform::postDistributedNotification({names::relaunchClient, {}, {}});
}

} // namespace

void Ostrel_Preference_Pane::showPreferences(const QVariantMap &preferences)
{
    // What is read from the file is not written back.
    const auto check = [](QCheckBox *box, bool on) {
        const QSignalBlocker blocked(box);
        box->setChecked(on);
    };
    check(m_ui->autoUpdateCheck, keys::isOnUnlessZero(preferences, keys::autoUpdateCheck));
    check(m_ui->volFeedbackCheck, keys::isOnUnlessZero(preferences, keys::volChangeFeedback));
    check(m_ui->networkCustomPortCheck, keys::isOnOnlyAtOne(preferences, keys::customPortSet));
    const qlonglong port = keys::number(preferences.value(keys::customPort)).value_or(0);
    if (port > 0 && !m_portTimer.isActive()) { // else somebody types one
        const QSignalBlocker blocked(m_ui->networkCustomPortText);
        m_ui->networkCustomPortText->setText(QString::number(port));
    }
    check(m_ui->networkDisableBonjour, keys::isOnOnlyAtOne(preferences, keys::disableBonjour));
    check(m_ui->securityConfirmConnections,
          keys::isOnOnlyAtOne(preferences, keys::confirmConnections));
    check(m_ui->securityAllowOneConnection,
          keys::isOnOnlyAtOne(preferences, keys::limitToOneConnection));
    showPortHint();
}

// Another pane, or whoever else, may have written the file. What we have written ourselves is what
// the controls show already. A file that cannot be read changes nothing: nobody has chosen that.
void Ostrel_Preference_Pane::readChangedPreferences()
{
    const auto preferences = platform::dictionaryFromFile(keys::filePath());
    if (!preferences || m_saving != Saving::Done ||
        withControls(*m_ui, *preferences) == *preferences) {
        return;
    }
    showPreferences(*preferences);
    showSavedInterface(preferences->value(keys::selectedMACAddress));
    m_ui->networkCustomPortText->setEnabled(m_ui->networkCustomPortCheck->isChecked());
}

bool Ostrel_Preference_Pane::saveAtOnce()
{
    m_portTimer.stop();
    const bool written = keys::write(withControls(*m_ui, keys::load()));
    m_saving = written ? Saving::Done : Saving::Waits;
    if (written) {
        showSavedInterface(
            m_ui->networkInterfacePopUp->currentData()); // what was missing is forgotten
        updateEnabledStatus(ChangeSwitch::No);
    }
    return written;
}

void Ostrel_Preference_Pane::savePrefs()
{
    if (saveAtOnce()) {
        return;
    }
    m_saving = Saving::Done; // asked about from here on
    const QPointer<Ostrel_Preference_Pane> self(this);
    const QPointer<QWidget> window(m_mainView->window());
    if (!writeWithAuthorization(withControls(*m_ui, keys::load()))) {
        ZQAlert::alertSheetWithMessageText(unwritten(), checkPermissions(), window);
    } else if (self != nullptr) { // not closed while the password was asked for
        showSavedInterface(m_ui->networkInterfacePopUp->currentData());
        updateEnabledStatus(ChangeSwitch::No);
    }
}

// Nobody can be asked any more then.
void Ostrel_Preference_Pane::savePortBeforeClosing()
{
    const bool isUnsaved = m_portTimer.isActive() || m_saving == Saving::Waits;
    if (isUnsaved && !saveAtOnce()) {
        ZQAlert::alertSheetWithMessageText(unwritten(), {}, {}, {}, checkPermissions(),
                                           m_mainView->window(), nullptr, {}, ZQAlert::Block::No,
                                           nullptr);
    }
    if (isUnsaved) {
        askForRelaunch();
    }
    m_saving = Saving::Closed;
}

void Ostrel_Preference_Pane::saveLater(void (Ostrel_Preference_Pane::*save)())
{
    performLater([this, save] {
        if (m_saving != Saving::Closed) {
            (this->*save)();
        }
    });
}

void Ostrel_Preference_Pane::settingChanged()
{
    if (m_portTimer.isActive()) {
        networkSettingChanged(); // a new port is saved along with it
    } else if (!saveAtOnce()) {
        saveLater(&Ostrel_Preference_Pane::savePrefs);
    }
}

void Ostrel_Preference_Pane::networkSettingChanged()
{
    if (saveAtOnce()) {
        askForRelaunch();
    } else {
        saveLater(&Ostrel_Preference_Pane::updateNetworkSettings);
    }
}

void Ostrel_Preference_Pane::updateNetworkSettings()
{
    savePrefs();
    askForRelaunch();
}

void Ostrel_Preference_Pane::showPortHint()
{
    constexpr qlonglong lastPort = 65535;
    const qlonglong port = platform::leadingInteger(m_ui->networkCustomPortText->text());
    const bool usable = port > 0 && port <= lastPort;
    const bool shown = m_ui->networkCustomPortCheck->isChecked() && !usable;
    m_ui->networkPortHint->setVisible(shown);
    m_ui->networkCustomPortText->setAccessibleDescription(shown ? m_ui->networkPortHint->text()
                                                                : QString());
}
