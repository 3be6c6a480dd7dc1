// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// An include that the check of the rooms has to refuse; no part of any build.
#include "Platform/Desktop/Tables/TableView.h"
