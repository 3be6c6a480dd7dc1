// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

// Requests for the authorisation, each made on a thread of its own: so it holds up nobody who waits
// for it. The main thread dispatches events meanwhile, and a worker that is to end waits no longer.
// Any thread.
class AuthorizationRequests {
public:
    // Whether nobody waits any more, or giveUp() was called. What asks is to end soon then.
    using IsGivenUp = std::function<bool()>;
    using Ask = std::function<bool(const IsGivenUp &)>;

    AuthorizationRequests() = default;
    // Gives up what is still asked and waits for its end. Nobody may wait for it any more.
    ~AuthorizationRequests();
    AuthorizationRequests(const AuthorizationRequests &) = delete;
    AuthorizationRequests &operator=(const AuthorizationRequests &) = delete;

    // Makes a request, or joins the one that another has made by join() and that is not answered
    // yet, and waits for its answer. False for who waits no longer. One asks at a time; who makes a
    // request outlives it.
    bool join(const Ask &ask);

    // The same for a request that nobody joins.
    bool make(const Ask &ask);

    // Gives up all that are not answered yet.
    void giveUp();

private:
    struct Request;
    enum class MayBeJoined : bool { No, Yes };

    bool await(const Ask &ask, MayBeJoined mayBeJoined);
    void perform(const std::shared_ptr<Request> &request, const Ask &ask);
    bool leave(Request &request);

    std::mutex m_asking;
    std::mutex m_mutex; // for what follows
    std::vector<std::shared_ptr<Request>> m_open;
};
