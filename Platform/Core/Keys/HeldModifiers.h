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

    enum class Kind : quint8 { None, Shift, Control, Option, Command };
    struct Sides {
        bool left;
        bool right;
    };

    // Which keys of a kind are down. Of a modifier that is on without its key being known it is
    // assumed that it is the left one.
    Sides sides(Kind kind) const;

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    struct Held {
        quint32 key;  // what is pressed and released: the scan code or else Qt's key
        Kind meaning; // what the layout makes of it
        Kind place;   // what stands at its place
        bool right;
    };
    void pressed(const QKeyEvent &event);
    void released(const QKeyEvent &event);
    void forgetAllBut(const QKeyEvent &event);

    QVector<Held> m_held;
};

} // namespace platform
