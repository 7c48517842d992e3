#include "Tallyfoot/Platform/Posix/PosixURLSession.h"

#include "Tallyfoot/Platform/Exclusive.h"
#include "Tallyfoot/Platform/Posix/CurlTransfer.h"
#include "Tallyfoot/Platform/Posix/DetachedThread.h"
#include "Tallyfoot/Platform/Posix/ExitGate.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>
#include <utility>
#include <vector>

namespace tallyfoot {

namespace {

constexpr std::size_t maximumActive = 6; // as many as the platform's session opens to one host

struct Task {
    URLRequest request;
    DataTaskCompletion completion;
};

struct Finished {
    DataTaskCompletion completion;
    Result<std::string> outcome;
};

// Once, by the maker of the first session: were it left to the session's own thread, the process might
// end in the middle, with TLS half set up and the gate not yet there.
bool setUpCurl() {
    static const bool isSetUp = [] {
        if (curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK) return false;
        ExitGate::install();
        return true;
    }();
    return isSetUp;
}

// Fills the numbers of standard streams that the host has closed. libcurl opens the sockets by which its
// threads wake it by itself: under such a number they would get the trace, and be gone when the host opens
// its stream. The numbers stay filled: the host may put a stream of its own there at any time, which takes
// the place of ours, and whoever closed ours then would close the host's.
void fillClosedStreams() {
    int file = 0;
    do file = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    while (file >= 0 && file <= STDERR_FILENO);
    if (file >= 0) ::close(file);
}

} // namespace

// What the session and its thread share, and what only the thread touches.
class PosixURLSession::Worker {
public:
    static void add(const std::shared_ptr<Worker>& worker, Task task) {
        const bool isFirst = worker->enqueue(std::move(task));
        if (!isFirst) return worker->wake();
        if (!startDetachedThread("URLSession", [worker] { worker->run(); })) worker->failWaiting();
    }

    void stop() {
        // Dropped outside the lock: what a completion holds is released with it.
        std::deque<Task> dropped;
        shared_.modify([&](Shared& shared) {
            shared.isStopped = true;
            shared.waiting.swap(dropped);
        });
        wake();
    }

private:
    using Clock = std::chrono::steady_clock;

    struct Shared {
        std::deque<Task> waiting;
        bool isStopped = false;
        bool isStarted = false;
        CURLM* multi = nullptr; // while the thread has one
    };

    bool enqueue(Task task) {
        return shared_.modify([&](Shared& shared) {
            shared.waiting.push_back(std::move(task));
            return !std::exchange(shared.isStarted, true);
        });
    }

    // With the lock held, so that nobody but the thread ever closes connections: it alone is deaf to
    // the signal that a broken one raises.
    void wake() {
        shared_.read([](const Shared& shared) {
            if (shared.multi != nullptr) curl_multi_wakeup(shared.multi);
        });
    }

    bool isStopped() const {
        return shared_.read([](const Shared& shared) { return shared.isStopped; });
    }

    void failWaiting() {
        auto tasks = shared_.modify([](Shared& shared) {
            shared.isStarted = false;
            return std::exchange(shared.waiting, {});
        });
        std::vector<Finished> failed;
        failed.reserve(tasks.size());
        for (auto& task : tasks)
            failed.push_back({std::move(task.completion), Error{"The system has no means left to send anything"}});
        deliver(std::move(failed));
    }

    void run() {
        if (!setUp()) return failWaiting();
        while (!isStopped()) {
            const auto now = Clock::now();
            auto finished = advance(now);
            const bool isIdle = finished.empty();
            deliver(std::move(finished));
            if (isIdle) wait();
        }
        tearDown();
        ExitGate::passUntilThreadEnds();
    }

    bool setUp() {
        const ExitGate::Pass pass;
        if (!setUpCurl()) return false;
        fillClosedStreams();
        CurlMulti multi(curl_multi_init());
        // Where no files were free libcurl makes one that cannot be woken: it would sleep through later tasks.
        if (!multi || curl_multi_wakeup(multi.get()) != CURLM_OK) return false;
        multi_ = std::move(multi);
        shared_.modify([this](Shared& shared) { shared.multi = multi_.get(); });
        return true;
    }

    void tearDown() {
        // What the completions hold is somebody else's: it is released outside the gate.
        std::vector<DataTaskCompletion> dropped;
        const ExitGate::Pass pass;
        for (const auto& transfer : active_) {
            curl_multi_remove_handle(multi_.get(), transfer->handle());
            dropped.push_back(transfer->releaseCompletion());
        }
        active_.clear();
        shared_.modify([](Shared& shared) { shared.multi = nullptr; });
        multi_.reset();
    }

