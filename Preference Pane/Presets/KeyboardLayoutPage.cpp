// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Presets/KeyboardLayoutPage.h"

#include "Platform/Core/Keys/HeldModifiers.h"
#include "Preference Pane/Presets/ZQKeyTextCell.h"
#include "Preference Pane/Presets/ZQKeyboardLayoutAppBrowser.h"
#include "Preference Pane/Presets/ZQKeyboardLayoutEditController.h"
#include "Preference Pane/Shortcut/ZQKeyboardEditPanel.h"
#include "ui_KeyboardLayoutPage.h"

#include <QHeaderView>
#include <QMenu>

KeyboardLayoutPage::KeyboardLayoutPage(QWidget *parent) : QWidget(parent) {}

KeyboardLayoutPage::~KeyboardLayoutPage()
{
    delete m_panel;
    if (m_ui != nullptr) {
        // The controllers take their rows from the tables as they go, and nothing is left to show.
        m_ui->applicationTable->disconnect(this);
        m_ui->keyTable->disconnect(this);
    }
}

ZQKeyboardEditPanel *KeyboardLayoutPage::panel() const
{
    return m_panel;
}

void KeyboardLayoutPage::showEvent(QShowEvent *event)
{
    load();
    QWidget::showEvent(event);
}

void KeyboardLayoutPage::load()
{
    if (m_ui != nullptr) {
        return;
    }
    // From now on it knows which of two modifier keys is held.
    platform::HeldModifiers::shared();
    m_ui = std::make_unique<Ui::KeyboardLayoutPage>();
    m_ui->setupUi(this);
    m_editor = std::make_unique<ZQKeyboardLayoutEditController>(m_bundle);
    m_browser = std::make_unique<ZQKeyboardLayoutAppBrowser>(m_bundle);
    m_panel = new ZQKeyboardEditPanel(this);
    connectTables();
    makeMenu();
    m_editor->awakeFromNib();
    m_browser->awakeFromNib();
    {
        // The preset that shows is the first one: so that can be seen, and need not be read again.
        const QSignalBlocker blocked(m_ui->applicationTable);
        m_ui->applicationTable->selectOnlyRow(0);
    }
    updateControls();
}

void KeyboardLayoutPage::connectTables()
{
    const int character = fontMetrics().averageCharWidth();
    const int descriptionWidth = character * 26; // most names of keys
    const int applicationsWidth = character * 29;
    const int keysWidth = character * 58;
    m_ui->applicationTable->setColumns({{QStringLiteral("title"), tr("Application")}});
    m_ui->keyTable->setColumns(
        {{ZQKeyboardLayoutEditController::descriptionColumn, tr("Remote key")},
         {ZQKeyboardLayoutEditController::shortcutColumn, tr("Shortcut")}});
    m_ui->keyTable->horizontalHeader()->resizeSection(0, descriptionWidth);
    m_ui->keyTable->setItemDelegateForColumn(1, new ZQKeyTextCell(m_ui->keyTable));
    m_ui->keyboardSplitter->setStretchFactor(1, 1);
    m_ui->keyboardSplitter->setSizes({applicationsWidth, keysWidth});

    m_editor->setTableView(m_ui->keyTable);
    m_editor->setPanelEdit(m_panel);
    m_browser->setTableView(m_ui->applicationTable);
    m_browser->setEditController(m_editor.get());

    connect(m_ui->applicationFilter, &QLineEdit::textChanged, m_ui->applicationTable,
            &platform::TableView::setFilter);
    connect(m_ui->keyFilter, &QLineEdit::textChanged, m_ui->keyTable,
            &platform::TableView::setFilter);
    connect(m_ui->addApplicationButton, &QPushButton::clicked, m_browser.get(),
            &ZQKeyboardLayoutAppBrowser::addApplication);
    connect(m_ui->removeApplicationButton, &QPushButton::clicked, m_browser.get(),
            &ZQKeyboardLayoutAppBrowser::removeApplication);
    connect(m_ui->applicationTable, &PresetTableView::removeRequested, m_browser.get(),
            &ZQKeyboardLayoutAppBrowser::removeApplication);
    connect(m_ui->applicationTable, &platform::TableView::selectionDidChange, this,
            &KeyboardLayoutPage::updateControls);
    connect(m_ui->applicationTable, &PresetTableView::filesDropped, this,
            &KeyboardLayoutPage::importPresets);
    m_ui->applicationTable->setFileOfSelectedRow([this] {
        const QString title = m_browser->selectedTitle();
        return title.isNull() ? title : m_browser->pathForPreset(title);
    });

    connect(m_browser.get(), &ZQKeyboardLayoutAppBrowser::presetTakenAway, this,
            &KeyboardLayoutPage::keepRestorable);
    connect(m_editor.get(), &ZQKeyboardLayoutEditController::presetLoaded, this,
            [this](bool readable) {
                m_readable = readable;
                m_writeError.clear();
                updateHint();
            });
    connect(m_editor.get(), &ZQKeyboardLayoutEditController::presetWritten, this,
            [this](const QString &error) {
                m_writeError = error;
                updateHint();
            });
    // The rows are not asked for anew after a shortcut was chosen; what shows of them is painted
    // again when the sheet is off them, with the warnings of the other rows.
    connect(m_editor.get(), &ZQKeyboardLayoutEditController::presetWritten, m_ui->keyTable,
            [this] { m_ui->keyTable->viewport()->update(); });
    connect(m_ui->keyTable, &platform::TableView::selectionDidChange, this, [this] {
        const int row = m_ui->keyTable->selectedRow();
        if (m_panel != nullptr) {
            m_panel->setKeyDescription(row < 0 ? QString() : m_editor->descriptionOfRow(row));
        }
    });
}

