// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Notifications/DistributedNotificationCenter.h"
#include "Platform/Core/Threads/WorkerThreads.h"
#include "Platform/Desktop/PaneLoading/PreferencePane.h"
#include "Preference Pane/Authorization/ShownPaneAuthorization.h"
#include "Preference Pane/Pane/FileWatch.h"
#include "Preference Pane/Pane/RunningActions.h"
#include "Preference Pane/Pane/StartWatch.h"

#include <QTimer>
#include <QVariant>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <optional>

namespace Ui {
class Ostrel_Preference_Pane;
}

enum class ChangeSwitch { No, Yes };

// The pane's controller: owns the controls, shows the listener's state, turns the master switch
// into a start or stop of the listener and keeps its preferences file. Main thread, but for the
// methods that say otherwise.
class Ostrel_Preference_Pane : public platform::PreferencePane {
    Q_OBJECT
public:
    explicit Ostrel_Preference_Pane(const platform::Bundle &bundle);
    ~Ostrel_Preference_Pane() override;

    QWidget *loadMainView(QWidget *parent) override;
    void mainViewDidLoad() override;
    QStringList pages() const override;
    bool showPage(const QString &name) override;

    // Test seam: how long a second of the pane's timers and pauses lasts.
    static void setLengthOfSecond(std::chrono::milliseconds length);

    // Set from creation until the start-up version check has ended: the switch starts nothing.
    bool isLoading() const { return m_isLoading.load(std::memory_order_relaxed); }
    // Set while a start or stop of the listener runs on its worker.
    bool isProcessing() const { return m_isProcessing.load(std::memory_order_relaxed); }

    /// observeValueForKeyPath:ofObject:change:context: for any report of the switch's "on".
    void observeSwitch();
    /// enableDisableClient: starts or stops the listener on a worker, as the switch says.
    void enableDisableClient();
    /// updateEnabledStatus: derives the switch (from job file and status line) and what is enabled.
    void updateEnabledStatus(ChangeSwitch changeSwitch = ChangeSwitch::Yes);
    /// disableInterface disables the master switch and nothing else.
    void disableInterface();

    /// manualUpdateCheck:
    void manualUpdateCheck();
    /// userManual: opens the manual in the desktop's viewer; a failure is not reported.
    void userManual();
    /// leaveFeedback: opens the maker's feedback page in the browser.
    void leaveFeedback();
    /// gatherLogs: collects the logs of the pane and the listener.
    void gatherLogs();

    /// savePrefs: merges the controls into the listener preferences file and writes it atomically.
    void savePrefs();
    /// updateNetworkSettings: saves and asks the listener to relaunch, also when saving failed.
    void updateNetworkSettings();
    /// networkInterfaces: for each one that the system profiler lists, in its order, a dictionary
    /// of "name", for people, and "macAddress", as the profiler writes it. Nothing, after a console
    /// line, where the profiler gives no such list. Waits for it, for 10 seconds at most.
    static std::optional<QVariantList> networkInterfaces();
    /// populateNetworkInterfaces refills the interface menu and selects the saved interface.
    void populateNetworkInterfaces();

    /// updateStatus: shows the status word of a notification, from the listener or of our own.
    void updateStatus(const platform::Notification &notification);
    /// postNotification: posts and arms a time-out of 10 seconds. Any thread.
    void postNotification(const platform::Notification &notification);
    /// fetchCurrentStatus asks the listener for its status and arms a time-out of 10 seconds.
    void fetchCurrentStatus();
    /// scheduleTimeOut: replaces the pending time-out; whole seconds.
    void scheduleTimeOut(std::chrono::seconds interval);
    /// invalidateTimeOut cancels the pending time-out.
    void invalidateTimeOut();
    /// timedOut reports "Timed out".
    void timedOut();
    /// setupClient starts the listener. On a worker.
    void setupClient();
    /// stopClient stops the listener. On a worker.
    void stopClient();
    /// launchClientAfterDelay spins for 15 seconds, then starts a listener not up yet. On a worker.
    void launchClientAfterDelay();
    /// reloadClientIfNew has a listener of another version loaded anew; ends loading. On a worker.
    void reloadClientIfNew();
    /// isProcessRunning: whether a process runs an executable of exactly this name. Any thread.
    static bool isProcessRunning(const QString &processName);

    // Where the listener is installed as a login job. Computed afresh each time.
    static QString jobFilePath();

protected:
    void setProcessing(bool processing);
    // What every start and stop does around its own steps; method is for the log.
    void runClientOperation(const char *method, const std::function<void()> &operation);

private:
    bool isListenerUp() const;
    void connectControls();
    void showPreferences(const QVariantMap &preferences);
    void showPortHint();
    void showSavedInterface(const QVariant &address);
    void readChangedPreferences();
    bool saveAtOnce(); // false where that takes a question
    void savePortBeforeClosing();
    void saveLater(void (Ostrel_Preference_Pane::*save)());
    // Any change of a control. Asks its questions later, not in the middle of the control's code.
    void settingChanged();
    void networkSettingChanged();
    void startStatusPoll();
    void readInterfacesAhead();
    bool authorize();
    void endClientOperation();
    void reloadChangedListener();
    // Runs call on a later pass of the main event loop, unless the pane is gone by then.
    void performLater(std::function<void()> call);
    static std::chrono::milliseconds inPaneTime(std::chrono::seconds interval);
    bool beginAction(QPushButton *button);
    void endAction(QPushButton *button);

    std::unique_ptr<Ui::Ostrel_Preference_Pane> m_ui;
    QWidget *m_mainView = nullptr;
    std::atomic<bool> m_isLoading = true;
    std::atomic<bool> m_isProcessing = false;
    QTimer m_messageTimer;
    bool m_isTimeOutOfPoll = false; // that which m_messageTimer waits for
    QTimer m_statusTimer;
    QTimer m_portTimer;
    enum class Saving { Done, Waits, Closed } m_saving = Saving::Done; // waits: for its questions
    std::future<QString> m_systemProfile;
    RunningActions m_actions;
    std::unique_ptr<platform::DistributedObserver> m_statusObserver;
    ShownPaneAuthorization m_authorization;
    FileWatch m_preferencesWatch;
    platform::WorkerThreads m_workers;
    StartWatch m_startWatch;
};
