#include "CommandLine/DemoHost.h"

#include <Tallyfoot/Tallyfoot.h>
#include <fcntl.h>
#include <nlohmann/json.hpp>
#include <sys/mman.h>
#include <unistd.h>

#include <condition_variable>
#include <cstdlib>
#include <iostream>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace tallyfoot::commandline {

namespace {

constexpr std::int64_t longPeriod = 3600; // the demo's uploads come by count alone, so that they can be foreseen
constexpr std::int64_t reportEvery = 20;  // events of one thread

// The books go where standard output went; what the library shows there goes to a file.
int takeStandardOutput(const std::string& file) {
    const int books = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    const int shown = ::open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (shown >= 0) {
        ::dup2(shown, STDOUT_FILENO);
        ::close(shown);
    }
    return books;
}

// The kinds of calls that a host makes, in turn. Every event carries its number, so that what arrives
// can be told to be what was logged.
void logOne(std::int64_t number, int thread) {
    const auto id = DemoLedger::identifier(number);
    const auto label = DemoLedger::label(number);
    const Attributes attributes{{LogAttribute::evtId, id}, {LogAttribute::evtLabel, label}};
    switch (number % 6) {
    case 0: Tallyfoot::log(EventType::action, attributes); break;
    case 1: Tallyfoot::log(EventType::gesture, attributes, {{"number", number}, {"thread", thread}}); break;
    case 2: Tallyfoot::log("purchase", attributes, {{"sku", "A/" + std::to_string(number)}, {"price", 9.99}}); break;
    case 3:
        Tallyfoot::logJSON(EventType::screen, attributes, R"({"path":["Home","Basket"],"note":"a jsonsplit b"})");
        break;
    case 4:
        Tallyfoot::logEvent(EventType::selection,
                            {{"evtId", id}, {"evtLabel", label}, {"pgName", "K\u00f6rbe / \"Baskets\""}});
        break;
    default: Tallyfoot::logJSONEvent("search", {{"evtId", id}, {"evtLabel", label}}, "not JSON jsonsplit"); break;
    }
}

void switchTo(const std::string& application) {
    Tallyfoot::setAppInfo(std::make_shared<ApplicationInfo>(application, "demo-2", "Retail", "R-8"));
}

} // namespace

// Who is logged on. The library asks on whatever thread needs to know.
struct DemoHost::User {
    User(DemoLedger& books, std::string first) : ledger(books), name(std::move(first)) {}

    std::shared_ptr<Authentication> authentication() {
        std::unique_lock lock(mutex);
        ++asked;
        if (next) {
            ledger.tell(R"({"asked":true})");
            mayChange.wait(lock, [this] { return changes; });
            name = *std::exchange(next, std::nullopt);
            ledger.tellBegun("userChanged");
        }
        return std::make_shared<Authentication>(name, name + "-token-" + std::to_string(asked));
    }

    DemoLedger& ledger;
    std::mutex mutex;
    std::condition_variable mayChange;
    std::string name;
    std::optional<std::string> next;
    bool changes = false;
    int asked = 0;
};

DemoHost::DemoHost(const DemoHostOptions& options)
    : options_(options), ledger_(takeStandardOutput(options.outputFile), options.begun),
      user_(std::make_shared<User>(ledger_, options.user)) {}

DemoHost::~DemoHost() = default;

int DemoHost::run() {
    switchOn();
    ledger_.tell(R"({"done":"start"})");
    for (std::string line; std::getline(std::cin, line);) obey(line);
    return 0;
}

void DemoHost::switchOn() {
    Tallyfoot::setShowOutput(false);
    auto configuration = std::make_shared<UploadConfiguration>(longPeriod, options_.eventsCount);
    configuration->setUploadPath(options_.url);
    Tallyfoot::setAppInfo(std::make_shared<ApplicationInfo>(options_.application, "demo-1", "Retail", "R-7"));
    Tallyfoot::configure(configuration, {"UISlider"}, [user = user_] { return user->authentication(); });
}

void DemoHost::obey(const std::string& line) {
    const auto order = nlohmann::json::parse(line);
    if (order.contains("log")) {
        log(order.at("log"), order.value("pauseMicroseconds", std::int64_t{0}),
            order.value("application", std::string()));
        ledger_.tell(R"({"done":"log"})");
    } else if (order.contains("crash")) {
        crash();
    } else if (order.contains("nextUser")) {
        const std::lock_guard lock(user_->mutex);
        user_->next = order.at("nextUser").get<std::string>();
    } else if (order.contains("changeUser")) {
        {
            const std::lock_guard lock(user_->mutex);
            user_->changes = true;
        }
        user_->mayChange.notify_all();
    }
}

// A write where nothing may be written.
void DemoHost::crash() {
    ledger_.tell(R"({"crashing":"SIGSEGV"})");
    void* memory = ::mmap(nullptr, 1, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    *static_cast<volatile char*>(memory) = 1;
    std::abort(); // not reached
}

void DemoHost::log(std::int64_t count, std::int64_t pauseMicroseconds, const std::string& application) {
    const auto share = [&](int thread) {
        return count / options_.threads + (thread < count % options_.threads ? 1 : 0);
    };
    std::vector<std::thread> threads;
    threads.reserve(static_cast<std::size_t>(options_.threads));
    for (int thread = 0; thread < options_.threads; ++thread) {
        threads.emplace_back([&, thread, mine = share(thread)] {
            std::int64_t untold = 0;
            for (std::int64_t i = 0; i < mine; ++i) {
                if (thread == 0 && i == mine / 2 && !application.empty()) switchTo(application);
                logOne(ledger_.begin(), thread);
                if (++untold == reportEvery) ledger_.logged(std::exchange(untold, 0));
                if (pauseMicroseconds > 0) std::this_thread::sleep_for(std::chrono::microseconds(pauseMicroseconds));
            }
            ledger_.logged(untold);
        });
    }
    for (auto& thread : threads) thread.join();
}

} // namespace tallyfoot::commandline
