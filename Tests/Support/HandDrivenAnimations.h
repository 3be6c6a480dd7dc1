// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QAnimationDriver>

// While it lives, animations advance only when told to, so that a test can look at them half-way.
class HandDrivenAnimations : public QAnimationDriver {
    Q_OBJECT
public:
    HandDrivenAnimations();
    ~HandDrivenAnimations() override;

    // Lets the time of all running animations pass.
    void pass(int milliseconds);

    void advance() override {}
    qint64 elapsed() const override { return m_elapsed; }

protected:
    void start() override;

private:
    qint64 m_elapsed = 0;
};
