#include "Crash/Places.h"

#include "Tallyfoot/Platform/Dispatch.h"
#include "Tallyfoot/Platform/PlatformServices.h"
#include "Tallyfoot/Platform/URLSession.h"
#include "Tallyfoot/Recording/Timing/Repeater.h"
#include "Tallyfoot/Tallyfoot.h"

#include <unistd.h>

#include <thread>
#include <utility>

namespace tallyfoot::testing {

namespace {

void onTimerQueue(const std::function<void()>& block) {
    const auto repeater = Repeater::once(*defaultPlatformServices().dispatch, RepeaterInterval::milliseconds(1),
                                         nullptr, [block](Repeater&) { block(); });
    waitForTheEnd();
}

void onUploadThread(const std::function<void()>& block) {
    const auto session = defaultPlatformServices().makeURLSession();
    URLRequest request;
    request.url = "http://127.0.0.1:1/"; // refused
    session->dataTask(std::move(request), [block](Result<std::string>) { block(); });
    waitForTheEnd();
}

} // namespace

std::vector<Place> places() {
    return {{"MainThread", [](const auto& block) { block(); }},
            {"Worker", onWorker},
            {"RecorderQueue", onRecorderQueue},
            {"TimerQueue", onTimerQueue},
            {"UploadThread", onUploadThread}};
}

void onWorker(const std::function<void()>& block) {
    std::thread([&] {
        Tallyfoot::log("worker", {});
        block();
    }).join();
}

void onRecorderQueue(const std::function<void()>& block) {
    const auto queue = defaultPlatformServices().dispatch->makeQueue("EventRecorder");
    queue->async(block);
    waitForTheEnd();
}

void waitForTheEnd() {
    for (;;) ::pause();
}

} // namespace tallyfoot::testing
