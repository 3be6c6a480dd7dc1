// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

// Whether a change that fails with the caller's own rights is repeated with an administrator's.
enum class ShouldAuth { No, Yes };
