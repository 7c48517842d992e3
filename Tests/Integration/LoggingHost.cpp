// A host application that does as it is told on standard input and acknowledges each event whose call
// has returned, in a line "ack ID" on standard output, among whatever the library writes there. It may
// be killed at any instant.
//
//     log COUNT              one thread
//     burst THREADS COUNT    that many threads, COUNT events each
//     roam THREADS COUNT     the same, while another thread goes from application to application
//     switch APPLICATION     another application
//     quit
#include <Tallyfoot/Tallyfoot.h>
#include <unistd.h>

#include <atomic>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace tallyfoot;

class LoggingHost {
public:
    LoggingHost(const std::string& url, const std::string& application, std::string run) : run_(std::move(run)) {
        Tallyfoot::setShowOutput(false);
        auto configuration = std::make_shared<UploadConfiguration>(10, 10);
        configuration->setUploadPath(url);
        switchTo(application);
        Tallyfoot::configure(configuration, {}, [] { return std::make_shared<Authentication>("user-1", "token-1"); });
        acknowledge("ready");
    }

    void switchTo(const std::string& application) {
        Tallyfoot::setAppInfo(std::make_shared<ApplicationInfo>(application, "id", "area", "area-id"));
    }

    void log(int count) {
        for (int event = 0; event < count; ++event) {
            const auto number = ++logged_;
            const std::string id = run_ + "-" + std::to_string(number);
            if (number % 3 == 0)
                Tallyfoot::log(EventType::action, {{LogAttribute::evtId, id}, {LogAttribute::evtLabel, "Buy"}},
                               {{"sku", "A-1"}, {"number", number}});
            else
                Tallyfoot::log("purchase", {{LogAttribute::evtId, id}, {LogAttribute::screenTitle, "Basket"}});
            acknowledge(id);
        }
    }

    void burst(int threads, int count) {
        std::vector<std::thread> loggers;
        for (int thread = 0; thread < threads; ++thread) loggers.emplace_back([this, count] { log(count); });
        for (auto& logger : loggers) logger.join();
    }

    void roam(int threads, int count) {
        std::atomic<bool> isOver = false;
        std::thread traveller([&] {
            while (!isOver)
                for (const auto* application : {"Bank", "Cafe", "Shop"}) switchTo(application);
        });
        burst(threads, count);
        isOver = true;
        traveller.join();
    }

private:
    // One write, so that lines of several threads never mix and nothing waits in a buffer.
    static void acknowledge(const std::string& text) {
        const std::string line = "ack " + text + "\n";
        if (::write(STDOUT_FILENO, line.data(), line.size()) < 0) ::_exit(1);
    }

    std::string run_;
    std::atomic<int> logged_ = 0;
};

} // namespace

int main(int count, char** arguments) {
    if (count != 4) return 2;
    LoggingHost host(arguments[1], arguments[2], arguments[3]);
    for (std::string line; std::getline(std::cin, line);) {
        std::istringstream words(line);
        std::string command;
        words >> command;
        if (command == "quit") break;
        if (command == "switch") {
            std::string application;
            words >> application;
            host.switchTo(application);
        } else if (command == "burst" || command == "roam") {
            int threads = 0;
            int events = 0;
            words >> threads >> events;
            command == "roam" ? host.roam(threads, events) : host.burst(threads, events);
        } else {
            int events = 0;
            words >> events;
            host.log(events);
        }
    }
    return 0;
}