void KeyboardLayoutPage::makeMenu()
{
    auto *menu = new QMenu(m_ui->presetMenuButton);
    auto *import = menu->addAction(tr("&Import Preset…"), this, &KeyboardLayoutPage::chooseImport);
    import->setObjectName(QStringLiteral("importPresetAction"));
    m_exportAction =
        menu->addAction(tr("E&xport Preset…"), this, &KeyboardLayoutPage::exportPreset);
    m_exportAction->setObjectName(QStringLiteral("exportPresetAction"));
    menu->addSeparator();
    m_restoreAction = menu->addAction(QString());
    // Later: where that fails, an alert waits, and the menu may be gone by then.
    connect(m_restoreAction, &QAction::triggered, this, &KeyboardLayoutPage::restorePreset,
            Qt::QueuedConnection);
    m_restoreAction->setObjectName(QStringLiteral("restorePresetAction"));
    m_ui->presetMenuButton->setMenu(menu);
}

void KeyboardLayoutPage::updateControls()
{
    const bool selected = !m_browser->selectedTitle().isNull();
    m_ui->removeApplicationButton->setEnabled(selected);
    m_exportAction->setEnabled(selected);
    // What is shown without one would be saved nowhere.
    m_ui->keyTable->setEnabled(selected);
    m_restoreAction->setEnabled(!m_removed.isEmpty());
    // An ampersand would underline what follows it.
    QString title = m_removed.isEmpty() ? QString() : m_removed.last().title();
    title.replace(QLatin1Char('&'), QStringLiteral("&&"));
    m_restoreAction->setText(m_removed.isEmpty() ? tr("&Restore Removed Preset")
                                                 : tr("&Restore “%1”").arg(title));
    updateHint();
}

void KeyboardLayoutPage::updateHint()
{
    if (m_browser->selectedTitle().isNull()) {
        m_ui->keyHint->setText(tr("Select an application to change its shortcuts."));
    } else if (!m_readable) {
        m_ui->keyHint->setText(tr("This preset cannot be read. The keys show what was shown "
                                  "before, and no change of them will be saved."));
    } else if (!m_writeError.isNull()) {
        m_ui->keyHint->setText(tr("The last change could not be saved: %1").arg(m_writeError));
    } else {
        m_ui->keyHint->setText(tr("Double-click a key or press Enter to choose its shortcut; "
                                  "Delete takes it away."));
    }
}
