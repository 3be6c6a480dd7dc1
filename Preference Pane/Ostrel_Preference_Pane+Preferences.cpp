// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// The controls and the listener preferences file.
#include "Platform/LeadingInteger.h"
#include "Platform/PropertyList.h"
#include "Platform/TextFormat.h"
#include "Preference Pane/ListenerPreferences.h"
#include "Preference Pane/OstrelNames.h"
#include "Preference Pane/Ostrel_Preference_Pane.h"
#include "Shared/ZQAlert.h"
#include "Shared/ZQAuthorization.h"
#include "Shared/ZQLocalPaths.h"
#include "ui_Ostrel_Preference_Pane.h"

#include <QFile>

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

} // namespace

void Ostrel_Preference_Pane::showPreferences(const QVariantMap &preferences)
{
    m_ui->autoUpdateCheck->setChecked(keys::isOnUnlessZero(preferences, keys::autoUpdateCheck));
    m_ui->volFeedbackCheck->setChecked(keys::isOnUnlessZero(preferences, keys::volChangeFeedback));
    m_ui->networkCustomPortCheck->setChecked(keys::isOnOnlyAtOne(preferences, keys::customPortSet));
    const qlonglong port = keys::number(preferences.value(keys::customPort)).value_or(0);
    if (port > 0) {
        m_ui->networkCustomPortText->setText(QString::number(port));
    }
    m_ui->networkDisableBonjour->setChecked(keys::isOnOnlyAtOne(preferences, keys::disableBonjour));
    m_ui->securityConfirmConnections->setChecked(
        keys::isOnOnlyAtOne(preferences, keys::confirmConnections));
    m_ui->securityAllowOneConnection->setChecked(
        keys::isOnOnlyAtOne(preferences, keys::limitToOneConnection));
    showPortHint();
}

void Ostrel_Preference_Pane::savePrefs()
{
    m_portTimer.stop();
    m_ui->networkCustomPortText->setModified(false);
    QVariantMap preferences = keys::load();
    preferences[keys::autoUpdateCheck] = state(m_ui->autoUpdateCheck);
    preferences[keys::volChangeFeedback] = state(m_ui->volFeedbackCheck);
    const QString address = m_ui->networkInterfacePopUp->currentData().toString();
    if (address.isNull()) {
        preferences.remove(keys::selectedMACAddress);
    } else {
        preferences[keys::selectedMACAddress] = address;
    }
    preferences[keys::customPortSet] = state(m_ui->networkCustomPortCheck);
    preferences[keys::customPort] = platform::leadingInteger(m_ui->networkCustomPortText->text());
    preferences[keys::disableBonjour] = state(m_ui->networkDisableBonjour);
    preferences[keys::confirmConnections] = state(m_ui->securityConfirmConnections);
    preferences[keys::limitToOneConnection] = state(m_ui->securityAllowOneConnection);

    if (!keys::write(preferences) && !writeWithAuthorization(preferences)) {
        ZQAlert::alertSheetWithMessageText(
            QStringLiteral("Unable to write preferences"),
            platform::format(QStringLiteral("Please check the permissions for the directory %@."),
                             ZQLocalPaths::prefsDirectory(Domain::User)),
            m_mainView->window());
        return;
    }
    updateEnabledStatus(ChangeSwitch::No);
}

void Ostrel_Preference_Pane::portEdited()
{
    showPortHint();
    // A listener that relaunched at every digit would serve nobody.
    m_portTimer.start();
}

void Ostrel_Preference_Pane::savePortIfEdited()
{
    if (m_ui->networkCustomPortText->isModified()) {
        updateNetworkSettings();
    }
}

void Ostrel_Preference_Pane::showPortHint()
{
    constexpr qlonglong lastPort = 65535;
    const qlonglong port = platform::leadingInteger(m_ui->networkCustomPortText->text());
    const bool usable = port > 0 && port <= lastPort;
    m_ui->networkPortHint->setVisible(!usable);
}
