// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

#include <functional>

namespace test {

// What this process writes to standard output, by any means, while the work is done; as text and
// as lines, which must each have their line break. A failure that a test reports inside is lost.
QString outputOf(const std::function<void()> &work);
QStringList linesOf(const std::function<void()> &work);

} // namespace test
