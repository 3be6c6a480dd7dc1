// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Desktop/ApplicationPanel/ApplicationPanel.h"

#include "Platform/Core/Applications/ApplicationFolders.h"
#include "Platform/Core/Applications/InstalledApplications.h"
#include "Platform/Core/Threads/MainThread.h"
#include "Platform/Desktop/ApplicationPanel/ApplicationFileDialog.h"
#include "Platform/Desktop/ApplicationPanel/ApplicationListModel.h"
#include "Platform/Desktop/ApplicationPanel/ApplicationListView.h"

#include <QDialogButtonBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <memory>
#include <utility>

namespace platform {
namespace {

// The folder, or where the system's applications are.
QString existingFolder(const QString &folder)
{
    if (!folder.isEmpty() && QFileInfo(folder).isDir()) {
        return folder;
    }
    // The last one is the system's own.
    auto folders = desktopEntryFolders();
    std::reverse(folders.begin(), folders.end());
    for (const auto &each : std::as_const(folders)) {
        if (QFileInfo(each).isDir()) {
            return each;
        }
    }
    return QStringLiteral("/");
}

} // namespace

ApplicationPanel::ApplicationPanel(QWidget *parent)
    : QDialog(parent == nullptr ? nullptr : parent->window()),
      m_model(new ApplicationListModel(this)), m_list(new ApplicationListView(this)),
      m_search(new QLineEdit(this))
{
    setObjectName(QStringLiteral("applicationPanel"));
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    setAttribute(Qt::WA_QuitOnClose, false);

    m_search->setObjectName(QStringLiteral("applicationSearch"));
    m_search->setPlaceholderText(tr("Search"));
    m_search->setAccessibleName(tr("Search applications"));
    m_search->setClearButtonEnabled(true);
    const auto glass = QIcon::fromTheme(QStringLiteral("edit-find"), QIcon());
    if (!glass.isNull()) {
        m_search->addAction(glass, QLineEdit::LeadingPosition);
    }
    m_search->installEventFilter(this);
    m_list->setObjectName(QStringLiteral("applicationList"));
    m_list->setAccessibleName(tr("Applications"));
    m_list->setModel(m_model);

    auto *browseButton = new QPushButton(tr("&Browse Files..."), this);
    browseButton->setObjectName(QStringLiteral("browseButton"));
    browseButton->setAutoDefault(false);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("cancelButton"));
    m_add = buttons->addButton(tr("&Add"), QDialogButtonBox::AcceptRole);
    m_add->setObjectName(QStringLiteral("addButton"));
    m_add->setDefault(true);

    auto *bottom = new QHBoxLayout;
    bottom->addWidget(browseButton);
    bottom->addStretch();
    bottom->addWidget(buttons);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_search);
    layout->addWidget(m_list);
    layout->addLayout(bottom);
    resize(fontMetrics().averageCharWidth() * 70, fontMetrics().height() * 28);

    connect(m_search, &QLineEdit::textChanged, this, &ApplicationPanel::search);
    connect(m_list, &ApplicationListView::typed, this, [this](const QString &text) {
        m_search->setFocus();
        text.isNull() ? m_search->backspace() : m_search->insert(text);
    });
    connect(m_list, &ApplicationListView::leftAtTop, m_search, [this] { m_search->setFocus(); });
    connect(m_list, &QListView::doubleClicked, this, &ApplicationPanel::accept);
    connect(m_list->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &ApplicationPanel::updateButtons);
    connect(m_model, &QAbstractItemModel::modelReset, this, &ApplicationPanel::updateButtons);
    connect(browseButton, &QPushButton::clicked, this, &ApplicationPanel::browse);
    connect(buttons, &QDialogButtonBox::accepted, this, &ApplicationPanel::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &ApplicationPanel::reject);
}

ApplicationPanel::~ApplicationPanel()
{
    // What the workers have queued runs while they are waited for, and comes too late.
    ++m_run;
    m_workers.end();
}

void ApplicationPanel::begin(QWidget *parent, End end)
{
    auto *window = parent == nullptr ? nullptr : parent->window();
    if (window != parentWidget()) {
        setParent(window, windowFlags());
    }
    setWindowModality(window == nullptr ? Qt::NonModal : Qt::WindowModal);
    m_end = std::move(end);
    m_search->clear();
    load();
    m_search->setFocus();
    show();
    raise();
    activateWindow();
}

// Reads what is installed beside the main thread: the panel is there at once, however slow the
// disk.
void ApplicationPanel::load()
{
    m_model->setApplications({});
    m_list->setPlaceholder(tr("Looking for applications..."));
    const auto look = [panel = QPointer(this), run = ++m_run, folder = m_folder, notes = m_notes] {
        auto rows = std::make_shared<std::vector<ApplicationRow>>();
        for (auto &application : installedApplications(folder)) {
            const QString note = notes.value(application.bundleIdentifier());
            rows->emplace_back(std::move(application), note);
        }
        performOnMainThread([panel, run, rows] {
            if (panel != nullptr && panel->m_run == run) {
                panel->m_model->setApplications(std::move(*rows));
                panel->m_list->setPlaceholder(panel->m_model->total() == 0
                                                  ? tr("No applications are installed")
                                                  : tr("No application has that name"));
                panel->search(panel->m_search->text());
            }
        });
    };
    if (!m_workers.start(look)) {
        look();
    }
}

void ApplicationPanel::search(const QString &text)
{
    m_model->setSearch(text);
    // The best match is selected, so that Enter adds it.
    if (!text.trimmed().isEmpty() && m_model->rowCount() > 0) {
        m_list->setCurrentIndex(m_model->index(0));
    }
    m_list->scrollToTop();
}

void ApplicationPanel::updateButtons()
{
    m_add->setEnabled(!chosenPath().isNull());
}

QString ApplicationPanel::chosenPath() const
{
    const auto rows = m_list->selectionModel()->selectedIndexes();
    return rows.isEmpty() ? QString()
                          : rows.constFirst().data(ApplicationListModel::PathRole).toString();
}

void ApplicationPanel::browse()
{
    auto *dialog = new ApplicationFileDialog(this, existingFolder(m_folder));
    dialog->setWindowTitle(windowTitle());
    connect(dialog, &QDialog::finished, dialog, &QObject::deleteLater);
    connect(dialog, &ApplicationFileDialog::chosen, this, [this, dialog](const QString &path) {
        dialog->deleteLater();
        answer(PanelOKButton, path);
    });
    dialog->show();
}

void ApplicationPanel::accept()
{
    const auto path = chosenPath();
    if (!path.isNull()) {
        answer(PanelOKButton, path);
    }
}

void ApplicationPanel::reject()
{
    answer(PanelCancelButton, {});
}

void ApplicationPanel::answer(int returnCode, const QString &path)
{
    hide();
    ++m_run;
    const auto end = std::exchange(m_end, nullptr);
    if (end) {
        end(returnCode, path);
    }
}

// Arrow keys in the search field move through the list.
bool ApplicationPanel::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != m_search || event->type() != QEvent::KeyPress || m_model->rowCount() == 0) {
        return QDialog::eventFilter(watched, event);
    }
    const auto key = static_cast<QKeyEvent *>(event)->key();
    const auto last = m_model->rowCount() - 1;
    const auto row = m_list->currentIndex().row();
    if (key == Qt::Key_Down || key == Qt::Key_PageDown) {
        m_list->setFocus();
        m_list->setCurrentIndex(m_model->index(std::min(row + 1, last)));
        return true;
    }
    return QDialog::eventFilter(watched, event);
}

} // namespace platform
