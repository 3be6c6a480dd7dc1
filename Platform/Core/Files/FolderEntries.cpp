// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/FolderEntries.h"

#include "Platform/Core/Basics/Descriptor.h"
#include "Platform/Core/Basics/FileError.h"
#include "Platform/Core/Text/FileName.h"

#include <dirent.h>
#include <fcntl.h>

#include <algorithm>
#include <cstring>

namespace platform {
namespace {
constexpr std::size_t bufferSize = 65536;
} // namespace

EntryBatch::EntryBatch()
    // NOLINTNEXTLINE(modernize-avoid-c-arrays)
    : m_buffer(std::make_unique_for_overwrite<std::byte[]>(bufferSize))
{
}

bool EntryBatch::read(int folder)
{
    const auto size = retried([&] { return ::getdents64(folder, m_buffer.get(), bufferSize); });
    m_error = size < 0 ? errno : 0;
    m_size = size < 0 ? 0 : static_cast<std::size_t>(size);
    m_at = 0;
    return m_size > 0;
}

bool EntryBatch::isFull() const
{
    return m_size > bufferSize / 2;
}

bool EntryBatch::next()
{
    while (m_at < m_size) {
        const auto *entry = reinterpret_cast<const dirent64 *>(m_buffer.get() + m_at);
        m_at += entry->d_reclen;
        m_name = &entry->d_name[0];
        m_type = entry->d_type;
        if (m_name[0] != '.' || (std::strcmp(m_name, ".") != 0 && std::strcmp(m_name, "..") != 0)) {
            return true;
        }
    }
    return false;
}

bool FolderEntries::next()
{
    while (!m_batch.next()) {
        if (!m_batch.read(m_folder)) {
            return false;
        }
    }
    return true;
}

int readNames(int folder, std::vector<QByteArray> &names)
{
    FolderEntries entries(folder);
    while (entries.next()) {
        names.emplace_back(entries.name());
    }
    std::sort(names.begin(), names.end());
    return entries.error();
}

QStringList namesInFolder(const QString &path)
{
    const auto bytes = fileNameBytes(path);
    if (bytes.contains('\0')) {
        return {};
    }
    const Descriptor folder(
        retried([&] { return ::open(bytes.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    std::vector<QByteArray> names;
    QStringList list;
    if (folder.isOpen() && readNames(folder.fd(), names) == 0) {
        for (const auto &name : names) {
            list << fileNameFromBytes(name);
        }
    }
    return list;
}

} // namespace platform
