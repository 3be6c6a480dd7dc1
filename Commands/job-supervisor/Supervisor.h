// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Commands/job-supervisor/Client.h"
#include "Commands/job-supervisor/SupervisedJob.h"

#include <poll.h>

#include <list>
#include <map>
#include <memory>
#include <vector>

// Keeps the jobs of one session, on one thread: requests, ends of programs and what is due are
// served in turn.
class Supervisor {
public:
    // The listening socket in its folder, and the descriptors that tell of signals and of changes
    // in that folder.
    struct Descriptors {
        platform::Descriptor socket;
        platform::Descriptor signalsArrived;
        platform::Descriptor folderChanged;
    };

    Supervisor(Descriptors descriptors, QByteArray socketPath);

    // Returns when the last job is unloaded, when asked to end by a signal, or when the session's
    // folder is gone; no program runs then.
    void run();

private:
    using Clock = SupervisedJob::Clock;
    using Jobs = std::map<QByteArray, std::unique_ptr<SupervisedJob>>;

    std::vector<pollfd> wait();
    int millisecondsToNext() const;
    void serve(const std::vector<pollfd> &events);
    void readSignals();
    void reap();
    void acceptClients();
    void removeEndedJobs();
    bool isOver() const;
    bool isSocketThere() const;
    void endAll();

    void handle(Client &client, const QByteArrayList &request);
    void load(Client &client, const QByteArray &file);
    void unload(Client &client, const QByteArray &label);
    QByteArrayList list(const QByteArray &label) const;

    Descriptors m_descriptors;
    QByteArray m_socketPath;
    unsigned long m_socketNumber = 0;
    Jobs m_jobs;
    std::list<Client> m_clients;
    Clock::time_point m_started = Clock::now();
    bool m_served = false;
    bool m_ending = false;
};
