// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

// Signals to end while something unfinished has to be removed first.

// From now on SIGTERM, SIGINT and SIGHUP only make the answer below true.
void watchForInterruption();

bool isInterrupted();

// Ends by the signal that came; returns where none did.
void endIfInterrupted();
