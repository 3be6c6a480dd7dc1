// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <sys/types.h>

#include <cstdint>
#include <ctime>

// What an archive says of an item beside its contents.
struct ZipItem {
    QByteArray name; // from the archive's top; of a folder with a slash at the end
    mode_t mode = 0; // with its kind
    time_t time = 0; // of the last change
    // The contents will not be larger than that.
    std::uint64_t mostBytes = 0;
};
