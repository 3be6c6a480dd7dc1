// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/PreferencePane.h"
#include "Preference Pane/Ostrel_Preference_Pane.h"

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
        return new Ostrel_Preference_Pane(bundle);
    }
};

#include "OstrelPlugin.moc"
