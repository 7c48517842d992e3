#include "CommandLine/DemoSession.h"

#include <csignal>
#include <fstream>
#include <stdexcept>
#include <vector>

namespace tallyfoot::commandline {

namespace {

using nlohmann::json;

constexpr std::chrono::seconds patience{30};    // without anything new
constexpr std::chrono::milliseconds glance{40}; // between two looks
constexpr std::int64_t leftOnDisk = 7;
constexpr std::int64_t leftAtCrash = 11;
constexpr std::int64_t loggedWhileAsked = 9;
constexpr const char* firstApplication = "Demo Shop";
constexpr const char* secondApplication = "Demo Outlet";
constexpr const char* firstUser = "user-1";
constexpr const char* secondUser = "user-2";
constexpr const char* hostOutput = "host-output.txt";

// The host's application bundle. Its facts go into every upload.
constexpr const char* bundleInformation = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
    <key>CFBundleName</key><string>Demo</string>
    <key>CFBundleShortVersionString</key><string>1.0</string>
    <key>CFBundleVersion</key><string>1</string>
</dict>
</plist>
)";

ChildProcess started(Result<ChildProcess> process) {
    if (!process) throw std::runtime_error("cannot start a process: " + process.error().description);
    return std::move(process).value();
}

} // namespace

DemoSession::DemoSession(const DemoOptions& options, const std::string& tool, const std::filesystem::path& folder,
                         DemoProgress& progress)
    : options_(options), tool_(tool), folder_(folder), progress_(progress), collector_(startCollector(tool, folder)),
      client_(port(collector_)), host_(startHost(firstApplication, firstUser)) {}

ChildProcess DemoSession::startCollector(const std::string& tool, const std::filesystem::path& folder) {
    return started(
        ChildProcess::start({tool, "collect", "--port", "0", "--database", (folder / "collector.sqlite").string()}));
}

int DemoSession::port(ChildProcess& collector) {
    const auto line = collector.readLine(patience);
    if (!line) throw std::runtime_error("the collector does not start");
    return json::parse(*line).at("port").get<int>();
}

ChildProcess DemoSession::startHost(const std::string& application, const std::string& user,
                                    std::int64_t loggedBefore) const {
    std::filesystem::create_directories(folder_ / "bundle");
    std::ofstream(folder_ / "bundle/Info.plist") << bundleInformation;
    const auto url = "http://127.0.0.1:" + std::to_string(client_.port()) + "/upload";
    std::vector<std::string> arguments{
        tool_, "demo-host", "--threads", std::to_string(options_.threads), "--begun", std::to_string(loggedBefore)};
    if (isShop()) arguments = {options_.shop, "--seed", std::to_string(options_.seed + (loggedBefore > 0 ? 1 : 0))};
    arguments.insert(arguments.end(),
                     {"--url", url, "--events-count", std::to_string(options_.eventsCount), "--application",
                      application, "--user", user, "--output", (folder_ / hostOutput).string()});
    return started(ChildProcess::start(arguments, {{"XDG_DATA_HOME", (folder_ / "data").string()},
                                                   {"XDG_CONFIG_HOME", (folder_ / "config").string()},
                                                   {"TALLYFOOT_MAIN_BUNDLE", (folder_ / "bundle").string()}}));
}

void DemoSession::play() {
    progress_.step("A collector and a host start, each a process of its own");
    waitUntil("the host starts", [this] { return !isHostBusy_; });
    const auto triggers = std::int64_t{5} * (options_.eventsCount + 1) + leftOnDisk + leftAtCrash
                          + loggedWhileAsked; // of the steps without a count
    const auto share = std::max<std::int64_t>((options_.events - triggers) / 4, options_.threads);
    logFromSeveralThreads(2 * share);
    failOnce("The connection is reset in the middle of an upload",
             {{"kind", "reset"}, {"afterBytes", 2000}, {"times", 20}});
    failOnce("Of two files the server refuses one", {{"kind", "refuse"}, {"files", {{"every", 2}}}});
    failOnce("The server takes an upload, but its answer is lost", {{"kind", "dropReply"}, {"times", 20}});
    logFromSeveralThreads(share);
    changeUser();
    if (isShop()) {
        logFromSeveralThreads(share);
    } else {
        changeApplication(share);
    }
    crashAndStartAgain();
    leaveSome();
    endHost();
}

void DemoSession::logFromSeveralThreads(std::int64_t count) {
    progress_.step(walk(count));
    orderLog(count, {{"pauseMicroseconds", options_.pauseMicroseconds}});
    waitUntil("all uploads are confirmed", [this] { return isSettled(); });
}

