// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include <QObject>
#include <QtPlugin>

// A plug-in, but no preference pane.
class PluginForTest : public QObject {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "com.corvane.SomethingElse/1")
};

#include "PluginForTest.moc"