    // One step of everything that is under way.
    std::vector<Finished> advance(Clock::time_point now) {
        const ExitGate::Pass pass;
        std::vector<Finished> finished;
        begin(now, finished);
        int running = 0;
        curl_multi_perform(multi_.get(), &running);
        collect(now, finished);
        expire(now, finished);
        return finished;
    }

    void begin(Clock::time_point now, std::vector<Finished>& finished) {
        while (active_.size() < maximumActive) {
            auto task = nextTask();
            if (!task) return;
            auto transfer = std::make_unique<CurlTransfer>(std::move(task->request), std::move(task->completion));
            if (start(*transfer, now))
                active_.push_back(std::move(transfer));
            else
                finish(*transfer, transfer->notSent(), finished);
        }
    }

    std::optional<Task> nextTask() {
        return shared_.modify([](Shared& shared) -> std::optional<Task> {
            if (shared.waiting.empty()) return std::nullopt;
            auto task = std::move(shared.waiting.front());
            shared.waiting.pop_front();
            return task;
        });
    }

    bool start(CurlTransfer& transfer, Clock::time_point now) {
        if (!transfer.prepare(now)) return false;
        curl_easy_setopt(transfer.handle(), CURLOPT_RESOLVER_START_FUNCTION, &Worker::beforeResolving);
        return curl_multi_add_handle(multi_.get(), transfer.handle()) == CURLM_OK;
    }

    // A host's address is asked for on a thread of libcurl's, which it has sockets for.
    static int beforeResolving(void*, void*, void*) noexcept {
        fillClosedStreams();
        return 0;
    }

    void collect(Clock::time_point now, std::vector<Finished>& finished) {
        int left = 0;
        while (const auto* message = curl_multi_info_read(multi_.get(), &left)) {
            if (message->msg != CURLMSG_DONE) continue;
            const auto code = message->data.result; // the message goes with its handle
            CurlTransfer* transfer = nullptr;
            curl_easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, &transfer);
            curl_multi_remove_handle(multi_.get(), transfer->handle());
            if (transfer->followsRedirect(code)) {
                if (start(*transfer, now)) continue;
                finish(*transfer, transfer->notSent(), finished);
            } else {
                finish(*transfer, transfer->outcome(code), finished);
            }
            std::erase_if(active_, [&](const auto& one) { return one.get() == transfer; });
        }
    }

    void expire(Clock::time_point now, std::vector<Finished>& finished) {
        std::erase_if(active_, [&](const auto& transfer) {
            if (transfer->deadline(now) > now) return false;
            curl_multi_remove_handle(multi_.get(), transfer->handle());
            finish(*transfer, transfer->timedOut(), finished);
            return true;
        });
    }

    void finish(CurlTransfer& transfer, Result<std::string> outcome, std::vector<Finished>& finished) {
        finished.push_back({transfer.releaseCompletion(), std::move(outcome)});
    }

    void deliver(std::vector<Finished> finished) {
        for (auto& one : finished) {
            if (isStopped()) return;
            one.completion(std::move(one.outcome));
            one.completion = nullptr;
        }
    }

    // Until something can be sent or received, a silence has lasted too long, or somebody calls.
    void wait() {
        const auto now = Clock::now();
        auto until = now + std::chrono::hours(1);
        for (const auto& transfer : active_) until = std::min(until, transfer->deadline(now));
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - now).count();
        const auto limit = static_cast<int>(std::max<std::int64_t>(left, 0));
        if (curl_multi_poll(multi_.get(), nullptr, 0, limit, nullptr) == CURLM_OK) return;
        // The system does not let us wait for files, a process that may have none for one: now and then will do.
        ::poll(nullptr, 0, std::min(limit, 50));
    }

    Exclusive<Shared> shared_;

    // The thread's own.
    CurlMulti multi_;
    std::vector<std::unique_ptr<CurlTransfer>> active_;
};

PosixURLSession::PosixURLSession() : worker_(std::make_shared<Worker>()) { (void)setUpCurl(); }

PosixURLSession::~PosixURLSession() { worker_->stop(); }

void PosixURLSession::dataTask(URLRequest request, DataTaskCompletion completion) {
    Worker::add(worker_, {std::move(request), std::move(completion)});
}

} // namespace tallyfoot
