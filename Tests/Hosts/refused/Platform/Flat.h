// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// A header in no room, which the check has to refuse; no part of any build.
#pragma once
