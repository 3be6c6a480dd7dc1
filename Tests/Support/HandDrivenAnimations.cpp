// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "HandDrivenAnimations.h"

#include <QCoreApplication>

HandDrivenAnimations::HandDrivenAnimations()
{
    install();
}

HandDrivenAnimations::~HandDrivenAnimations()
{
    uninstall();
}

void HandDrivenAnimations::start()
{
    m_elapsed = 0;
    QAnimationDriver::start();
}

void HandDrivenAnimations::pass(int milliseconds)
{
    // Animations that were started meanwhile are registered by a pass of the event loop.
    for (int i = 0; i < 3; ++i) {
        QCoreApplication::processEvents();
    }
    m_elapsed += milliseconds;
    advanceAnimation();
}
