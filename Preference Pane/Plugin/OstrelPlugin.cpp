// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Desktop/PaneLoading/PreferencePane.h"
#include "Preference Pane/Pane/Ostrel_Preference_Pane.h"
#include "Shared/Log/ZQLog.h"

#include <mutex>

// Root object of the plug-in in the pane's bundle.
class OstrelPlugin : public QObject, public platform::PreferencePanePlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "com.corvane.PreferencePanePlugin/1")
    Q_INTERFACES(platform::PreferencePanePlugin)
public:
    platform::PreferencePane *createPane(const QString &principalClass,
                                         const platform::Bundle &bundle) override
    {
        if (principalClass != QLatin1String("Ostrel_Preference_Pane")) {
            return nullptr;
        }
        // One log for the process, under the name that log gathering looks for.
        static std::once_flag once;
        std::call_once(once, [] {
            ZQLog::sharedController().setAppName(QStringLiteral("Ostrel"));
            ZQLog::createNewLog();
        });
        return new Ostrel_Preference_Pane(bundle);
    }
};

#include "OstrelPlugin.moc"
