// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Presets/ZQKeyboardLayoutAppBrowser.h"

#include "Ostrel/PresetFiles.h"
#include "Platform/Core/Applications/Workspace.h"
#include "Platform/Core/Text/PathText.h"
#include "Platform/Desktop/Tables/TableView.h"
#include "Preference Pane/Presets/ZQKeyboardLayoutEditController.h"

#include <algorithm>

ZQKeyboardLayoutAppBrowser::ZQKeyboardLayoutAppBrowser(platform::Bundle bundle)
    : m_bundle(std::move(bundle))
{
}

ZQKeyboardLayoutAppBrowser::~ZQKeyboardLayoutAppBrowser()
{
    if (m_tableView != nullptr) {
        m_tableView->setDataSource(nullptr);
    }
}

void ZQKeyboardLayoutAppBrowser::DeleteLater::operator()(QDialog *panel) const
{
    panel->hide();
    panel->deleteLater();
}

void ZQKeyboardLayoutAppBrowser::setTableView(platform::TableView *tableView)
{
    m_tableView = tableView;
    m_tableView->setDataSource(this);
    connect(m_tableView, &platform::TableView::selectionDidChange, this,
            &ZQKeyboardLayoutAppBrowser::tableViewSelectionDidChange);
}

void ZQKeyboardLayoutAppBrowser::setEditController(ZQKeyboardLayoutEditController *editController)
{
    m_editController = editController;
}

void ZQKeyboardLayoutAppBrowser::awakeFromNib()
{
    populateApplications();
    m_editController->populateKeyNames();
    m_editController->loadBlankKeys();
    if (!m_dataArray.isEmpty()) {
        m_editController->loadKeysForFile(pathForPreset(m_dataArray.first().title));
    }
}

void ZQKeyboardLayoutAppBrowser::populateApplications()
{
    QStringList paths;
    // No test whether the user's folder has a default preset's title: such a title shows twice.
    for (const QString &folder : {presets::userFolder(), presets::defaultFolder(m_bundle)}) {
        for (const QString &name : presets::fileNames(folder)) {
            paths.append(folder + QLatin1Char('/') + name);
        }
    }
    const QList<QStringList> identifiers = presets::identifiersOfFiles(paths);
    QList<Row> rows;
    for (int i = 0; i < paths.size(); ++i) {
        rows.append({presets::titleOf(platform::lastPathComponent(paths[i])), identifiers[i]});
    }
    std::stable_sort(rows.begin(), rows.end(),
                     [](const Row &a, const Row &b) { return a.title < b.title; });
    m_dataArray = std::move(rows);
    if (m_tableView != nullptr) {
        m_tableView->reloadData();
    }
}

QString ZQKeyboardLayoutAppBrowser::pathForPreset(const QString &title) const
{
    return presets::pathForPreset(m_bundle, title);
}

int ZQKeyboardLayoutAppBrowser::numberOfRowsInTableView() const
{
    return static_cast<int>(m_dataArray.size());
}

QVariant ZQKeyboardLayoutAppBrowser::tableViewObjectValueForTableColumn(const QString & /*column*/,
                                                                        int row) const
{
    return m_dataArray[row].title;
}

void ZQKeyboardLayoutAppBrowser::tableViewWillDisplayCell(platform::TableCell &cell,
                                                          const QString & /*column*/, int row) const
{
    // More than any preset has: the ways that an application is packaged.
    constexpr int maxIdentifiers = 32;
    for (const QString &identifier : m_dataArray[row].bundleIDs.mid(0, maxIdentifiers)) {
        const QString path = platform::absolutePathForAppBundleWithIdentifier(identifier);
        if (!path.isNull()) {
            cell.image = platform::iconForFile(path);
            return;
        }
    }
}

QString ZQKeyboardLayoutAppBrowser::selectedTitle() const
{
    const int row = m_tableView != nullptr ? m_tableView->selectedRow() : -1;
    return row >= 0 && row < m_dataArray.size() ? m_dataArray[row].title : QString();
}

void ZQKeyboardLayoutAppBrowser::loadSelectedPreset()
{
    const QString title = selectedTitle();
    if (!title.isNull()) {
        m_editController->loadKeysForFile(pathForPreset(title));
    }
}

void ZQKeyboardLayoutAppBrowser::tableViewSelectionDidChange()
{
    loadSelectedPreset();
}

void ZQKeyboardLayoutAppBrowser::showPreset(const QString &title)
{
    const auto found = std::find_if(m_dataArray.begin(), m_dataArray.end(),
                                    [&title](const Row &row) { return row.title == title; });
    if (found == m_dataArray.end()) {
        loadSelectedPreset(); // another row may have come to the place of the selected one
        return;
    }
    const int row = static_cast<int>(found - m_dataArray.begin());
    if (m_tableView->selectedRow() != row) {
        m_tableView->revealRow(row); // which loads it
    } else {
        m_editController->loadKeysForFile(pathForPreset(title));
    }
}
