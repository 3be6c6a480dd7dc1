// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Threads/WorkerThreads.h"

#include <QDialog>
#include <QHash>

#include <functional>

class QLineEdit;
class QPushButton;

namespace platform {

class ApplicationListModel;
class ApplicationListView;

// What an open panel returns.
enum PanelReturn { PanelCancelButton = 0, PanelOKButton = 1 };

// NSOpenPanel for applications: lists those that are installed, searches them while somebody types,
// and lets them pick one among the files too. The title is the window's.
//
// An answer hides the panel, which never deletes itself and may begin again. Main thread only.
class ApplicationPanel : public QDialog {
    Q_OBJECT
public:
    // A PanelReturn and the path of the chosen application, null unless that is PanelOKButton.
    using End = std::function<void(int returnCode, const QString &path)>;

    explicit ApplicationPanel(QWidget *parent = nullptr);
    ~ApplicationPanel() override;

    // Where applications are: the ".app" folders in it are listed first, and the choice among files
    // starts there. Null, or a folder that does not exist: with the system's applications.
    void setFolder(const QString &folder) { m_folder = folder; }

    // What the list says of applications besides, by their identifiers.
    void setNotes(const QHash<QString, QString> &notes) { m_notes = notes; }

    /// beginSheetForDirectory:file:types:modalForWindow:modalDelegate:didEndSelector:contextInfo:
    /// Shows the panel as a sheet on the parent's window, a dialog of its own for null. Calls end
    /// once, when the panel is hidden already; end may delete the panel. It is not called where the
    /// panel is destroyed before.
    void begin(QWidget *parent, End end);

    void accept() override;
    void reject() override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void load();
    void search(const QString &text);
    void updateButtons();
    void browse();
    void answer(int returnCode, const QString &path);
    QString chosenPath() const;

    QString m_folder;
    QHash<QString, QString> m_notes;
    End m_end;
    ApplicationListModel *m_model;
    ApplicationListView *m_list;
    QLineEdit *m_search;
    QPushButton *m_add = nullptr;
    quint64 m_run = 0; // of begin(): what a former one has read comes too late
    WorkerThreads m_workers;
};

} // namespace platform
