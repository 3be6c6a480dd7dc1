// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// The menu of network interfaces.
#include "Preference Pane/OstrelNames.h"
#include "Preference Pane/Ostrel_Preference_Pane.h"
#include "ui_Ostrel_Preference_Pane.h"

void Ostrel_Preference_Pane::populateNetworkInterfaces()
{
    m_ui->networkInterfacePopUp->clear();
    m_ui->networkInterfacePopUp->addItem(QStringLiteral("Any (recommended)"));
    m_ui->networkInterfacePopUp->setToolTip(
        tr("Choosing one of this computer's interfaces is not available yet in this version."));
}

void Ostrel_Preference_Pane::updateNetworkSettings()
{
    savePrefs();
    platform::postDistributedNotification({names::relaunchClient, {}, {}});
}
