// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

// The administrator's authorisation and the file operations done with it.
//
// Not available yet: nothing can be authorised, every request is refused with a console line.
class ZQAuthorization {
public:
    /// sharedController
    static ZQAuthorization &sharedController();

    ZQAuthorization(const ZQAuthorization &) = delete;
    ZQAuthorization &operator=(const ZQAuthorization &) = delete;

    /// authStart obtains the authorisation. Any thread. False when refused.
    bool authStart();

    /// authMoveFile:toPath: moves a file, or into a folder under its own name. Any thread.
    bool authMoveFile(const QString &source, const QString &destination);

private:
    ZQAuthorization() = default;
};
