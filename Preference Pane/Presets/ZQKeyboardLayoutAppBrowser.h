// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Bundles/Bundle.h"
#include "Platform/Desktop/Tables/TableView.h"
#include "Preference Pane/Presets/PresetTransfer.h"
#include "Preference Pane/Presets/ZQKeyboardLayoutEditController.h"

#include <QDialog>
#include <QHash>
#include <QList>
#include <QPointer>
#include <QSet>
#include <QStringList>

#include <array>
#include <memory>

namespace platform {
class ApplicationPanel;
} // namespace platform

// The presets, the user's and the default ones, each with the icon of the application it is for. A
// title that both have shows twice, so that users see that there is a default one; both rows stand
// for the user's file. Main thread only.
class ZQKeyboardLayoutAppBrowser : public QObject, public platform::TableDataSource {
    Q_OBJECT
public:
    struct Row {
        QString title;
        QStringList bundleIDs;
        bool isUsers = false; // from the user's folder
        // What the desktop calls the application from whose file the title is; null for a title
        // that somebody chose.
        QString name = {};
    };
    // Whose preset a row stands for. Replaced: a default one beside the user's of its title.
    enum class Owner { Maker, User, Replaced };
    // By which two states of a file are told apart: its inode, size and times.
    using FileStamps = QHash<QString, std::array<qint64, 6>>;

    // The bundle that has the default layouts.
    explicit ZQKeyboardLayoutAppBrowser(platform::Bundle bundle);
    ~ZQKeyboardLayoutAppBrowser() override;

    /// awakeFromNib: fills both tables and shows the first preset.
    void awakeFromNib();
    /// populateApplications: reads the presets anew, sorted by title.
    void populateApplications();
    /// addApplication: lets the user choose an application that a blank preset is made for.
    void addApplication();
    /// appBrowseDidEnd:returnCode:contextInfo:
    /// Makes the preset for the application at the path if the code is 1, and selects it. Alerts,
    /// and waits for their answer, where that fails.
    void appBrowseDidEnd(platform::ApplicationPanel *panel, int returnCode, const QString &path);
    /// removeApplication: moves the selected preset's user file to the Trash when the user confirms
    /// it. A default preset stays.
    void removeApplication();
    /// pathForPreset:
    /// The user's file of that title where there is one, else that of the default preset.
    QString pathForPreset(const QString &title) const;

    int numberOfRowsInTableView() const override;
    QVariant tableViewObjectValueForTableColumn(const QString &column, int row) const override;
    void tableViewWillDisplayCell(platform::TableCell &cell, const QString &column,
                                  int row) const override;
    /// tableViewSelectionDidChange:
    void tableViewSelectionDidChange();

    const QList<Row> &dataArray() const { return m_dataArray; }
    platform::TableView *tableView() const { return m_tableView; }
    void setTableView(platform::TableView *tableView);
    ZQKeyboardLayoutEditController *editController() const { return m_editController; }
    void setEditController(ZQKeyboardLayoutEditController *editController);

    // The title of the selected preset; null for none.
    QString selectedTitle() const;
    // The same for people: the desktop's name of the application where the title is a file's name.
    QString selectedName() const;
    bool hasPreset(const QString &title) const;
    Owner ownerOfRow(int row) const;
    // To be called when the user's files may have changed: shows what others than our editor did
    // to them. The selection stays at its preset, or goes with it. A change of ours that could not
    // be written stays in sight.
    void followFiles();
    // Selects the first row of that title, which ends a filter that hides it, and shows it in the
    // editor.
    void showPreset(const QString &title);

Q_SIGNALS:
    // Others have changed which presets there are.
    void listChanged();
    // The user's file of a preset was moved to the Trash, or replaced by that of an application
    // that was added.
    void presetTakenAway(const presets::KeptPreset &preset);

private:
    void loadSelectedPreset();
    void addPresetFor(const QString &path, const QString &identifier);
    // The title of the user's preset for the application; null for none.
    QString servingTitle(const QString &identifier) const;
    // What the panel says of the applications that have a preset, by their identifiers.
    QHash<QString, QString> notesOnApplications() const;
    QList<Row> readRows() const;
    static FileStamps stampsOfUsersFiles();
    bool isListed(const QString &title, const QStringList &bundleIDs) const;
    void followList();
    QString noteOnRow(int row) const;
    QString toolTipOfRow(int row) const;

    platform::Bundle m_bundle;
    QList<Row> m_dataArray;
    // Of which titles the user has a preset; of those that were made by an edit no row tells.
    QSet<QString> m_usersTitles;
    FileStamps m_stamps; // of the user's files when they were read
    struct DeleteLater {
        void operator()(QDialog *panel) const;
    };

    // Kept until the next one.
    std::unique_ptr<QDialog, DeleteLater> m_panel;
    QPointer<platform::TableView> m_tableView;
    QPointer<ZQKeyboardLayoutEditController> m_editController;
};
