#pragma once

#include "Tallyfoot/Platform/Mutex.h"

#include <httplib.h>

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <thread>
#include <vector>

namespace tallyfoot::collector {

// Runs each connection on a thread of its own, which is used again: a client that waits, or that only
// holds its connection, keeps nobody else waiting. Called by the server's accepting thread alone.
class WorkerPool final : public httplib::TaskQueue {
public:
    void enqueue(std::function<void()> job) override;
    void shutdown() override; // once what was queued is done

private:
    static constexpr std::size_t maximumThreads = 512;

    void addThread();
    std::function<void()> next(); // none at the end

    Mutex mutex_;
    std::condition_variable_any changed_;
    std::deque<std::function<void()>> jobs_ TALLYFOOT_GUARDED_BY(mutex_);
    std::size_t idle_ TALLYFOOT_GUARDED_BY(mutex_) = 0;
    bool ended_ TALLYFOOT_GUARDED_BY(mutex_) = false;
    std::vector<std::thread> threads_;
};

} // namespace tallyfoot::collector
