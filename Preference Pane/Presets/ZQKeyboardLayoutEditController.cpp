// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Presets/ZQKeyboardLayoutEditController.h"

#include "Ostrel/OstrelNames.h"
#include "Ostrel/PresetFiles.h"
#include "Platform/Core/Basics/PlatformException.h"
#include "Platform/Core/Keys/KeyPress.h"
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Platform/Core/Text/LeadingInteger.h"
#include "Platform/Core/Text/ShortText.h"
#include "Platform/Desktop/Alerts/MainWindow.h"
#include "Preference Pane/Presets/ZQShortcutKeyTableview.h"
#include "Preference Pane/Shortcut/ZQKeyboardEditPanel.h"

#include <QApplication>
#include <QStyle>

#include <algorithm>
#include <utility>

const QString ZQKeyboardLayoutEditController::descriptionColumn = QStringLiteral("description");
const QString ZQKeyboardLayoutEditController::shortcutColumn = QStringLiteral("shortcut");

namespace {

const QString keyKey = QStringLiteral("key");
const QString nameKey = QStringLiteral("name");

// UTF-16 units: a preset may give a key any name, and a shortcut any text.
constexpr int maxLength = 100;

// What a mutable dictionary does with a missing value.
void setValue(QVariantMap &row, const QString &key, const QVariant &value)
{
    if (!value.isValid()) {
        throw platform::Exception(QStringLiteral("NSInvalidArgumentException"),
                                  QStringLiteral("No value for the key ") + key);
    }
    row[key] = value;
}

// The key and the modifiers that tell shortcuts apart; nothing for a row without one.
std::optional<std::pair<quint16, quint32>> shortcutOf(const QVariantMap &row)
{
    if (!row.contains(presets::keyCodeKey)) {
        return std::nullopt;
    }
    const auto modifiers = platform::leadingInteger(row.value(presets::modifiersKey));
    return std::pair(static_cast<quint16>(platform::leadingInteger(row.value(presets::keyCodeKey))),
                     static_cast<quint32>(modifiers) & platform::keyflags::ShortcutModifiers);
}

// What a preset's file has of a row.
QVariantMap writtenPart(const QVariantMap &row)
{
    QVariantMap part;
    for (const QString &key : {presets::valueKey, presets::keyCodeKey, presets::modifiersKey}) {
        if (row.contains(key)) {
            part[key] = row.value(key);
        }
    }
    return part;
}

} // namespace

ZQKeyboardLayoutEditController::ZQKeyboardLayoutEditController(platform::Bundle bundle)
    : m_bundle(std::move(bundle))
{
}

ZQKeyboardLayoutEditController::~ZQKeyboardLayoutEditController()
{
    for (const auto &observer : {m_changeObserver, m_clearObserver}) {
        if (observer) {
            platform::NotificationCenter::defaultCenter().removeObserver(*observer);
        }
    }
    if (m_tableView != nullptr) {
        m_tableView->setDataSource(nullptr);
    }
}

void ZQKeyboardLayoutEditController::awakeFromNib()
{
    auto &center = platform::NotificationCenter::defaultCenter();
    m_changeObserver = center.addObserver(
        names::shortcutKeyChanged,
        [this](const platform::Notification &notification) { keyChanged(notification); });
    m_clearObserver = center.addObserver(
        names::shortcutKeyCleared,
        [this](const platform::Notification &notification) { keyCleared(notification); });
    connect(m_tableView, &platform::TableView::doubleAction, this,
            &ZQKeyboardLayoutEditController::changeKeyboardShortcut);
}

void ZQKeyboardLayoutEditController::setTableView(ZQShortcutKeyTableview *tableView)
{
    m_tableView = tableView;
    m_tableView->setDataSource(this);
}

void ZQKeyboardLayoutEditController::setPanelEdit(ZQKeyboardEditPanel *panel)
{
    m_panelEdit = panel;
}

void ZQKeyboardLayoutEditController::reloadTable()
{
    if (m_tableView != nullptr) {
        m_tableView->reloadData();
    }
}

void ZQKeyboardLayoutEditController::populateKeyNames()
{
    m_keyNames.clear();
    const auto list = platform::arrayFromFile(
        m_bundle.pathForResource(QStringLiteral("keynames"), QStringLiteral("plist")));
    for (const QVariant &entry : list.value_or(QVariantList())) {
        if (entry.userType() == QMetaType::QVariantMap) {
            m_keyNames.append(entry.toMap());
        }
    }
}

void ZQKeyboardLayoutEditController::setBlankKeys()
{
    m_keyArray = m_keyNames;
    for (QVariantMap &row : m_keyArray) {
        row[presets::valueKey] = QString(QLatin1String(""));
    }
}

void ZQKeyboardLayoutEditController::loadBlankKeys()
{
    setBlankKeys();
    reloadTable();
}

void ZQKeyboardLayoutEditController::loadKeysForFile(const QString &path)
{
    m_currentFile = path;
    m_isUnsaved = false;
    const auto preset = presets::read(path);
    m_isReadable = preset.has_value();
    if (!preset) {
        Q_EMIT presetLoaded(false);
        return;
    }
    const QVariantMap keys = preset->value(presets::keysKey).toMap();
    setBlankKeys();
    for (QVariantMap &row : m_keyArray) {
        const QVariant shortcut =
            row.contains(keyKey) ? keys.value(row.value(keyKey).toString()) : QVariant();
        if (shortcut.userType() == QMetaType::QString) {
            row[presets::valueKey] = shortcut;
        } else if (shortcut.userType() == QMetaType::QVariantMap) {
            const QVariantMap entries = shortcut.toMap();
            for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
                row[entry.key()] = entry.value();
            }
        }
    }
    reloadTable(); // now that a filter finds the shortcuts
    Q_EMIT presetLoaded(true);
}

