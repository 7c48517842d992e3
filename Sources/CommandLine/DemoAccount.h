#pragma once

#include "CommandLine/DemoCrash.h"
#include "CommandLine/DemoDisk.h"
#include "CommandLine/DemoLedger.h"

#include <nlohmann/json_fwd.hpp>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tallyfoot::commandline {

// Everything that is known of a session once it is over, each from its own source.
struct DemoEvidence {
    std::int64_t logged = 0;                       // calls that returned, told by the host
    std::optional<std::int64_t> begunAtUserChange; // told by the host when it named another user
    std::string userAfterChange;
    DemoDisk disk;
    std::optional<DemoCrash> crash; // kept when the host crashed; the next one must have told it, as one event
    // How its events are known from each other, and what their labels are.
    std::function<std::int64_t(std::string_view)> number = DemoLedger::number; // 0 for one that is none of its own
    std::function<std::string(std::int64_t)> label = DemoLedger::label;
};

// The books: what was logged must be what the server confirmed, what is still on disk and what the
// change of user discarded, each counted by itself. Anything that does not add up is an error.
class DemoAccount {
public:
    // `events` and `uploads` are the collector's lists, `problems` too.
    DemoAccount(const DemoEvidence& evidence, const nlohmann::json& events, const nlohmann::json& uploads,
                const nlohmann::json& problems);

    std::int64_t logged() const { return logged_; }
    std::int64_t confirmed() const { return confirmed_; }
    std::int64_t onDisk() const { return onDisk_; }           // and not confirmed
    std::int64_t discarded() const { return discarded_; }     // begun before the change of user, and not confirmed
    std::int64_t crashesTold() const { return crashesTold_; } // arrived or on disk; of the one that was kept
    bool isBalanced() const { return logged_ == confirmed_ + onDisk_ + discarded_; }

    const std::vector<std::string>& errors() const { return errors_; }
    // One line for each upload that brought what had come before, and why.
    const std::vector<std::string>& duplicates() const { return duplicates_; }

private:
    static constexpr std::size_t shownErrors = 20;

    void readCrash(const DemoCrash& crash, const nlohmann::json& item);
    void readEvents(const DemoEvidence& evidence, const nlohmann::json& events);
    void checkUsers(const DemoEvidence& evidence, const nlohmann::json& uploads);
    void countDisk(const DemoEvidence& evidence, const nlohmann::json& uploads);
    void findMissing(const DemoEvidence& evidence);
    void explainDuplicates(const nlohmann::json& uploads);
    void error(const std::string& text);

    std::int64_t logged_ = 0;
    std::int64_t confirmed_ = 0;
    std::int64_t onDisk_ = 0;
    std::int64_t discarded_ = 0;
    std::int64_t crashesTold_ = 0;
    std::map<std::int64_t, std::vector<std::int64_t>> accepted_; // number -> uploads that brought it, in their order
    std::vector<std::string> errors_;
    std::vector<std::string> duplicates_;
};

} // namespace tallyfoot::commandline