// Exactly one trigger, so that the fault meets exactly the upload that is meant. A connection that
// breaks takes several of its kind: after a kept one the client tries the next at once, and gives up
// only on a fresh one.
void DemoSession::failOnce(const std::string& what, const json& fault) {
    progress_.step(what);
    setFaults(json::array({fault}));
    const auto before = uploads_;
    orderLog(untilTrigger());
    waitUntil("the upload fails and its files are taken back",
              [this, before] { return !isHostBusy_ && uploads_ > before && !disk_.hasArchives && disk_.closed > 0; });
    setFaults(json::array()); // those that were not needed
}

// The host keeps logging while it finds out who the user is; all of that is the former user's.
void DemoSession::changeUser() {
    progress_.step("The server rejects the token, and another user has logged on");
    setFaults(json::array({{{"kind", "status"}, {"statusCode", "10000003"}}}));
    host_.writeLine(json{{"nextUser", secondUser}}.dump());
    orderLog(untilTrigger());
    waitUntil("the host is asked for credentials", [this] { return !isHostBusy_ && isHostAsked_; });
    orderLog(loggedWhileAsked);
    waitUntil("the host logs while it is asked", [this] { return !isHostBusy_; });
    host_.writeLine(json{{"changeUser", true}}.dump());
    waitUntil("the former user's logs are deleted", [this] {
        return begunAtUserChange_.has_value() && disk_.open + disk_.closed + disk_.packed == 0 && !disk_.hasArchives;
    });
    discarded_ = logged_ - confirmed_;
}

void DemoSession::changeApplication(std::int64_t count) {
    progress_.step("The host becomes another application while " + std::to_string(count) + " events are logged");
    orderLog(count, {{"pauseMicroseconds", options_.pauseMicroseconds}, {"application", secondApplication}});
    waitUntil("all uploads of both applications are confirmed", [this] { return isSettled(); });
}

// With events on disk that are not yet sent. What tells the crash is one event more.
void DemoSession::crashAndStartAgain() {
    progress_.step("The host crashes on purpose, with " + std::to_string(leftAtCrash) + " events not yet sent");
    leave(leftAtCrash);
    host_.writeLine(json{{"crash", true}}.dump());
    listenToTheEnd();
    crash_ = DemoCrash::waiting(folder_ / "config");
    if (!crash_) throw std::runtime_error("the host did not keep its crash");
    if (crash_->reason != reasonToCrash_) {
        throw std::runtime_error("the host crashed with \"" + reasonToCrash_ + "\" and kept \"" + crash_->reason
                                 + "\"");
    }
    progress_.step("The host starts again, and tells its crash");
    loggedBefore_ = ++logged_;
    isHostBusy_ = true;
    isKindsTold_ = false;
    host_ = startHost(isShop() ? firstApplication : secondApplication, secondUser, loggedBefore_);
    waitUntil("the crash is told", [this] { return !isHostBusy_ && disk_.open == leftAtCrash + 1; });
    if (DemoCrash::waiting(folder_ / "config")) throw std::runtime_error("the crash would be told again");
}

void DemoSession::leaveSome() {
    progress_.step("The last uploads; " + std::to_string(leftOnDisk) + " events stay for the host's next start");
    leave(leftOnDisk);
}

// So many events in the file being written, and all others confirmed.
void DemoSession::leave(std::int64_t count) {
    const auto open = [this] { return static_cast<std::int64_t>(disk_.open); };
    if (open() > count) {
        orderLog(untilTrigger());
        waitUntil("everything is confirmed", [&] { return isSettled() && open() == 0; });
    }
    if (open() < count) orderLog(count - open());
    waitUntil("the last events are written", [&] { return isSettled() && open() == count; });
}

// What a host tells last must be heard before its status is asked for: it may wait to be read.
void DemoSession::listenToTheEnd() {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!host_.hasEnded() && std::chrono::steady_clock::now() < deadline) listenToHost();
    const auto status = host_.wait(patience);
    if (!status) throw std::runtime_error("the host hangs in its crash");
    // The shop ends as Foundation ends a program for an exception.
    if (isShop() ? *status == 0 : *status != SIGSEGV) {
        throw std::runtime_error("the host that crashed ended with status " + std::to_string(*status));
    }
}

void DemoSession::endHost() {
    host_.closeInput();
    const auto status = host_.wait(patience);
    listenToHost();
    if (status != 0) throw std::runtime_error("the host ended with status " + std::to_string(status.value_or(-1)));
    progress_.endStep();
}

DemoAccount DemoSession::account() {
    const auto events = ask("/v1/events").at("events");
    const auto uploads = ask("/v1/uploads").at("uploads");
    const auto problems = ask("/v1/problems").at("problems");
    return {evidence(), events, uploads, problems};
}

