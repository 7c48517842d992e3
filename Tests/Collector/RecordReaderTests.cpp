#include "Collector/RecordReader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tallyfoot::collector {
namespace {

using Kind = LogPiece::Kind;

struct Read {
    Kind kind;
    std::size_t offset;
    std::string text;
    bool operator==(const Read&) const = default;
};

void PrintTo(const Read& read, std::ostream* stream) {
    *stream << static_cast<int>(read.kind) << " at " << read.offset << ": " << read.text;
}

std::vector<Read> readAll(const std::string& log) {
    std::vector<Read> all;
    RecordReader reader(log);
    while (const auto piece = reader.next()) all.push_back({piece->kind, piece->offset, std::string(piece->text)});
    return all;
}

TEST(RecordReader, AnEmptyLogHasNoPieces) { EXPECT_TRUE(readAll("").empty()); }

TEST(RecordReader, SplitsRecordsAtTheSeparator) {
    EXPECT_EQ(readAll(R"({"a":1}jsonsplit{"b":2}jsonsplit)"),
              (std::vector<Read>{{Kind::record, 0, R"({"a":1})"}, {Kind::record, 16, R"({"b":2})"}}));
}

TEST(RecordReader, AValueThatHoldsTheSeparatorStaysWhole) {
    const std::string record = R"({"a":"one jsonsplit two jsonsplit{","b":"jsonsplit"})";
    EXPECT_EQ(readAll(record + "jsonsplit"), (std::vector<Read>{{Kind::record, 0, record}}));
}

TEST(RecordReader, AKeyThatHoldsTheSeparatorStaysWhole) {
    const std::string record = R"({"jsonsplit":{"jsonsplit":[]}})";
    EXPECT_EQ(readAll(record + "jsonsplit"), (std::vector<Read>{{Kind::record, 0, record}}));
}

TEST(RecordReader, QuotesAndBracesInsideOfValuesDoNotEndARecord) {
    const std::string record = R"({"a":"}\"}jsonsplit\\","b":"{["})";
    EXPECT_EQ(readAll(record + "jsonsplit"), (std::vector<Read>{{Kind::record, 0, record}}));
}

TEST(RecordReader, ATornTailIsTold) {
    EXPECT_EQ(readAll(R"({"a":1}jsonsplit{"b":"to)"),
              (std::vector<Read>{{Kind::record, 0, R"({"a":1})"}, {Kind::tornTail, 16, R"({"b":"to)"}}));
}

TEST(RecordReader, ATornTailWhoseValueHoldsTheSeparatorIsOnePiece) {
    const std::string tail = R"({"b":"to jsonsplit be)";
    EXPECT_EQ(readAll(R"({"a":1}jsonsplit)" + tail).back(), (Read{Kind::tornTail, 16, tail}));
}

TEST(RecordReader, ARecordWithoutItsWholeSeparatorIsTorn) {
    EXPECT_EQ(readAll(R"({"a":1}jsonspl)"), (std::vector<Read>{{Kind::tornTail, 0, R"({"a":1}jsonspl)"}}));
    EXPECT_EQ(readAll(R"({"a":1})"), (std::vector<Read>{{Kind::tornTail, 0, R"({"a":1})"}}));
}

TEST(RecordReader, ATailCutInsideOfACharacterIsTorn) {
    EXPECT_EQ(readAll("{\"a\":\"\xE2\x82"), (std::vector<Read>{{Kind::tornTail, 0, "{\"a\":\"\xE2\x82"}}));
}

TEST(RecordReader, WhatIsNoRecordDoesNotHideTheNextOne) {
    EXPECT_EQ(readAll(R"({"a":"tor{"b":2}jsonsplit{"c":3}jsonsplit)"),
              (std::vector<Read>{{Kind::malformed, 0, R"({"a":"tor{"b":2})"}, {Kind::record, 25, R"({"c":3})"}}));
}

TEST(RecordReader, AnArrayIsNoRecord) {
    EXPECT_EQ(readAll("[1]jsonsplit"), (std::vector<Read>{{Kind::malformed, 0, "[1]"}}));
}

TEST(RecordReader, ALineFeedBetweenRecordsIsNoPartOfTheFormat) {
    EXPECT_EQ(readAll("{}jsonsplit\n{}jsonsplit"),
              (std::vector<Read>{{Kind::record, 0, "{}"}, {Kind::malformed, 11, "\n{}"}}));
}

TEST(RecordReader, TwoSeparatorsInARowEncloseAnEmptyPiece) {
    EXPECT_EQ(readAll("jsonsplit{}jsonsplit"), (std::vector<Read>{{Kind::malformed, 0, ""}, {Kind::record, 9, "{}"}}));
}

TEST(RecordReader, TooDeepNestingIsMalformedAndDoesNotExhaustTheStack) {
    const std::string deep(2'000'000, '[');
    const auto pieces = readAll(R"({"a":)" + deep + "jsonsplit{}jsonsplit");
    ASSERT_EQ(pieces.size(), 2U);
    EXPECT_EQ(pieces[0].kind, Kind::malformed);
    EXPECT_EQ(pieces[1].text, "{}");
}

TEST(RecordReader, TheDeepestAllowedNestingIsARecord) {
    const std::string open(deepestRecord - 1, '[');
    const std::string close(deepestRecord - 1, ']');
    EXPECT_EQ(readAll(R"({"a":)" + open + close + "}jsonsplit").front().kind, Kind::record);
    EXPECT_EQ(readAll(R"({"a":[)" + open + close + "]}jsonsplit").front().kind, Kind::malformed);
}

TEST(RecordReader, EveryByteButTheSeparatorsIsInExactlyOnePiece) {
    const std::string log = R"({"a":1}jsonsplit??jsonsplit{"b":"jsonsplit"}jsonsplit{"c)";
    std::size_t position = 0;
    for (const auto& piece : readAll(log)) {
        EXPECT_EQ(piece.offset, position);
        EXPECT_EQ(log.substr(piece.offset, piece.text.size()), piece.text);
        position = piece.offset + piece.text.size() + (piece.kind == Kind::tornTail ? 0 : recordSeparator.size());
    }
    EXPECT_EQ(position, log.size());
}

} // namespace
} // namespace tallyfoot::collector
