#include "Collector/RecordChecker.h"
#include "TestUpload.h"

#include <gtest/gtest.h>

namespace tallyfoot::collector {
namespace {

using testing::recordOf;

// The problems' texts up to the colon before the excerpt.
std::vector<std::string> complaints(const std::string& text) {
    Problems problems;
    checkRecord(text, "a.log", problems);
    std::vector<std::string> all;
    for (const auto& problem : problems) {
        EXPECT_EQ(problem.kind, "record");
        EXPECT_EQ(problem.file, "a.log");
        all.push_back(problem.detail.substr(0, problem.detail.find(": ")));
    }
    return all;
}

using List = std::vector<std::string>;

TEST(RecordChecker, APrettyRecordIsRight) {
    Problems problems;
    const auto record =
        checkRecord(recordOf({{"evtId", "1"}, {"evtType", "screen"}, {"pgName", "A \" b"}}), "", problems);
    EXPECT_TRUE(problems.empty());
    ASSERT_TRUE(record);
    EXPECT_EQ(record->evtId, "1");
    EXPECT_EQ(record->evtType, "screen");
    EXPECT_EQ(record->text, R"({"evtId":"1","evtType":"screen","pgName":"A \" b"})");
}

TEST(RecordChecker, ACompactRecordWithCustomDataIsRight) {
    EXPECT_EQ(complaints(R"({"evtId":"1","evtType":"a","custom":[{"k":[1,null,{"z":"y"}]},{}]})"), List{});
    EXPECT_EQ(complaints(R"({"evtId":"1","evtType":"a","custom":[]})"), List{});
}

TEST(RecordChecker, CustomDataThatIsNoArrayOfObjectsStaysText) {
    EXPECT_EQ(complaints(recordOf({{"evtId", "1"}, {"evtType", "a"}, {"custom", "[1,2]"}})), List{});
    EXPECT_EQ(complaints(R"({"evtId":"1","evtType":"a","custom":[1,2]})"), List{"member custom is no text"});
}

TEST(RecordChecker, MissesTheIdentifierAndTheType) {
    EXPECT_EQ(complaints(recordOf({{"evtType", "a"}})), List{"no evtId"});
    EXPECT_EQ(complaints(recordOf({{"evtId", "1"}})), List{"no evtType"});
}

TEST(RecordChecker, ARecordWithoutIdentifierGivesNothing) {
    Problems problems;
    EXPECT_FALSE(checkRecord(recordOf({{"evtType", "a"}}), "", problems));
}

TEST(RecordChecker, FindsUnknownMembersAndOtherKindsOfValues) {
    EXPECT_EQ(complaints(recordOf({{"evtId", "1"}, {"evtType", "a"}, {"screenTitle", "x"}})),
              List{"unknown member screenTitle"});
    EXPECT_EQ(complaints("{\n  \"evtId\" : \"1\",\n  \"evtType\" : \"a\",\n  \"pgName\" : 7\n}"),
              List{"member pgName is no text"});
}

TEST(RecordChecker, FindsAMemberThatComesTwice) {
    EXPECT_EQ(complaints("{\n  \"evtId\" : \"1\",\n  \"evtType\" : \"a\",\n  \"evtId\" : \"2\"\n}"),
              List{"member evtId comes twice"});
}

TEST(RecordChecker, FindsTheWrongLayout) {
    EXPECT_EQ(complaints(R"({"evtId":"1","evtType":"a"})"),
              List{"a record without custom data has not one member a line"});
    EXPECT_EQ(complaints(R"({"evtId":"1", "evtType":"a","custom":[]})"),
              List{"a record with custom data is not compact"});
}

TEST(RecordChecker, FindsABareSolidus) {
    EXPECT_EQ(complaints(recordOf({{"evtId", "1"}, {"evtType", "a/b"}})), List{"a solidus is not escaped"});
    EXPECT_EQ(complaints("{\n  \"evtId\" : \"1\",\n  \"evtType\" : \"a\\/b\"\n}"), List{});
}

TEST(RecordChecker, NumbersKeepTheirDigits) {
    Problems problems;
    const std::string text = R"({"evtId":"1","evtType":"a","custom":[{"n":1.10,"m":12345678901234567890123}]})";
    EXPECT_EQ(checkRecord(text, "", problems)->text, text);
}

} // namespace
} // namespace tallyfoot::collector
