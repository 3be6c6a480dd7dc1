// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Presets/ZQKeyboardLayoutAppBrowser.h"

#include "Ostrel/PresetFiles.h"
#include "Platform/Core/Applications/ApplicationBundle.h"
#include "Platform/Core/Applications/Workspace.h"
#include "Platform/Core/Text/PathText.h"
#include "Platform/Desktop/Tables/TableView.h"
#include "Preference Pane/Presets/ZQKeyboardLayoutEditController.h"

#include <algorithm>
#include <utility>

namespace {

// More than any preset has: the ways that an application is packaged.
constexpr int maxIdentifiers = 32;

// A preset that was made for a desktop entry has that file's name as its title.
QString desktopName(const QString &title, const QStringList &identifiers)
{
    const QString identifier = title + QStringLiteral(".desktop");
    if (!identifiers.mid(0, maxIdentifiers).contains(identifier)) {
        return {};
    }
    const auto application = platform::ApplicationBundle::withPath(
        platform::absolutePathForAppBundleWithIdentifier(identifier));
    return application.displayName() == title ? QString() : application.displayName();
}

} // namespace

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
    // The first change of a default preset has made one of the user's.
    connect(editController, &ZQKeyboardLayoutEditController::presetWritten, this,
            [this](const QString &error) {
                if (error.isNull()) {
                    const QString file = m_editController->currentFile();
                    m_usersTitles.insert(presets::titleOf(platform::lastPathComponent(file)));
                    m_tableView->viewport()->update();
                }
            });
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

QList<ZQKeyboardLayoutAppBrowser::Row> ZQKeyboardLayoutAppBrowser::readRows() const
{
    QStringList paths;
    int usersCount = 0;
    // No test whether the user's folder has a default preset's title: such a title shows twice.
    for (const QString &folder : {presets::userFolder(), presets::defaultFolder(m_bundle)}) {
        usersCount = static_cast<int>(paths.size());
        for (const QString &name : presets::fileNames(folder)) {
            paths.append(folder + QLatin1Char('/') + name);
        }
    }
    const QList<QStringList> identifiers = presets::identifiersOfFiles(paths);
    QList<Row> rows;
    for (int i = 0; i < paths.size(); ++i) {
        const QString title = presets::titleOf(platform::lastPathComponent(paths[i]));
        rows.append({title, identifiers[i], i < usersCount, desktopName(title, identifiers[i])});
    }
    // Of two with one title the user's stays before the other.
    std::stable_sort(rows.begin(), rows.end(),
                     [](const Row &a, const Row &b) { return a.title < b.title; });
    return rows;
}

void ZQKeyboardLayoutAppBrowser::populateApplications()
{
    m_stamps = stampsOfUsersFiles();
    m_dataArray = readRows();
    m_usersTitles.clear();
    for (const Row &row : std::as_const(m_dataArray)) {
        if (row.isUsers) {
            m_usersTitles.insert(row.title);
        }
    }
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
    cell.note = noteOnRow(row);
    cell.toolTip = toolTipOfRow(row);
    for (const QString &identifier : m_dataArray[row].bundleIDs.mid(0, maxIdentifiers)) {
        const QString path = platform::absolutePathForAppBundleWithIdentifier(identifier);
        if (!path.isNull()) {
            cell.image = platform::iconForFile(path);
            return;
        }
    }
}

ZQKeyboardLayoutAppBrowser::Owner ZQKeyboardLayoutAppBrowser::ownerOfRow(int row) const
{
    const QString &title = m_dataArray[row].title;
    if (m_dataArray[row].isUsers || !m_usersTitles.contains(title)) {
        return m_dataArray[row].isUsers ? Owner::User : Owner::Maker;
    }
    return row > 0 && m_dataArray[row - 1].title == title ? Owner::Replaced : Owner::User;
}

QString ZQKeyboardLayoutAppBrowser::noteOnRow(int row) const
{
    const Owner owner = ownerOfRow(row);
    const QString mark = owner == Owner::User       ? tr("yours")
                         : owner == Owner::Replaced ? tr("original")
                                                    : QString();
    const QString &name = m_dataArray[row].name;
    return name.isEmpty() || mark.isEmpty() ? name + mark : tr("%1, %2").arg(name, mark);
}

QString ZQKeyboardLayoutAppBrowser::toolTipOfRow(int row) const
{
    const Owner owner = ownerOfRow(row);
    const QString origin = owner == Owner::User    ? tr("Your own preset")
                           : owner == Owner::Maker ? tr("Came with Ostrel")
                                                   : tr("Came with Ostrel. Your own preset of "
                                                        "this name is used in its place; remove "
                                                        "that to have this one back.");
    const QString &name = m_dataArray[row].name;
    return name.isEmpty() ? origin : name + QLatin1Char('\n') + origin;
}

bool ZQKeyboardLayoutAppBrowser::hasPreset(const QString &title) const
{
    return std::any_of(m_dataArray.begin(), m_dataArray.end(),
                       [&title](const Row &row) { return row.title == title; });
}

QString ZQKeyboardLayoutAppBrowser::selectedName() const
{
    const QString title = selectedTitle();
    const QString name = title.isNull() ? QString() : m_dataArray[m_tableView->selectedRow()].name;
    return name.isEmpty() ? title : name;
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
