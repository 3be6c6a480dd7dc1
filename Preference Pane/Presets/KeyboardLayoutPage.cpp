// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Presets/KeyboardLayoutPage.h"

#include "Ostrel/PresetFiles.h"
#include "Platform/Core/Keys/HeldModifiers.h"
#include "Platform/Core/Text/PathText.h"
#include "Platform/Desktop/Tables/NoteDelegate.h"
#include "Preference Pane/Presets/ZQKeyTextCell.h"
#include "Preference Pane/Presets/ZQKeyboardLayoutAppBrowser.h"
#include "Preference Pane/Presets/ZQKeyboardLayoutEditController.h"
#include "Preference Pane/Shortcut/ZQKeyboardEditPanel.h"
#include "ui_KeyboardLayoutPage.h"

#include <QHeaderView>
#include <QHideEvent>
#include <QMenu>

KeyboardLayoutPage::KeyboardLayoutPage(QWidget *parent)
    : QWidget(parent), m_ui(std::make_unique<Ui::KeyboardLayoutPage>())
{
    m_ui->setupUi(this);
    // Qt would show them with the page, and what is not shown counts in no layout's size.
    m_ui->keyboardSplitter->show();
    for (QWidget *column : {m_ui->applicationsColumn, m_ui->keysColumn}) {
        column->show();
        for (auto *control :
             column->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly)) {
            control->show();
        }
    }
    setUpTables();
    makeMenu();
    // The hint takes as much room for one line as for two.
    constexpr int hintLines = 2;
    m_ui->keyHint->setMinimumHeight(hintLines * m_ui->keyHint->fontMetrics().lineSpacing());
    m_ui->keysHeading->setMinimumHeight(m_ui->keysHeading->sizeHint().height());
    m_ui->keysHeading->installEventFilter(this);
}

