// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QVariantMap>

#include <optional>

// User information on its way to and from D-Bus.
namespace platform {

// The dictionary with only what D-Bus carries: dates and other values that have a text become text,
// values that have none are left out, as is what is nested deeper than 16 levels. Nothing when all
// of it is larger than 8 MiB, because the bus disconnects the sender of a message that is too
// large.
std::optional<QVariantMap> dbusDictionary(const QVariantMap &dictionary);

// The dictionary in an argument that came from D-Bus, made of plain values: truth values, numbers,
// text, QByteArray, QStringList, QVariantList and QVariantMap. Object paths and signatures become
// text, structures lists; file descriptors are left out, as is what follows the 10,000th nested
// value.
QVariantMap plainDictionary(const QVariant &argument);

} // namespace platform
