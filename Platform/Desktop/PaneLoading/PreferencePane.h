// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Bundles/Bundle.h"

#include <QObject>
#include <QWidget>

namespace platform {

// NSPreferencePane: what a preference pane bundle's plug-in makes and a host shows in its window.
// Main thread only.
class PreferencePane : public QObject {
    Q_OBJECT
public:
    explicit PreferencePane(Bundle bundle) : m_bundle(std::move(bundle)) {}

    // The bundle that the pane was loaded from.
    const Bundle &bundle() const { return m_bundle; }

    // Makes the view, then calls mainViewDidLoad(). Called once by the host, which owns the view
    // and deletes the pane before it.
    virtual QWidget *loadMainView(QWidget *parent) = 0;

    // Called once when the view is there.
    virtual void mainViewDidLoad() {}

    // Names of the pages that showPage() takes, in their order.
    virtual QStringList pages() const { return {}; }

    // Brings a page to the front; false when there is none of that name.
    virtual bool showPage(const QString & /*name*/) { return false; }

private:
    Bundle m_bundle;
};

// Root object of the plug-in at "Contents/MacOS/" + "CFBundleExecutable".
class PreferencePanePlugin {
public:
    PreferencePanePlugin() = default;
    virtual ~PreferencePanePlugin() = default;
    PreferencePanePlugin(const PreferencePanePlugin &) = delete;
    PreferencePanePlugin &operator=(const PreferencePanePlugin &) = delete;

    // Makes an object of the bundle's "NSPrincipalClass"; the caller owns it. Null for another
    // name.
    virtual PreferencePane *createPane(const QString &principalClass, const Bundle &bundle) = 0;
};

} // namespace platform

Q_DECLARE_INTERFACE(platform::PreferencePanePlugin, "com.corvane.PreferencePanePlugin/1")