KeyboardLayoutPage::~KeyboardLayoutPage()
{
    delete m_panel;
    // The controllers take their rows from the tables as they go, and nothing is left to show.
    m_ui->applicationTable->disconnect(this);
    m_ui->keyTable->disconnect(this);
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

void KeyboardLayoutPage::hideEvent(QHideEvent *event)
{
    // The sheet is the window's child, and would stay with the keyboard to itself. Spontaneous:
    // the whole window is minimised, and the sheet with it.
    if (!event->spontaneous() && m_panel != nullptr && m_panel->isVisible()) {
        m_panel->reject();
    }
    QWidget::hideEvent(event);
}

void KeyboardLayoutPage::load()
{
    if (m_browser != nullptr) {
        return;
    }
    // From now on it knows which of two modifier keys is held.
    platform::HeldModifiers::shared();
    m_editor = std::make_unique<ZQKeyboardLayoutEditController>(m_bundle);
    m_browser = std::make_unique<ZQKeyboardLayoutAppBrowser>(m_bundle);
    m_panel = new ZQKeyboardEditPanel(this);
    connectControllers();
    connectControls();
    m_editor->awakeFromNib();
    m_browser->awakeFromNib();
    {
        // The preset that shows is the first one: so that can be seen, and need not be read again.
        const QSignalBlocker blocked(m_ui->applicationTable);
        m_ui->applicationTable->selectOnlyRow(0);
    }
    updateControls();
}

void KeyboardLayoutPage::setTabOrderAfter(QWidget *control)
{
    const QList<QWidget *> controls{control,
                                    m_ui->applicationFilter,
                                    m_ui->applicationTable,
                                    m_ui->addApplicationButton,
                                    m_ui->removeApplicationButton,
                                    m_ui->presetMenuButton,
                                    m_ui->keyFilter,
                                    m_ui->keyTable};
    for (int next = 1; next < controls.size(); ++next) {
        setTabOrder(controls[next - 1], controls[next]);
    }
}

void KeyboardLayoutPage::setUpTables()
{
    const int character = fontMetrics().averageCharWidth();
    const int descriptionWidth = character * 26; // most names of keys
    const int applicationsWidth = character * 32;
    const int keysWidth = character * 55;
    m_ui->applicationTable->setColumns({{QStringLiteral("title"), tr("Application")}});
    m_ui->applicationTable->setItemDelegate(new platform::NoteDelegate(m_ui->applicationTable));
    m_ui->keyTable->setColumns(
        {{ZQKeyboardLayoutEditController::descriptionColumn, tr("Remote key")},
         {ZQKeyboardLayoutEditController::shortcutColumn, tr("Shortcut")}});
    m_ui->keyTable->horizontalHeader()->resizeSection(0, descriptionWidth);
    m_ui->keyTable->setItemDelegateForColumn(1, new ZQKeyTextCell(m_ui->keyTable));
    m_ui->keyboardSplitter->setStretchFactor(1, 1);
    m_ui->keyboardSplitter->setSizes({applicationsWidth, keysWidth});
}

void KeyboardLayoutPage::connectControls()
{
    connect(m_ui->applicationFilter, &QLineEdit::textChanged, m_ui->applicationTable,
            &platform::TableView::setFilter);
    connect(m_ui->applicationTable, &platform::TableView::filterEnded, m_ui->applicationFilter,
            &QLineEdit::clear);
    connect(m_ui->keyFilter, &QLineEdit::textChanged, m_ui->keyTable,
            &platform::TableView::setFilter);
    connect(m_ui->keyTable, &platform::TableView::filterEnded, m_ui->keyFilter, &QLineEdit::clear);
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
}

void KeyboardLayoutPage::connectControllers()
{
    m_editor->setTableView(m_ui->keyTable);
    m_editor->setPanelEdit(m_panel);
    m_browser->setTableView(m_ui->applicationTable);
    m_browser->setEditController(m_editor.get());

    connect(m_browser.get(), &ZQKeyboardLayoutAppBrowser::presetTakenAway, this,
            [this](const presets::KeptPreset &preset) { keep(preset); });
    connect(m_browser.get(), &ZQKeyboardLayoutAppBrowser::listChanged, this,
            &KeyboardLayoutPage::updateControls);
    m_watch = std::make_unique<PresetWatch>();
    connect(m_watch.get(), &PresetWatch::changed, m_browser.get(),
            &ZQKeyboardLayoutAppBrowser::followFiles);
    connect(m_editor.get(), &ZQKeyboardLayoutEditController::shortcutReplaced, this,
            [this](int row, const QVariantMap &shortcut) {
                keep(KeptShortcut{shownTitle(), row, shortcut});
            });
    connect(m_editor.get(), &ZQKeyboardLayoutEditController::presetLoaded, this,
            [this](bool readable) {
                m_readable = readable;
                m_writeError.clear();
                m_watch->setShownFile(presets::userFile(shownTitle()));
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
}

void KeyboardLayoutPage::makeMenu()
{
    auto *menu = new QMenu(m_ui->presetMenuButton);
    m_undoAction = menu->addAction(tr("&Undo"));
    m_undoAction->setObjectName(QStringLiteral("undoAction"));
    m_undoAction->setShortcut(QKeySequence::Undo);
    m_undoAction->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    addAction(m_undoAction);
    // Later: where that fails, an alert waits, and the menu may be gone by then.
    connect(
        m_undoAction, &QAction::triggered, this, [this] { undo(); }, Qt::QueuedConnection);
    menu->addSeparator();
    m_duplicateAction =
        menu->addAction(tr("&Duplicate Preset"), this, &KeyboardLayoutPage::duplicatePreset);
    m_duplicateAction->setObjectName(QStringLiteral("duplicatePresetAction"));
    auto *import = menu->addAction(tr("&Import Preset…"), this, &KeyboardLayoutPage::chooseImport);
    import->setObjectName(QStringLiteral("importPresetAction"));
    m_exportAction =
        menu->addAction(tr("E&xport Preset…"), this, &KeyboardLayoutPage::exportPreset);
    m_exportAction->setObjectName(QStringLiteral("exportPresetAction"));
    m_ui->presetMenuButton->setMenu(menu);
}

void KeyboardLayoutPage::updateControls()
{
    const bool selected = !m_browser->selectedTitle().isNull();
    m_ui->removeApplicationButton->setEnabled(selected);
    m_exportAction->setEnabled(selected);
    // What is shown without one would be saved nowhere.
    m_ui->keyTable->setEnabled(selected);
    m_duplicateAction->setEnabled(selected);
    dropLostChanges();
    m_undoAction->setEnabled(!m_changes.isEmpty());
    m_undoAction->setText(m_changes.isEmpty() ? tr("&Undo") : nextUndo());
    updateHint();
}

QString KeyboardLayoutPage::shownTitle() const
{
    return presets::titleOf(platform::lastPathComponent(m_editor->currentFile()));
}

bool KeyboardLayoutPage::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_ui->keysHeading && event->type() == QEvent::Resize) {
        updateHeading();
    }
    return QWidget::eventFilter(watched, event);
}

void KeyboardLayoutPage::updateHeading()
{
    const QString name = m_browser != nullptr ? m_browser->selectedName() : QString();
    const QString heading =
        name.isNull() ? tr("Shortcuts") : tr("Shortcuts of “%1”").arg(name.simplified());
    auto *label = m_ui->keysHeading;
    label->setText(label->fontMetrics().elidedText(heading, Qt::ElideRight, label->width()));
    label->setToolTip(label->text() == heading ? QString() : heading.toHtmlEscaped());
}

void KeyboardLayoutPage::updateHint()
{
    updateHeading();
    if (m_browser->selectedTitle().isNull()) {
        m_ui->keyHint->setText(tr("Select an application to change its shortcuts."));
    } else if (!m_readable) {
        m_ui->keyHint->setText(tr("This preset cannot be read. The list still shows what it "
                                  "showed before, and changes to it will not be saved."));
    } else if (!m_writeError.isNull()) {
        m_ui->keyHint->setText(tr("The last change could not be saved: %1").arg(m_writeError));
    } else {
        m_ui->keyHint->setText(
            tr("Double-click a key or press Enter to choose its shortcut; press Delete to clear "
               "it, "
               "%1 to undo.")
                .arg(m_undoAction->shortcut().toString(QKeySequence::NativeText)));
    }
}
