// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Bundles/UserDefaults.h"
#include "Platform/Core/Text/TextFormat.h"
#include "Platform/Desktop/Alerts/MainWindow.h"
#include "Shared/Alerts/ZQAlert.h"
#include "Shared/Basics/DelegateMethod.h"
#include "Shared/Log/ZQLog.h"

#include <QApplication>
#include <QCheckBox>

namespace {

// Keeps a check box and the truth value at a key path of the preferences the same.
void bindToDefaults(QCheckBox &box, const QString &keyPath)
{
    box.setChecked(
        platform::UserDefaults::standardUserDefaults().valueForKeyPath(keyPath).toBool());
    QObject::connect(&box, &QCheckBox::toggled, &box, [keyPath](bool checked) {
        auto &defaults = platform::UserDefaults::standardUserDefaults();
        if (!defaults.setValueForKeyPath(checked, keyPath)) {
            ZQLog::appendLog(QStringLiteral("Alert error: unable to set \"%@\" in %@"), keyPath,
                             defaults.filePath());
        }
    });
}

} // namespace

void ZQAlert::alertSheetWithDictionary(const QVariantMap &dictionary)
{
    const auto text = [&](const char *key) {
        return dictionary.value(QLatin1String(key)).toString();
    };
    platform::AlertDescription description;
    description.messageText = text("messageText");
    description.informativeText = platform::format(text("informativeText"));
    description.defaultButton = text("defaultButtonTitle");
    description.alternateButton = text("alternateButtonTitle");
    description.otherButton = text("otherButtonTitle");
    m_escapeReturn = description.escapeReturn();
    if (!platform::hasWindows()) {
        ZQLog::appendLog(QStringLiteral("Alert error: no window can show \"%@\""),
                         description.messageText);
        endWithoutAnswer();
        return;
    }

    auto *panel = new platform::AlertPanel(description, m_parentWindow);
    setAlert(panel);
    const auto binding = text("suppressionBinding");
    if (!binding.isNull()) {
        bindToDefaults(*panel->suppressionButton(), binding);
    }
    const auto selector = text("didEndSelector");
    connect(panel, &platform::AlertPanel::answered, this,
            [this, selector](qint64 code) { complete(selector, code); });
    connect(panel, &QObject::destroyed, this, &ZQAlert::endWithoutAnswer);
    connect(qApp, &QCoreApplication::aboutToQuit, this, &ZQAlert::endWithoutAnswer);
    panel->begin();
}

void ZQAlert::alertDidEnd(QObject * /*alert*/, qint64 returnCode, void * /*contextInfo*/)
{
    setReturnCode(returnCode);
    setAlertEnded(true);
}

void ZQAlert::setAlert(platform::AlertPanel *alert)
{
    stopWatching();
    if (m_alert != nullptr && m_alert != alert) {
        // Ordered out, never closed: a closed sheet would send its completion once more.
        m_alert->orderOut();
        m_alert->deleteLater();
    }
    m_alert = alert;
}

void ZQAlert::stopWatching()
{
    if (m_alert != nullptr) {
        m_alert->disconnect(this);
    }
    if (auto *application = QCoreApplication::instance()) {
        application->disconnect(this);
    }
}

void ZQAlert::endWithoutAnswer()
{
    if (!alertEnded()) {
        setReturnCode(m_escapeReturn);
        setAlertEnded(true);
    }
}

QMetaMethod ZQAlert::completionMethod(const QObject &delegate, const QString &selector)
{
    if (selector.count(QLatin1Char(':')) != 3 || !selector.endsWith(QLatin1Char(':'))) {
        return {};
    }
    const auto name = selector.left(selector.indexOf(QLatin1Char(':'))).toUtf8();
    return delegateMethod(delegate, name,
                          {QMetaType::QObjectStar, QMetaType::LongLong, QMetaType::VoidStar});
}

// The delegate hears of the answer first; it may give the alert object another code meanwhile, or
// begin another sheet with it.
void ZQAlert::complete(const QString &selector, qint64 code)
{
    stopWatching(); // whatever the delegate destroys now, this is the answer
    setReturnCode(code);
    const QPointer<ZQAlert> self(this);
    const QPointer<platform::AlertPanel> panel = m_alert;
    if (m_delegate != nullptr) {
        completionMethod(*m_delegate, selector)
            .invoke(m_delegate, Qt::DirectConnection, Q_ARG(QObject *, panel.data()),
                    Q_ARG(qint64, code), Q_ARG(void *, nullptr));
    }
    if (self != nullptr && m_alert == panel) {
        setAlertEnded(true);
    }
}
