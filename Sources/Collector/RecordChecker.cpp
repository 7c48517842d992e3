#include "Collector/RecordChecker.h"

#include "Collector/JSONText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <set>

namespace tallyfoot::collector {

namespace {

using nlohmann::json;

constexpr std::array<std::string_view, 18> memberNames{
    "appName",       "crashreason",        "custom",  "deviceScrnDim", "evtAction", "evtCategory", "evtId",
    "evtLabel",      "evtLclTimestamp",    "evtType", "pgName",        "tmspent",   "userAgent",   "userId",
    "userIpAddress", "userLogonTimestamp", "pgPrnt",  "browserViewDim"};

struct Reporter {
    std::string_view text;
    const std::string& file;
    Problems& problems;

    void report(const std::string& detail) const {
        constexpr std::size_t excerpt = 120;
        problems.push_back({"record", detail + ": " + std::string(text.substr(0, excerpt)), file});
    }
};

// The parser keeps the last of two equal keys; that there were two shows only while it runs.
json parse(std::string_view text, const Reporter& reporter) {
    std::set<std::string> keys;
    return json::parse(
        text.begin(), text.end(),
        [&](int depth, json::parse_event_t event, json& parsed) {
            if (event == json::parse_event_t::key && depth == 1 && !keys.insert(parsed.get<std::string>()).second) {
                reporter.report("member " + parsed.get<std::string>() + " comes twice");
            }
            return true;
        },
        false);
}

bool isArrayOfObjects(const json& value) {
    return value.is_array()
           && std::all_of(value.begin(), value.end(), [](const json& item) { return item.is_object(); });
}

void checkMembers(const json& record, const Reporter& reporter) {
    for (const auto& [name, value] : record.items()) {
        if (std::find(memberNames.begin(), memberNames.end(), name) == memberNames.end()) {
            reporter.report("unknown member " + name);
        }
        if (!value.is_string() && !(name == "custom" && isArrayOfObjects(value))) {
            reporter.report("member " + name + " is no text");
        }
    }
}

bool hasBareSolidus(std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\') {
            ++i;
        } else if (text[i] == '/') {
            return true;
        }
    }
    return false;
}

void checkLayout(std::string_view text, std::string_view compact, const json& record, const Reporter& reporter) {
    const auto custom = record.find("custom");
    if (custom != record.end() && custom->is_array()) {
        if (text != compact) reporter.report("a record with custom data is not compact");
    } else if (text != prettyPrinted(compact)) {
        reporter.report("a record without custom data has not one member a line");
    }
    if (hasBareSolidus(text)) reporter.report("a solidus is not escaped");
}

std::string textOf(const json& record, const char* name) {
    const auto member = record.find(name);
    return member != record.end() && member->is_string() ? member->get<std::string>() : std::string();
}

} // namespace

std::optional<CheckedRecord> checkRecord(std::string_view text, const std::string& file, Problems& problems) {
    const Reporter reporter{text, file, problems};
    const json record = parse(text, reporter);
    if (!record.is_object()) {
        reporter.report("not a JSON object");
        return std::nullopt;
    }
    CheckedRecord checked{textOf(record, "evtId"), textOf(record, "evtType"), compacted(text)};
    checkMembers(record, reporter);
    checkLayout(text, checked.text, record, reporter);
    if (checked.evtId.empty()) reporter.report("no evtId");
    if (checked.evtType.empty()) reporter.report("no evtType");
    if (checked.evtId.empty() || checked.evtType.empty()) return std::nullopt;
    return checked;
}

} // namespace tallyfoot::collector
