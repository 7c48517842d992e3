#include "CommandLine/DemoAccount.h"

#include <nlohmann/json.hpp>

namespace tallyfoot::commandline {

namespace {

using nlohmann::json;

const json* uploadNumbered(const json& uploads, std::int64_t number) {
    for (const auto& upload : uploads) {
        if (upload.at("id").get<std::int64_t>() == number) return &upload;
    }
    return nullptr;
}

bool wasAnswered(const json& uploads, std::int64_t number) {
    const auto* upload = uploadNumbered(uploads, number);
    return upload != nullptr && upload->at("answered").get<bool>();
}

std::string event(std::int64_t number) { return "event " + std::to_string(number); }

} // namespace

DemoAccount::DemoAccount(const DemoEvidence& evidence, const json& events, const json& uploads, const json& problems)
    : logged_(evidence.logged) {
    for (const auto& problem : problems) {
        error("wire format: " + problem.at("kind").get<std::string>() + ": " + problem.at("detail").get<std::string>());
    }
    for (const auto& complaint : evidence.disk.complaints) error("on disk: " + complaint);
    readEvents(evidence, events);
    checkUsers(evidence, uploads);
    countDisk(evidence, uploads);
    findMissing(evidence);
    explainDuplicates(uploads);
    if (evidence.crash && crashesTold_ != 1) {
        error("the crash \"" + evidence.crash->reason + "\" was told " + std::to_string(crashesTold_) + " times");
    }
    if (!isBalanced()) {
        error("the books do not balance: " + std::to_string(logged_) + " logged, but "
              + std::to_string(confirmed_ + onDisk_ + discarded_) + " confirmed, on disk or discarded by rule");
    }
}

void DemoAccount::error(const std::string& text) {
    if (errors_.size() < shownErrors) errors_.push_back(text);
}

void DemoAccount::readEvents(const DemoEvidence& evidence, const json& events) {
    for (const auto& item : events) {
        const auto number = evidence.number(item.at("evtId").get<std::string>());
        if (number < 1 || number > logged_) {
            error("an event arrived that nobody logged: " + item.at("evtId").get<std::string>());
        } else if (item.at("record").value("evtLabel", std::string()) != evidence.label(number)) {
            error(event(number) + " arrived with another label");
        } else if (item.at("accepted").get<bool>()) {
            accepted_[number].push_back(item.at("upload").get<std::int64_t>());
            if (evidence.crash && item.at("evtId") == evidence.crash->identifier) readCrash(*evidence.crash, item);
        }
    }
    confirmed_ = static_cast<std::int64_t>(accepted_.size());
}

void DemoAccount::readCrash(const DemoCrash& crash, const json& item) {
    ++crashesTold_;
    const auto& record = item.at("record");
    const bool isTheSame = record.value("evtType", std::string()) == "crash"
                           && record.value("evtCategory", std::string()) == "crash"
                           && record.value("crashreason", std::string()) == crash.reason;
    if (!isTheSame) error("the crash \"" + crash.reason + "\" arrived as another event: " + record.dump());
}

// Nothing that the former user did may go out under the new user's name.
void DemoAccount::checkUsers(const DemoEvidence& evidence, const json& uploads) {
    if (!evidence.begunAtUserChange) return;
    for (const auto& [number, arrivals] : accepted_) {
        if (number > *evidence.begunAtUserChange) break;
        for (const auto arrival : arrivals) {
            const auto* upload = uploadNumbered(uploads, arrival);
            if (upload == nullptr || upload->at("fields").value("userId", std::string()) == evidence.userAfterChange) {
                error(event(number) + " of the former user was sent under the new user's name");
            }
        }
    }
}

void DemoAccount::countDisk(const DemoEvidence& evidence, const json& uploads) {
    for (const auto& [number, times] : evidence.disk.events) {
        if (number < 1 || number > logged_) error("an event is on disk that nobody logged");
        if (times > 1) error(event(number) + " is on disk " + std::to_string(times) + " times");
        const auto confirmed = accepted_.find(number);
        if (evidence.crash && confirmed == accepted_.end() && number == evidence.number(evidence.crash->identifier))
            crashesTold_ += times;
        if (confirmed == accepted_.end()) {
            ++onDisk_;
        } else if (wasAnswered(uploads, confirmed->second.back())) {
            error(event(number) + " is still on disk although the client was told that it had arrived");
        }
    }
}

// Counted from the marker alone, so that an event too few or too many shows in the sum.
void DemoAccount::findMissing(const DemoEvidence& evidence) {
    const auto changed = evidence.begunAtUserChange.value_or(0);
    for (std::int64_t number = 1; number <= changed; ++number) {
        if (!accepted_.contains(number)) ++discarded_;
    }
    for (std::int64_t number = 1; number <= logged_; ++number) {
        const bool isOnDisk = evidence.disk.events.contains(number);
        if (number <= changed && isOnDisk && !accepted_.contains(number)) {
            error(event(number) + " of the former user is still on disk");
        }
        if (number > changed && !isOnDisk && !accepted_.contains(number)) error(event(number) + " is lost");
    }
}

void DemoAccount::explainDuplicates(const json& uploads) {
    std::map<std::pair<std::int64_t, std::int64_t>, int> repeats; // upload, upload it repeats -> events
    for (const auto& [number, arrivals] : accepted_) {
        for (std::size_t i = 1; i < arrivals.size(); ++i) ++repeats[{arrivals[i], arrivals[i - 1]}];
    }
    for (const auto& [pair, count] : repeats) {
        const auto [later, former] = pair;
        const auto text = std::to_string(count) + " events of upload " + std::to_string(former)
                          + " came again in upload " + std::to_string(later);
        if (wasAnswered(uploads, former)) {
            error(text + " although its answer had been sent");
        } else {
            duplicates_.push_back(text + ": its answer was lost ("
                                  + uploadNumbered(uploads, former)->at("fault").get<std::string>() + ")");
        }
    }
}

} // namespace tallyfoot::commandline
