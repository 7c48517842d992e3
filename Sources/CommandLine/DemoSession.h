#pragma once

#include "CommandLine/ChildProcess.h"
#include "CommandLine/CollectorClient.h"
#include "CommandLine/DemoAccount.h"
#include "CommandLine/DemoCrash.h"
#include "CommandLine/DemoDisk.h"
#include "CommandLine/DemoKinds.h"
#include "CommandLine/DemoProgress.h"
#include "CommandLine/DemoTrace.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace tallyfoot::commandline {

struct DemoOptions {
    std::int64_t events = 4000; // about so many
    int threads = 4;
    int eventsCount = 150;                 // more than this many trigger an upload
    std::int64_t pauseMicroseconds = 3000; // of each thread, after each event
    std::string shop;                      // the program of the shop app; without it, a host that logs itself
    std::uint64_t seed = 1;                // of the walk through the shop
};

// Plays a session: a collector and a host, each a process of its own, the second one led through good
// and bad times. Every step is over before the next begins, so that what must have become of each
// event is known. A step that does not come about throws std::runtime_error.
class DemoSession {
public:
    // `tool` is this program; everything is kept below `folder`.
    DemoSession(const DemoOptions& options, const std::string& tool, const std::filesystem::path& folder,
                DemoProgress& progress);

    void play();
    // Asks the collector and looks at the disk. To be called when the session is over, well or not.
    DemoAccount account();

    // After that: how the walk through the shop went. Nothing where there was none, or it told nothing.
    std::optional<DemoKinds> kinds();
    double secondsWalked() const { return secondsWalked_; } // of the app's own time

    const DemoDisk& disk() const { return disk_; }
    const std::optional<DemoCrash>& crash() const { return crash_; } // that the host ended with, on purpose

private:
    static ChildProcess startCollector(const std::string& tool, const std::filesystem::path& folder);
    static int port(ChildProcess& collector);
    // Called by the constructor, too: it reads nothing that is declared behind `client_`.
    ChildProcess startHost(const std::string& application, const std::string& user,
                           std::int64_t loggedBefore = 0) const;
    bool isShop() const { return !options_.shop.empty(); }
    std::string walk(std::int64_t count) const;
    DemoEvidence evidence();

    void logFromSeveralThreads(std::int64_t count);
    void failOnce(const std::string& what, const nlohmann::json& fault);
    void changeUser();
    void changeApplication(std::int64_t count);
    void crashAndStartAgain();
    void leaveSome();
    void leave(std::int64_t count);
    void endHost();
    void listenToTheEnd();

    void orderLog(std::int64_t count, const nlohmann::json& more = nlohmann::json::object());
    void setFaults(const nlohmann::json& faults); // in place of those that are left
    std::int64_t untilTrigger() const;            // events, the one that triggers included
    bool isSettled() const;                       // every event is confirmed, discarded or in the file being written
    void waitUntil(const std::string& what, const std::function<bool()>& condition);
    void listenToHost();
    void look();
    nlohmann::json ask(const std::string& path) const;

    DemoOptions options_;
    std::string tool_;
    std::filesystem::path folder_;
    DemoProgress& progress_;
    ChildProcess collector_;
    CollectorClient client_;
    ChildProcess host_;

    std::int64_t logged_ = 0;       // told by the host
    std::int64_t loggedBefore_ = 0; // by the host that crashed, and of its crash
    std::optional<DemoCrash> crash_;
    std::string reasonToCrash_; // told by the host
    bool isHostBusy_ = true;
    bool isHostAsked_ = false;
    std::optional<std::int64_t> begunAtUserChange_;
    std::int64_t discarded_ = 0;
    std::int64_t uploads_ = 0; // told by the collector
    std::int64_t confirmed_ = 0;
    DemoDisk disk_;
    DemoTrace trace_;
    nlohmann::json kinds_;     // told by the shop at its ends
    bool isKindsTold_ = false; // by the host that runs
    double secondsWalked_ = 0;
};

} // namespace tallyfoot::commandline
