// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Trees/HardLinks.h"

#include <unistd.h>

namespace platform {

HardLinks::Outcome HardLinks::linkOrMake(const struct stat &file, const QByteArray &path,
                                         const std::function<bool()> &make)
{
    const std::lock_guard lock(m_mutex);
    const std::pair key(file.st_dev, file.st_ino);
    const auto known = m_copies.find(key);
    const auto isNew = known == m_copies.end();
    if (!isNew) {
        const auto linked =
            ::linkat(m_folder, known->second.path.constData(), m_folder, path.constData(), 0) == 0;
        if (--known->second.left == 0) {
            m_copies.erase(known);
        }
        if (linked) {
            return Outcome::Linked;
        }
        // Too many links, none at all on this file system, or too long a path.
    }
    if (!make()) {
        return Outcome::Failed;
    }
    if (isNew && file.st_nlink > 1) {
        m_copies.insert({key, {path, file.st_nlink - 1}});
    }
    return Outcome::Made;
}

} // namespace platform
