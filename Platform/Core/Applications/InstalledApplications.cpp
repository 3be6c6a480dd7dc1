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

void addListed(const QStringList &paths, QSet<QString> &seen, Applications &all)
{
    for (const auto &path : paths) {
        if (WorkerThreads::currentThreadIsToEnd()) {
            return;
        }
        if (seen.contains(path)) {
            continue;
        }
        seen.insert(path);
        auto application = ApplicationBundle::withPath(path);
        if (application.isListed()) {
            all.push_back(std::move(application));
        }
    }
}

void addEntries(const QString &folder, QSet<QString> &ids, Applications &all)
{
    const auto paths = contentsOfApplicationFolder(folder).desktopEntries;
    for (const auto &path : paths) {
        if (WorkerThreads::currentThreadIsToEnd()) {
            return;
        }
        auto id = path.mid(folder.size() + 1);
        id.replace(QLatin1Char('/'), QLatin1Char('-'));
        if (ids.contains(id)) {
            continue;
        }
        auto application = ApplicationBundle::withPath(path);
        // A broken one does not stand for the id: the next folder may have a sound one.
        if (!application.isNull()) {
            ids.insert(id);
        }
        if (application.isListed()) {
            all.push_back(std::move(application));
        }
    }
}

void sortByName(Applications::iterator begin, Applications::iterator end)
{
    // The C locale sorts as machines do.
    const QLocale locale;
    QCollator collator(locale.language() == QLocale::C ? QLocale(QLocale::English) : locale);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    collator.setNumericMode(true);
    std::vector<std::pair<QCollatorSortKey, ApplicationBundle>> keyed;
    for (auto each = begin; each != end; ++each) {
        keyed.emplace_back(collator.sortKey(each->displayName()), std::move(*each));
    }
    std::stable_sort(keyed.begin(), keyed.end(), [](const auto &one, const auto &other) {
        return one.first.compare(other.first) < 0;
    });
    std::transform(keyed.begin(), keyed.end(), begin,
                   [](auto &each) { return std::move(each.second); });
}

} // namespace

std::vector<ApplicationBundle> installedApplications(const QString &firstFolder)
{
    Applications all;
    QSet<QString> seen;
    if (!firstFolder.isEmpty()) {
        const auto folder = QDir::cleanPath(firstFolder);
        addListed(contentsOfApplicationFolder(folder).applicationBundles, seen, all);
    }
    const auto first = static_cast<Applications::difference_type>(all.size());
    const auto bundleFolders = applicationBundleFolders();
    for (const auto &folder : bundleFolders) {
        addListed(contentsOfApplicationFolder(folder).applicationBundles, seen, all);
    }
    QSet<QString> ids;
    const auto entryFolders = desktopEntryFolders();
    for (const auto &folder : entryFolders) {
        addEntries(folder, ids, all);
    }
    sortByName(all.begin(), all.begin() + first);
    sortByName(all.begin() + first, all.end());
    return all;
}

} // namespace platform
