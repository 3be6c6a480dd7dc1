// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/SerialWorker.h"

#include <memory>

namespace platform {

// Entries that are handled in the background, one after the other, in the order in which they were
// added.
template <typename Entry>
class SerialQueue : private SerialWorker {
public:
    // Both are called on the queue's own thread: handle with each entry, endBatch after a number of
    // them, before they count as finished. What they raise ends the program.
    template <typename Handle>
    SerialQueue(const char *threadName, Handle handle, std::function<void()> endBatch)
        : SerialWorker(
              threadName,
              [handle = std::move(handle)](Job *job, Fate fate) {
                  const std::unique_ptr<Item> item(static_cast<Item *>(job));
                  if (fate == Fate::Run) {
                      handle(item->entry);
                  }
              },
              std::move(endBatch))
    {
    }

    // Any thread; inside handle the entry becomes the next in line.
    void add(Entry entry) { SerialWorker::add(new Item{{}, std::move(entry)}); }

    using SerialWorker::pending;
    using SerialWorker::stop;
    using SerialWorker::waitUntilIdle;

private:
    struct Item : Job {
        Entry entry;
    };
};

} // namespace platform
