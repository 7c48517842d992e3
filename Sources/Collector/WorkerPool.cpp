#include "Collector/WorkerPool.h"

#include <system_error>
#include <utility>

namespace tallyfoot::collector {

void WorkerPool::enqueue(std::function<void()> job) {
    bool isOneShort = false;
    {
        MutexLock lock(mutex_);
        jobs_.push_back(std::move(job));
        isOneShort = jobs_.size() > idle_;
        changed_.notify_one();
    }
    if (isOneShort && threads_.size() < maximumThreads) addThread();
}

void WorkerPool::addThread() {
    try {
        threads_.emplace_back([this] {
            while (const auto job = next()) job();
        });
    } catch (const std::system_error&) { // the system has none to give: the job waits for one of the others
    }
}

std::function<void()> WorkerPool::next() {
    MutexLock lock(mutex_);
    ++idle_;
    while (jobs_.empty() && !ended_) changed_.wait(mutex_);
    --idle_;
    if (jobs_.empty()) return nullptr;
    auto job = std::move(jobs_.front());
    jobs_.pop_front();
    return job;
}

void WorkerPool::shutdown() {
    {
        MutexLock lock(mutex_);
        ended_ = true;
        changed_.notify_all();
    }
    for (auto& thread : threads_) thread.join();
}

} // namespace tallyfoot::collector
