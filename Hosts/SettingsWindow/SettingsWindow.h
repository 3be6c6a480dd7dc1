// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Desktop/PaneLoading/PreferencePane.h"

#include <QMainWindow>

#include <memory>

// The window of ostrel-settings: one pane, and the usual keys to close it.
class SettingsWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit SettingsWindow(std::unique_ptr<platform::PreferencePane> pane);

    // Shows this page of the pane. Answers with what is wrong with the name, null for nothing.
    QString showPage(const QString &name);

    // Renders the pane's main view and writes it as PNG. False when the file cannot be written.
    bool saveScreenshot(const QString &path);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    // Declared as a member, so that it goes before the view, which is a child.
    std::unique_ptr<platform::PreferencePane> m_pane;
    bool m_painted = false;
};
