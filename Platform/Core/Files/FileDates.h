// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QDateTime>

// When a file was changed and made. Links are followed; where something is changed, as by
// openPath().
namespace platform {

// An invalid date where that cannot be read.
QDateTime modificationDate(const QString &path);

// False where that failed; the date must be valid.
bool setModificationDate(const QDateTime &date, const QString &path);

// The date that was set, else when the file system made the file; invalid where neither is known.
QDateTime creationDate(const QString &path);

// The system does not let anybody change when it made a file. A date that is set goes into the
// extended attribute "user.creation_date", as text (ISO 8601, UTC, milliseconds). False where that
// failed.
bool setCreationDate(const QDateTime &date, const QString &path);

} // namespace platform
