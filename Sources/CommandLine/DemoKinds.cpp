#include "CommandLine/DemoKinds.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace tallyfoot::commandline {

namespace {

using nlohmann::json;

std::string described(const DemoFacts& facts) {
    return facts.type + " / " + facts.category + " / " + facts.action + " / \"" + facts.label + "\"";
}

} // namespace

DemoKinds::DemoKinds(const json& kinds, const DemoTrace& trace, const DemoEvidence& evidence, const json& events) {
    for (const auto& kind : kinds) readKind(kind);
    recordedLabels_.resize(rows_.size());
    countRecorded(trace);
    countConfirmed(trace, events);
    countRest(trace, evidence);
    compareLabels();
    for (const auto& row : rows_) {
        if (!row.isBalanced()) error(row.kind + ": the books do not balance");
    }
}

json DemoKinds::together(json former, const json& later) {
    for (const auto& kind : later) {
        const auto same = std::find_if(former.begin(), former.end(),
                                       [&](const json& other) { return other.at("kind") == kind.at("kind"); });
        if (same == former.end()) {
            former.push_back(kind);
            continue;
        }
        same->at("performed") = same->at("performed").get<std::int64_t>() + kind.at("performed").get<std::int64_t>();
        if (!kind.contains("labels")) continue;
        auto& labels = same->at("labels");
        for (const auto& [label, due] : kind.at("labels").items())
            labels[label] = labels.value(label, std::int64_t{0}) + due.get<std::int64_t>();
    }
    return former;
}

json DemoKinds::crash() {
    return {{"kind", "crashes on purpose"}, {"performed", 1}, {"type", "crash"},
            {"category", "crash"},          {"action", ""},   {"labels", {{"", 1}}}};
}

void DemoKinds::error(const std::string& text) {
    if (errors_.size() < shownErrors) errors_.push_back(text);
}

void DemoKinds::readKind(const json& kind) {
    Row row;
    Rule rule;
    row.kind = kind.at("kind").get<std::string>();
    row.performed = kind.at("performed").get<std::int64_t>();
    rule.givesRecords = kind.contains("type");
    rule.facts = {kind.value("type", std::string()), kind.value("category", std::string()),
                  kind.value("action", std::string()), kind.value("label", std::string())};
    if (rule.givesRecords) rule.labels = kind.at("labels").get<std::map<std::string, std::int64_t>>();
    for (const auto& [label, due] : rule.labels) row.due += due;
    rows_.push_back(std::move(row));
    rules_.push_back(std::move(rule));
}

// What must not be comes first: it may look like what must.
std::optional<std::size_t> DemoKinds::kindOf(const DemoFacts& facts) const {
    for (std::size_t i = 0; i < rules_.size(); ++i) {
        const auto& rule = rules_[i].facts;
        if (rules_[i].givesRecords || rule.category != facts.category || rule.category.empty()) continue;
        if (rule.label.empty() || rule.label == facts.label) return i;
    }
    for (std::size_t i = 0; i < rules_.size(); ++i) {
        const auto& rule = rules_[i].facts;
        const bool fits = rule.type == facts.type && rule.category == facts.category && rule.action == facts.action;
        if (rules_[i].givesRecords && fits) return i;
    }
    return std::nullopt;
}

void DemoKinds::countRecorded(const DemoTrace& trace) {
    for (std::int64_t number = 1; number <= trace.size(); ++number) {
        const auto& facts = trace.facts(number);
        const auto kind = kindOf(facts);
        if (!kind) {
            error("a record that nothing the user did must give: " + described(facts));
            continue;
        }
        ++rows_[*kind].recorded;
        ++recordedLabels_[*kind][facts.label];
    }
}

// By what the records say themselves when they arrive.
void DemoKinds::countConfirmed(const DemoTrace& trace, const json& events) {
    for (const auto& event : events) {
        if (!event.at("accepted").get<bool>()) continue;
        const auto number = trace.number(event.at("evtId").get<std::string>());
        if (number == 0 || !isConfirmed_.emplace(number, true).second) continue; // unknown, or it came before
        const auto facts = DemoFacts::of(event.at("record"));
        if (facts != trace.facts(number)) error("a record arrived as another: " + described(facts));
        if (const auto kind = kindOf(facts)) ++rows_[*kind].confirmed;
    }
}

void DemoKinds::countRest(const DemoTrace& trace, const DemoEvidence& evidence) {
    for (std::int64_t number = 1; number <= trace.size(); ++number) {
        const auto kind = kindOf(trace.facts(number));
        if (!kind || isConfirmed_.contains(number)) continue;
        if (evidence.disk.events.contains(number)) {
            ++rows_[*kind].onDisk;
        } else if (number <= evidence.begunAtUserChange.value_or(0)) {
            ++rows_[*kind].discarded;
        }
    }
}

void DemoKinds::compareLabels() {
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        auto labels = rules_[i].labels;
        for (const auto& [label, count] : recordedLabels_[i]) labels[label] -= count;
        for (const auto& [label, missing] : labels) {
            if (missing == 0) continue;
            error(rows_[i].kind + ": " + std::to_string(missing > 0 ? missing : -missing)
                  + (missing > 0 ? " records too few" : " records too many") + " with the label \"" + label + "\"");
        }
    }
}

} // namespace tallyfoot::commandline
