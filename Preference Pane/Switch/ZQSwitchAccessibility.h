// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

// Tells screen readers what a ZQSwitch is: a check box. Once for the process is enough; further
// calls do nothing.
void installSwitchAccessibility();