void ZQKeyboardLayoutEditController::changeKeyboardShortcut()
{
    if (m_panelEdit == nullptr) {
        return;
    }
    const int row = m_tableView != nullptr ? m_tableView->selectedRow() : -1;
    const bool isRow = row >= 0 && row < m_keyArray.size();
    m_panelEdit->setKeyDescription(isRow ? descriptionOfRow(row) : QString());
    m_panelEdit->setCurrentShortcut(isRow ? shortcutTextOfRow(row) : QString());
    m_panelEdit->beginSheet(platform::mainWindow());
}

QVariantMap *ZQKeyboardLayoutEditController::selectedKey()
{
    const int row = m_tableView != nullptr ? m_tableView->selectedRow() : -1;
    return row >= 0 && row < m_keyArray.size() ? &m_keyArray[row] : nullptr;
}

void ZQKeyboardLayoutEditController::keyChanged(const platform::Notification &notification)
{
    QVariantMap *const row = selectedKey();
    if (notification.userInfo.isEmpty() || row == nullptr) {
        return;
    }
    const QVariant keyCode = notification.userInfo.value(names::keyCode);
    const QVariant flags = notification.userInfo.value(names::modifierFlags);
    const QVariantMap before = writtenPart(*row);
    const QString name = nameForKeyCode(keyCode, flags);
    (*row)[presets::valueKey] = name.isNull() ? QStringLiteral("Unknown") : name;
    setValue(*row, presets::keyCodeKey, keyCode);
    setValue(*row, presets::modifiersKey, flags);
    tellReplaced(before);
    updatePresetFile();
}

void ZQKeyboardLayoutEditController::keyCleared(const platform::Notification & /*notification*/)
{
    QVariantMap *const row = selectedKey();
    if (row == nullptr) {
        return;
    }
    const QVariantMap before = writtenPart(*row);
    (*row)[presets::valueKey] = QString(QLatin1String(""));
    row->remove(presets::keyCodeKey);
    row->remove(presets::modifiersKey);
    tellReplaced(before);
    const QPointer<ZQKeyboardLayoutEditController> self(this);
    updatePresetFile();
    if (self != nullptr) {
        reloadTable();
    }
}

void ZQKeyboardLayoutEditController::tellReplaced(const QVariantMap &before)
{
    const int row = m_tableView->selectedRow();
    if (writtenPart(m_keyArray[row]) != before) {
        Q_EMIT shortcutReplaced(row, before);
    }
}

void ZQKeyboardLayoutEditController::restoreShortcut(int row, const QVariantMap &shortcut)
{
    if (row < 0 || row >= m_keyArray.size()) {
        return;
    }
    for (const QString &key : {presets::valueKey, presets::keyCodeKey, presets::modifiersKey}) {
        m_keyArray[row].remove(key);
    }
    m_keyArray[row].insert(shortcut);
    const QPointer<ZQKeyboardLayoutEditController> self(this);
    updatePresetFile();
    if (self != nullptr && m_tableView != nullptr) {
        reloadTable();
        m_tableView->revealRow(row);
    }
}

bool ZQKeyboardLayoutEditController::isShowing(const QVariantMap &preset) const
{
    const QVariantMap keys = preset.value(presets::keysKey).toMap();
    return m_isReadable &&
           std::all_of(m_keyArray.begin(), m_keyArray.end(), [&keys](const QVariantMap &row) {
               const QVariant shortcut = keys.value(row.value(keyKey).toString());
               QVariantMap entry = shortcut.toMap();
               if (shortcut.userType() == QMetaType::QString) {
                   entry[presets::valueKey] = shortcut;
               } else if (!entry.contains(presets::valueKey)) {
                   entry[presets::valueKey] = QString(QLatin1String(""));
               }
               return writtenPart(entry) == writtenPart(row);
           });
}

int ZQKeyboardLayoutEditController::numberOfRowsInTableView() const
{
    return static_cast<int>(m_keyArray.size());
}

QString ZQKeyboardLayoutEditController::descriptionOfRow(int row) const
{
    const QVariantMap &key = m_keyArray[row];
    const QString name = key.value(nameKey).toString();
    return platform::shortened(name.isEmpty() ? key.value(keyKey).toString() : name, maxLength);
}

QString ZQKeyboardLayoutEditController::shortcutTextOfRow(int row) const
{
    return platform::shortDescription(m_keyArray[row].value(presets::valueKey), maxLength);
}

QVariant ZQKeyboardLayoutEditController::tableViewObjectValueForTableColumn(const QString &column,
                                                                            int row) const
{
    return column == descriptionColumn ? QVariant(descriptionOfRow(row))
                                       : m_keyArray[row].value(presets::valueKey);
}

void ZQKeyboardLayoutEditController::tableViewWillDisplayCell(platform::TableCell &cell,
                                                              const QString &column, int row) const
{
    if (column == descriptionColumn) {
        return;
    }
    const QStringList others = keysWithShortcutOf(row);
    if (!others.isEmpty()) {
        static const QIcon warning =
            QIcon::fromTheme(QStringLiteral("dialog-warning"),
                             QApplication::style()->standardIcon(QStyle::SP_MessageBoxWarning));
        cell.image = warning;
        cell.toolTip = tr("The same shortcut as %1").arg(others.join(QStringLiteral(", ")));
    }
}

QStringList ZQKeyboardLayoutEditController::keysWithShortcutOf(int row) const
{
    const auto shortcut = shortcutOf(m_keyArray[row]);
    QStringList others;
    for (int other = 0; shortcut && other < m_keyArray.size(); ++other) {
        if (other != row && shortcutOf(m_keyArray[other]) == shortcut) {
            others.append(descriptionOfRow(other));
        }
    }
    return others;
}
