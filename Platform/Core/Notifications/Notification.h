// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QVariant>

namespace platform {

// What notification centres carry. Inside one process the object may be anything a QVariant holds;
// between processes it is text.
struct Notification {
    QString name;
    QVariant object;
    QVariantMap userInfo;
};

} // namespace platform
