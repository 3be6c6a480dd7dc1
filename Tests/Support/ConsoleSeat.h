// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace test {

// The seat at the console, as the login manager describes it in the sandbox's "/run/systemd".
// Nobody is there at first.
class ConsoleSeat {
public:
    ConsoleSeat();
    ~ConsoleSeat();
    ConsoleSeat(const ConsoleSeat &) = delete;
    ConsoleSeat &operator=(const ConsoleSeat &) = delete;

    // Puts a session of that account and class in front.
    void activate(const QString &account, unsigned uid, const char *sessionClass = "user");
};

} // namespace test
