// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// Starting, stopping and refreshing the listener, each on a worker thread of its own.
#include "Platform/Console.h"
#include "Platform/MainThread.h"
#include "Platform/PlatformException.h"
#include "Platform/ProcessList.h"
#include "Preference Pane/ListenerPreferences.h"
#include "Preference Pane/OstrelNames.h"
#include "Preference Pane/Ostrel_Preference_Pane.h"
#include "Shared/ZQAuthorization.h"
#include "Shared/ZQException.h"
#include "ui_Ostrel_Preference_Pane.h"

#include <QFileInfo>

using namespace std::chrono_literals;

void Ostrel_Preference_Pane::setProcessing(bool processing)
{
    m_isProcessing.store(processing, std::memory_order_relaxed);
}

void Ostrel_Preference_Pane::setupClient()
{
    setProcessing(true);
    platform::performOnMainThreadAndWait([this] {
        disableInterface();
        m_ui->statusSpinner->startAnimation();
    });
    if (!ZQAuthorization::sharedController().authStart() && !isProcessRunning(names::listener)) {
        platform::performOnMainThreadAndWait([this] {
            showNotice(tr("Starting the listener is not available yet in this version."));
        });
    }
    endClientOperation();
}

void Ostrel_Preference_Pane::stopClient()
{
    setProcessing(true);
    if (!ZQAuthorization::sharedController().authStart() && isProcessRunning(names::listener)) {
        platform::performOnMainThreadAndWait([this] {
            showNotice(tr("Stopping the listener is not available yet in this version."));
        });
    }
    endClientOperation();
}

void Ostrel_Preference_Pane::endClientOperation()
{
    setProcessing(false);
    platform::performOnMainThreadAndWait([this] { updateEnabledStatus(); });
    platform::performOnMainThreadAndWait([this] { m_ui->statusSpinner->stopAnimation(); });
}

void Ostrel_Preference_Pane::reloadClientIfNew()
{
    if (m_workers.sleepFor(inPaneTime(1s))) {
        try {
            checkListenerVersion();
        } catch (const platform::Exception &exception) {
            ZQException::logException(exception, "-[Ostrel_Preference_Pane reloadClientIfNew]");
        }
    }
    m_isLoading.store(false, std::memory_order_relaxed);
}

void Ostrel_Preference_Pane::checkListenerVersion()
{
    QVariantMap preferences = listenerPreferences::load();
    const QVariant lastVersion = preferences.value(listenerPreferences::lastRunVersion);
    const QVariant version = bundle().infoDictionary().value(QStringLiteral("CFBundleVersion"));
    if (lastVersion.isValid() && lastVersion.toString() != version.toString() &&
        QFileInfo::exists(jobFilePath())) {
        // The old version stays on record, so that a pane that can reload still sees the change.
        platform::consoleLog(
            QStringLiteral("Reloading the listener of version %@ is not available yet"),
            lastVersion);
        return;
    }
    if (version.isValid()) {
        preferences[listenerPreferences::lastRunVersion] = version;
    }
    listenerPreferences::write(preferences);
}

bool Ostrel_Preference_Pane::isProcessRunning(const QString &processName)
{
    const QString ending = QLatin1Char('/') + processName;
    return platform::findProcess([&](const platform::ProcessInformation &process) {
        // Kept on purpose: the second key is none that process information has.
        return process.value(QStringLiteral("CFBundleExecutable")).endsWith(ending) ||
               process.value(QStringLiteral("kCFBundleNameKey")) == processName;
    });
}
