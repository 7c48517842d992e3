#include "CommandLine/DemoTrace.h"

#include <nlohmann/json.hpp>

#include <fstream>
#include <optional>

namespace tallyfoot::commandline {

namespace {

constexpr std::string_view banner = "**************************************************";

// A line of the console is a text in debug representation; nothing for any other.
std::optional<std::string> textOf(std::string_view line) {
    if (line.size() < 2 || line.front() != '"' || line.back() != '"') return std::nullopt;
    line = line.substr(1, line.size() - 2);
    std::string text;
    for (std::size_t at = 0; at < line.size(); ++at) {
        if (line[at] != '\\' || at + 1 == line.size()) {
            text += line[at];
            continue;
        }
        switch (line[++at]) {
        case 'n': text += '\n'; break;
        case 't': text += '\t'; break;
        case 'r': text += '\r'; break;
        default: text += line[at]; break; // what stands for itself; the demo uses no others
        }
    }
    return text;
}

std::string valueOf(const std::map<std::string, std::string>& attributes, const std::string& key) {
    const auto found = attributes.find(key);
    return found == attributes.end() ? std::string() : found->second;
}

} // namespace

DemoFacts DemoFacts::of(const nlohmann::json& record) {
    if (!record.is_object()) return {};
    const auto text = [&](const char* key) { return record.value(key, std::string()); };
    return {text("evtType"), text("evtCategory"), text("evtAction"), text("evtLabel")};
}

DemoTrace DemoTrace::read(const std::filesystem::path& consoleOutput) {
    DemoTrace trace;
    std::optional<std::map<std::string, std::string>> event; // while inside of one
    std::ifstream lines(consoleOutput);
    for (std::string line; std::getline(lines, line);) {
        const auto text = textOf(line);
        if (!text) continue;
        if (*text == banner) {
            if (event) trace.add(*event);
            event = event ? std::nullopt : std::optional(std::map<std::string, std::string>());
        } else if (const auto colon = text->find(": "); event && colon != std::string::npos) {
            (*event)[text->substr(0, colon)] = text->substr(colon + 2);
        }
    }
    return trace;
}

void DemoTrace::add(const std::map<std::string, std::string>& attributes) {
    facts_.push_back({valueOf(attributes, "evtType"), valueOf(attributes, "evtCategory"),
                      valueOf(attributes, "evtAction"), valueOf(attributes, "evtLabel")});
    numbers_.emplace(valueOf(attributes, "evtId"), size());
}

std::int64_t DemoTrace::number(std::string_view identifier) const {
    const auto found = numbers_.find(identifier);
    return found == numbers_.end() ? 0 : found->second;
}

} // namespace tallyfoot::commandline
