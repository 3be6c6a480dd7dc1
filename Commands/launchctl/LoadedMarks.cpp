// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/launchctl/LoadedMarks.h"

#include "Platform/Core/Files/FileContents.h"
#include "Platform/Core/Files/FolderEntries.h"
#include "Platform/Core/Text/FileName.h"

#include <sys/stat.h>
#include <unistd.h>

// Marks of an earlier manager do not count: its number stands in them.
LoadedMarks::LoadedMarks(const QByteArray &folder, quint64 managerIdentity)
    : m_folder(platform::fileNameFromBytes(folder) + QStringLiteral("/jobs")),
      m_identity(QByteArray::number(managerIdentity))
{
    ::mkdir(platform::fileNameBytes(m_folder).constData(), S_IRWXU);
}

QString LoadedMarks::file(const QByteArray &unit) const
{
    return m_folder + QLatin1Char('/') + QString::fromLatin1(unit);
}

LoadedMarks::Mark LoadedMarks::of(const QByteArray &unit) const
{
    constexpr auto maxSize = 64;
    const auto text = platform::contentsOfFile(file(unit), maxSize);
    if (text == "loaded " + m_identity) {
        return Mark::Loaded;
    }
    return text == "unloaded " + m_identity ? Mark::Unloaded : Mark::None;
}

void LoadedMarks::set(const QByteArray &unit, Mark mark) const
{
    if (mark == Mark::None) {
        ::unlink(platform::fileNameBytes(file(unit)).constData());
    } else {
        platform::replaceFile(file(unit),
                              (mark == Mark::Loaded ? "loaded " : "unloaded ") + m_identity);
    }
}

QByteArrayList LoadedMarks::units() const
{
    QByteArrayList names;
    for (const auto &name : platform::namesInFolder(m_folder)) {
        names << name.toLatin1();
    }
    return names;
}
