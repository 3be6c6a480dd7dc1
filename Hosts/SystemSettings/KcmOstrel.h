// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Desktop/PaneLoading/PreferencePane.h"

#include <KCModule>
#include <memory>

// The pane as a module of KDE System Settings. Every change is saved at once, so there is nothing
// to apply or reset.
class KcmOstrel : public KCModule {
    Q_OBJECT
public:
    explicit KcmOstrel(QWidget *parent, const QVariantList &args = {});

private:
    // Declared as a member, so that it goes before the view, which is a child.
    std::unique_ptr<platform::PreferencePane> m_pane;
};
