// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

// Being told to end while there is something unfinished to take away first.

// From now on SIGTERM, SIGINT and SIGHUP only make the answer below true.
void watchForInterruption();

bool isInterrupted();

// Ends by the signal that came; returns where none did.
void endIfInterrupted();
