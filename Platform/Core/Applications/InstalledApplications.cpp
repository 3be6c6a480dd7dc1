// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Applications/InstalledApplications.h"

#include "Platform/Core/Applications/ApplicationFolders.h"
#include "Platform/Core/Threads/WorkerThreads.h"

#include <QCollator>
#include <QDir>
#include <QSet>

#include <algorithm>

namespace platform {
namespace {

using Applications = std::vector<ApplicationBundle>;

// Of several with one id the first counts that is not broken.
void addListed(const QString &path, const QString &id, QSet<QString> &ids, Applications &all)
{
    if (ids.contains(id) || WorkerThreads::currentThreadShouldStop()) {
        return;
    }
    auto application = ApplicationBundle::withPath(path);
    if (!application.isNull()) {
        ids.insert(id);
    }
    if (application.isListed()) {
        all.push_back(std::move(application));
    }
}

void addBundles(const QString &folder, QSet<QString> &ids, Applications &all)
{
    for (const auto &path : contentsOfApplicationFolder(folder).applicationBundles) {
        addListed(path, path, ids, all);
    }
}

void sortByName(Applications::iterator begin, Applications::iterator end)
{
    // The C locale sorts as machines do.
    const QLocale locale;
    QCollator collator(locale.language() == QLocale::C ? QLocale(QLocale::English) : locale);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    collator.setNumericMode(true);
    std::stable_sort(begin, end, [&](const ApplicationBundle &one, const ApplicationBundle &other) {
        return collator.compare(one.displayName(), other.displayName()) < 0;
    });
}

} // namespace

std::vector<ApplicationBundle> installedApplications(const QString &firstFolder)
{
    Applications all;
    QSet<QString> ids; // of a folder, its path
    if (!firstFolder.isEmpty()) {
        addBundles(QDir::cleanPath(firstFolder), ids, all);
    }
    const auto first = static_cast<Applications::difference_type>(all.size());
    for (const auto &folder : applicationBundleFolders()) {
        addBundles(folder, ids, all);
    }
    for (const auto &folder : desktopEntryFolders()) {
        for (const auto &path : contentsOfApplicationFolder(folder).desktopEntries) {
            addListed(path, desktopFileId(folder, path), ids, all);
        }
    }
    sortByName(all.begin(), all.begin() + first);
    sortByName(all.begin() + first, all.end());
    return all;
}

} // namespace platform
