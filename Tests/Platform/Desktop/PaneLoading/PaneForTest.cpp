// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Desktop/PaneLoading/PreferencePane.h"

#include <QLabel>

namespace {

const char inThisPlugin = 0;

} // namespace

#ifdef PANE_LACKS_A_FUNCTION
extern "C" void functionThatNobodyHas();
#endif

namespace {

// Its pages tell where it was loaded from.
class PaneForTest : public platform::PreferencePane {
    Q_OBJECT
public:
    using PreferencePane::PreferencePane;

    QWidget *loadMainView(QWidget *parent) override
    {
        auto *view = new QLabel(QStringLiteral("pane"), parent);
#ifdef PANE_LACKS_A_FUNCTION
        functionThatNobodyHas();
#endif
        mainViewDidLoad();
        return view;
    }

    QStringList pages() const override
    {
        return {bundle().path(), platform::Bundle::containing(&inThisPlugin).path(),
                platform::Bundle::main().path()};
    }
};

class PaneForTestPlugin : public QObject, public platform::PreferencePanePlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "com.corvane.PreferencePanePlugin/1")
    Q_INTERFACES(platform::PreferencePanePlugin)
public:
    platform::PreferencePane *createPane(const QString &principalClass,
                                         const platform::Bundle &bundle) override
    {
        return principalClass == QLatin1String("PaneForTest") ? new PaneForTest(bundle) : nullptr;
    }
};

} // namespace

#include "PaneForTest.moc"
