// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <sys/stat.h>

#include <functional>
#include <map>
#include <mutex>
#include <utility>

namespace platform {

// The copied files that have more names than one, until all of these have been met. Any thread.
class HardLinks {
public:
    enum class Outcome {
        Linked,
        Made,   // by make()
        Failed, // by make(); errno says why
    };

    // The folder that paths are relative to.
    explicit HardLinks(int folder) : m_folder(folder) {}

    // Gives the copy of a file its next name where there is a copy already. Else, and where it
    // cannot have another, has make() make one of that name; two threads never make it twice.
    Outcome linkOrMake(const struct stat &file, const QByteArray &path,
                       const std::function<bool()> &make);

private:
    struct Copy {
        QByteArray path;
        nlink_t left = 0; // names not met yet
    };

    int m_folder;
    std::mutex m_mutex;
    std::map<std::pair<dev_t, ino_t>, Copy> m_copies;
};

} // namespace platform
