#pragma once

#include "CommandLine/DemoAccount.h"
#include "CommandLine/DemoTrace.h"

#include <nlohmann/json_fwd.hpp>

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tallyfoot::commandline {

// The books of a walk through the shop, kind by kind: what the user did, as the user tells it, against
// the records that were made of it. Every record must belong to a kind and bear a label that is due.
class DemoKinds {
public:
    struct Row {
        std::string kind;
        std::int64_t performed = 0;
        std::int64_t due = 0; // records
        std::int64_t recorded = 0;
        std::int64_t confirmed = 0;
        std::int64_t onDisk = 0;
        std::int64_t discarded = 0;

        bool isBalanced() const { return due == recorded && recorded == confirmed + onDisk + discarded; }
    };

    // `kinds` is the list that the host tells at its end, `events` the collector's list.
    DemoKinds(const nlohmann::json& kinds, const DemoTrace& trace, const DemoEvidence& evidence,
              const nlohmann::json& events);

    // The list of a host and that of the one that was started after it.
    static nlohmann::json together(nlohmann::json former, const nlohmann::json& later);
    // The row of the crash that a host was told to end with; what tells it is a record like any other.
    static nlohmann::json crash();

    const std::vector<Row>& rows() const { return rows_; }
    const std::vector<std::string>& errors() const { return errors_; }

private:
    static constexpr std::size_t shownErrors = 20;

    // What the records of a kind look like; those of a kind that gives none, what no record may look like.
    struct Rule {
        bool givesRecords = false;
        DemoFacts facts; // an empty one may be anything where no record is given
        std::map<std::string, std::int64_t> labels;
    };

    void readKind(const nlohmann::json& kind);
    std::optional<std::size_t> kindOf(const DemoFacts& facts) const;
    void countRecorded(const DemoTrace& trace);
    void countConfirmed(const DemoTrace& trace, const nlohmann::json& events);
    void countRest(const DemoTrace& trace, const DemoEvidence& evidence);
    void compareLabels();
    void error(const std::string& text);

    std::vector<Row> rows_;
    std::vector<Rule> rules_; // of the rows, in their order
    std::vector<std::map<std::string, std::int64_t>> recordedLabels_;
    std::map<std::int64_t, bool> isConfirmed_; // by number
    std::vector<std::string> errors_;
};

} // namespace tallyfoot::commandline
