// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

namespace platform {

// Does work that takes a while and returns when it is done: on the main thread of an application it
// is done on another thread, while the main thread dispatches events; elsewhere, and where there is
// no thread to be had, at once. When the application quits meanwhile, the work still comes to its
// end first. What the work throws is thrown here.
void performInBackground(const std::function<void()> &work);

} // namespace platform
