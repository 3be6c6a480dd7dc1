// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/Descriptor.h"
#include "Platform/Core/Files/UnnamedFile.h"

#include <QByteArray>

#include <sys/types.h>

#include <map>
#include <optional>
#include <vector>

// A folder that items are put into by their names, and never anything outside of it: a name that is
// absolute, leads up or goes through a link is refused. Each: 0, else the reason (errno); EPERM for
// a name that is refused.
class Destination {
public:
    // Both must stay open.
    explicit Destination(int folder);

    // Folders get their modes and times by finish(), since what is put into them afterwards would
    // change the one and might not be allowed by the other. Without a mode an item gets the usual
    // one.
    int addFolder(const QByteArray &name, std::optional<mode_t> mode, time_t time);
    int addLink(const QByteArray &name, const QByteArray &target, time_t time);
    // A file that is to be written, then put in its place.
    int beginFile(const QByteArray &name, platform::UnnamedFile &file);
    int endFile(const QByteArray &name, platform::UnnamedFile &file, std::optional<mode_t> mode,
                time_t time);
    int finish();

    // The mode of a new folder for which none is given.
    static mode_t usualFolderMode();

private:
    using Names = std::vector<QByteArray>;
    struct FolderState {
        mode_t mode;
        bool hasTime;
        time_t time;
    };

    static bool split(const QByteArray &name, Names &names);
    int parentOf(const QByteArray &name, Names &names, int &folder);
    int open(const Names &names);
    int enter(int folder, const QByteArray &name, const QByteArray &path,
              platform::Descriptor &entered);

    int m_root;
    mode_t m_usualMode;
    Names m_openNames;
    platform::Descriptor m_open; // the folder of the last item; the next one's, most often
    std::map<QByteArray, FolderState> m_folders;
};