// The shop's records are known by what the library showed of them, in their order.
DemoEvidence DemoSession::evidence() {
    DemoEvidence evidence;
    evidence.logged = logged_;
    evidence.begunAtUserChange = begunAtUserChange_;
    evidence.userAfterChange = secondUser;
    evidence.crash = crash_;
    if (isShop()) {
        trace_ = DemoTrace::read(folder_ / hostOutput);
        evidence.number = [this](std::string_view identifier) { return trace_.number(identifier); };
        evidence.label = [this](std::int64_t number) { return trace_.facts(number).label; };
    } else if (crash_) { // the one event that has no number of its own
        evidence.number = [this](std::string_view identifier) {
            return identifier == crash_->identifier ? loggedBefore_ : DemoLedger::number(identifier);
        };
        evidence.label = [this](std::int64_t number) {
            return number == loggedBefore_ ? std::string() : DemoLedger::label(number);
        };
    }
    disk_ = DemoDisk::read(folder_ / "data", evidence.number);
    evidence.disk = disk_;
    return evidence;
}

std::optional<DemoKinds> DemoSession::kinds() {
    if (isShop() && !isKindsTold_) { // a session that broke off
        host_.closeInput();
        host_.wait(patience);
        listenToHost();
    }
    if (!kinds_.is_array()) return std::nullopt;
    const auto kinds = crash_ ? DemoKinds::together(kinds_, json::array({DemoKinds::crash()})) : kinds_;
    return DemoKinds(kinds, trace_, evidence(), ask("/v1/events").at("events"));
}

std::string DemoSession::walk(std::int64_t count) const {
    const auto number = std::to_string(count);
    if (isShop()) return "A user walks through the shop, which must give " + number + " events";
    return std::to_string(options_.threads) + " threads log " + number + " events";
}

void DemoSession::orderLog(std::int64_t count, const json& more) {
    auto order = more;
    order["log"] = count;
    isHostBusy_ = true;
    host_.writeLine(order.dump());
}

void DemoSession::setFaults(const json& faults) {
    const auto reply = client_.post("/v1/faults", {{"clear", true}, {"faults", faults}});
    if (!reply || reply.value().status != 200) throw std::runtime_error("the collector does not take the faults");
}

std::int64_t DemoSession::untilTrigger() const {
    return options_.eventsCount + 1 - static_cast<std::int64_t>(disk_.open);
}

bool DemoSession::isSettled() const {
    return !isHostBusy_ && disk_.closed == 0 && !disk_.hasArchives
           && confirmed_ + static_cast<std::int64_t>(disk_.open) + discarded_ == logged_;
}

void DemoSession::waitUntil(const std::string& what, const std::function<bool()>& condition) {
    auto deadline = std::chrono::steady_clock::now() + patience;
    for (;;) {
        const auto before = logged_ + confirmed_;
        listenToHost();
        look();
        if (condition()) return;
        if (host_.hasEnded()) throw std::runtime_error("the host ended while this was waited for: " + what);
        if (logged_ + confirmed_ != before) deadline = std::chrono::steady_clock::now() + patience;
        if (std::chrono::steady_clock::now() > deadline) {
            throw std::runtime_error("this did not happen in time: " + what);
        }
    }
}

void DemoSession::listenToHost() {
    const auto deadline = std::chrono::steady_clock::now() + glance;
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        const auto line = host_.readLine(std::max(left, std::chrono::milliseconds(0)));
        if (!line) return;
        const auto told = json::parse(*line);
        if (told.contains("logged")) logged_ = loggedBefore_ + told.at("logged").get<std::int64_t>();
        if (told.contains("crashing")) reasonToCrash_ = told.at("crashing").get<std::string>();
        if (told.contains("done")) isHostBusy_ = false;
        if (told.contains("asked")) isHostAsked_ = true;
        if (told.contains("kinds")) {
            kinds_ = kinds_.is_array() ? DemoKinds::together(kinds_, told.at("kinds")) : told.at("kinds");
            isKindsTold_ = true;
        }
        if (told.contains("seconds")) secondsWalked_ += told.at("seconds").get<double>();
        if (told.contains("userChanged")) begunAtUserChange_ = told.at("userChanged").get<std::int64_t>();
    }
}

// The collector first: an upload that it knows was packed before, so the disk shows what came of it.
void DemoSession::look() {
    const auto summary = ask("/v1/summary");
    uploads_ = summary.at("uploads").get<std::int64_t>();
    confirmed_ = summary.at("confirmed").get<std::int64_t>();
    disk_ = DemoDisk::read(folder_ / "data");
    progress_.show({logged_, static_cast<std::int64_t>(disk_.open + disk_.closed + disk_.packed),
                    static_cast<std::int64_t>(disk_.packed), summary.at("events").get<std::int64_t>(), confirmed_});
}

json DemoSession::ask(const std::string& path) const {
    auto reply = client_.get(path);
    if (!reply) throw std::runtime_error("the collector does not answer: " + reply.error().description);
    return std::move(reply).value().body;
}

} // namespace tallyfoot::commandline
