// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// An include that the layer check has to refuse; no part of any build.
#pragma once

#include "Preference Pane/ZQSwitch.h"
