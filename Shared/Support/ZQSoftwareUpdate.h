// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Threads/WorkerThreads.h"

#include <QObject>

// Launches the maker's updater, an application of its own. It is installed in "/Applications", and
// a copy may lie in the resources of the bundle that holds this class; the newer one is run.
// Failures are logged and otherwise silent. The class operations: any thread.
class ZQSoftwareUpdate : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY(ZQSoftwareUpdate)
public:
    // An instance, of the main thread, is for an interface file. The end of one waits for its
    // check to be launched.
    explicit ZQSoftwareUpdate(QObject *parent = nullptr) : QObject(parent) {}

    /// updaterPath
    /// The installed updater, be it there or not, unless the enclosed one has the higher version
    /// ("CFBundleVersion" as a whole number): then that one's working copy in the temporary folder,
    /// made anew at every call.
    static QString updaterPath();

    // Whether there is an updater to launch, installed or enclosed.
    static bool isAvailable();

    /// launchSoftwareUpdate
    /// Launches the updater as an application, for a check that the user asks for. The main thread
    /// dispatches events while a working copy is made.
    static void launchSoftwareUpdate();

    /// automaticallyCheckForUpdates
    /// Runs the updater's executable with "-checkpath" and the path of the bundle that holds this
    /// class, and does not wait for it. For a worker thread.
    static void automaticallyCheckForUpdates();

    /// startup
    /// Checks automatically, on a thread of its own, unless "SUCheckAtStartup" in the preferences
    /// that all of the maker's programs share is NO. Missing counts as YES.
    void startup();

    /// awakeFromNib
    /// For whoever has loaded the interface.
    Q_INVOKABLE void awakeFromNib() { startup(); }

public Q_SLOTS:
    /// manualUpdateCheck:
    void manualUpdateCheck() { launchSoftwareUpdate(); }

private:
    platform::WorkerThreads m_workers;
};
