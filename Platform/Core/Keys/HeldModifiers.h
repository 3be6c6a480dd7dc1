// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QVector>

class QKeyEvent;

namespace platform {

// The modifier keys that are down, as far as the program's windows heard of them: Qt's events do
// not tell left from right. Main thread only.
class HeldModifiers : public QObject {
    Q_OBJECT
public:
    // Begins to listen to the application's events at the first call. Modifiers that went down
    // before are not known.
    static HeldModifiers &shared();

    HeldModifiers();

    struct Sides {
        bool left;
        bool right;
    };

    // Which of a modifier's two keys are down; neither for a modifier whose key is not known.
    Sides sides(Qt::KeyboardModifier modifier) const;

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    struct Held {
        quint32 key; // what is pressed and released: the scan code or else Qt's key
        Qt::KeyboardModifier modifier;
        bool right;
    };
    void pressed(const QKeyEvent &event);
    void released(const QKeyEvent &event);
    // Drops the keys whose modifiers the event does not have.
    void dropReleased(const QKeyEvent &event);

    QVector<Held> m_held;
};

} // namespace platform
