// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/launchctl/LoadedMarks.h"

#include "Platform/Core/Basics/Descriptor.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <memory>

namespace {

struct CloseFolder {
    void operator()(DIR *folder) const { ::closedir(folder); }
};

} // namespace

// Marks of an earlier manager do not count: its number stands in them.
LoadedMarks::LoadedMarks(const QByteArray &folder, quint64 managerIdentity)
    : m_folder(folder + "/jobs"), m_identity(QByteArray::number(managerIdentity))
{
    ::mkdir(m_folder.constData(), S_IRWXU);
}

LoadedMarks::Mark LoadedMarks::of(const QByteArray &unit) const
{
    const QByteArray path = m_folder + '/' + unit;
    const platform::Descriptor file(
        ::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW)); // NOLINT(*-vararg)
    std::array<char, 64> buffer{};
    const auto size = file.isOpen() ? ::read(file.number(), buffer.data(), buffer.size()) : 0;
    const auto text = QByteArray(buffer.data(), static_cast<int>(size > 0 ? size : 0));
    if (text == "loaded " + m_identity) {
        return Mark::Loaded;
    }
    return text == "unloaded " + m_identity ? Mark::Unloaded : Mark::None;
}

void LoadedMarks::set(const QByteArray &unit, Mark mark) const
{
    const QByteArray path = m_folder + '/' + unit;
    const QByteArray temporary = path + ".new";
    const QByteArray text = (mark == Mark::Loaded ? "loaded " : "unloaded ") + m_identity;
    const platform::Descriptor file(::open(temporary.constData(), // NOLINT(*-vararg)
                                           O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW,
                                           S_IRUSR | S_IWUSR));
    if (mark == Mark::None) {
        ::unlink(path.constData());
    }
    if (mark == Mark::None || !file.isOpen() ||
        ::write(file.number(), text.constData(), static_cast<std::size_t>(text.size())) !=
            text.size() ||
        ::rename(temporary.constData(), path.constData()) != 0) {
        ::unlink(temporary.constData());
    }
}

QByteArrayList LoadedMarks::units() const
{
    QByteArrayList names;
    const std::unique_ptr<DIR, CloseFolder> entries(::opendir(m_folder.constData()));
    while (entries != nullptr) {
        const auto *entry = ::readdir(entries.get()); // NOLINT(concurrency-mt-unsafe)
        if (entry == nullptr) {
            break;
        }
        names << QByteArray(entry->d_name);
    }
    return names;
}
