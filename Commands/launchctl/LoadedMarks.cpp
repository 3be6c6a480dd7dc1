// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/launchctl/LoadedMarks.h"

#include "Platform/Core/Files/FileContents.h"
#include "Platform/Core/Files/FolderEntries.h"
#include "Platform/Core/Text/FileName.h"

#include <sys/stat.h>
#include <unistd.h>

namespace {

QByteArray word(LoadedMarks::Mark mark)
{
    switch (mark) {
    case LoadedMarks::Mark::None:
        break;
    case LoadedMarks::Mark::Loaded:
        return "loaded ";
    case LoadedMarks::Mark::Unloaded:
        return "unloaded ";
    case LoadedMarks::Mark::Waiting:
        return "waiting ";
    }
    return {};
}

} // namespace

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
    for (const auto mark : {Mark::Loaded, Mark::Unloaded, Mark::Waiting}) {
        if (text == word(mark) + m_identity) {
            return mark;
        }
    }
    return Mark::None;
}

void LoadedMarks::set(const QByteArray &unit, Mark mark) const
{
    if (mark == Mark::None) {
        ::unlink(platform::fileNameBytes(file(unit)).constData());
    } else {
        platform::replaceFile(file(unit), word(mark) + m_identity);
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
