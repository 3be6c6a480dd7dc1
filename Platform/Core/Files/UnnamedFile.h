// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/Descriptor.h"

#include <QByteArray>

#include <sys/types.h>

namespace platform {

// A new file that has no name before it is finished, so that nobody sees it half-written and
// nothing is left of it when the process dies. Where the file system cannot do that, it has a
// temporary name.
class UnnamedFile {
public:
    UnnamedFile() = default;
    ~UnnamedFile();
    UnnamedFile(const UnnamedFile &) = delete;
    UnnamedFile &operator=(const UnnamedFile &) = delete;

    // Each: 0, else the reason (errno).

    // Makes the file, open for writing, in an open folder, which must stay open. The mode is
    // subject to the process's mask.
    int create(int folder, mode_t mode);
    int write(const char *data, std::size_t size) const;
    // Gives it its name; EEXIST where something has that.
    int publish(const QByteArray &name);
    // Gives it its name, and replaces what has that name.
    int publishOrReplace(const QByteArray &name);

    int descriptor() const { return m_file.fd(); }

private:
    int publishUnnamed(const QByteArray &name) const;

    int m_folder = -1;
    Descriptor m_file;
    QByteArray m_temporaryName; // null while it has none
};

} // namespace platform
