#include "Collector/CollectorStore.h"
#include "Collector/ExpectRequest.h"
#include "Support/TemporaryFolder.h"
#include "TestUpload.h"

#include <gtest/gtest.h>

namespace tallyfoot::collector {
namespace {

using testing::checked;
using testing::log;
using testing::record;
using testing::TestUpload;

std::int64_t store(CollectorStore& collector, const TestUpload& test, const Fault& fault = {}) {
    const auto upload = checked(test);
    return collector.store(upload, fault, answerTo(upload, fault));
}

TEST(CollectorStore, KeepsUploadsFilesRecordsAndProblems) {
    CollectorStore collector(":memory:");
    TestUpload test({{"a.log", log({record("1"), record("2")}) + "{torn"}});
    const auto id = store(collector, test);
    const auto uploads = collector.uploads();
    ASSERT_EQ(uploads.size(), 1U);
    EXPECT_EQ(uploads[0]["id"], id);
    EXPECT_EQ(uploads[0]["files"][0]["records"], 2);
    EXPECT_EQ(uploads[0]["files"][0]["accepted"], true);
    EXPECT_EQ(collector.problems()[0]["kind"], "tornTail");
    EXPECT_EQ(collector.problems()[0]["file"], "a.log");
    const auto events = collector.events({});
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[1].evtId, "2");
    EXPECT_EQ(events[1].file, "a.log");
}

TEST(CollectorStore, AnEventCountsOnceHoweverOftenItComes) {
    CollectorStore collector(":memory:");
    Fault refuse;
    refuse.kind = Fault::Kind::refuse;
    refuse.refusesAll = true;
    store(collector, TestUpload(), refuse);
    store(collector, TestUpload());
    store(collector, TestUpload());
    const auto counts = collector.counts();
    EXPECT_EQ(counts.uploads, 3);
    EXPECT_EQ(counts.events, 3);
    EXPECT_EQ(counts.confirmed, 1);
    EXPECT_EQ(counts.duplicates, 1);
}

TEST(CollectorStore, TwoRecordsOfOneIdentifierInOneLogAreADuplicate) {
    CollectorStore collector(":memory:");
    store(collector, TestUpload({{"a.log", log({record("1"), record("1")})}}));
    EXPECT_EQ(collector.counts().confirmed, 1);
    EXPECT_EQ(collector.counts().duplicates, 1);
}

TEST(CollectorStore, AnUploadIsStoredWholeOrNotAtAll) {
    CollectorStore collector(":memory:");
    const auto upload = checked(TestUpload());
    Answer answer = answerTo(upload, {});
    answer.accepted.clear(); // not one fate a file: a caller's mistake, in the middle of the transaction
    EXPECT_THROW(collector.store(upload, {}, answer), std::out_of_range);
    EXPECT_EQ(collector.counts().uploads, 0);
    store(collector, TestUpload());
    EXPECT_EQ(collector.counts().uploads, 1);
}

TEST(CollectorStore, BytesOfAnyKindAreKept) {
    CollectorStore collector(":memory:");
    TestUpload test;
    test.setField("appName", std::string("\xFF\0'\"", 4));
    store(collector, test);
    EXPECT_EQ(collector.uploads()[0]["fields"]["appName"], std::string("\xEF\xBF\xBD\0'\"", 6));
}

TEST(CollectorStore, MarksAnAnswerThatWasLost) {
    CollectorStore collector(":memory:");
    const auto id = store(collector, TestUpload());
    EXPECT_EQ(collector.uploads()[0]["answered"], true);
    collector.markUnanswered(id);
    EXPECT_EQ(collector.uploads()[0]["answered"], false);
}

TEST(CollectorStore, IsStillThereWhenTheFileIsOpenedAgain) {
    testing::TemporaryFolder folder;
    {
        CollectorStore first(folder / "store");
        store(first, TestUpload());
    }
    EXPECT_EQ(CollectorStore(folder / "store").counts().confirmed, 1);
}

TEST(CollectorStore, AFileThatCannotBeOpenedIsAnError) {
    testing::TemporaryFolder folder;
    EXPECT_THROW(CollectorStore(folder / "no/such/folder"), DatabaseError);
}

TEST(CollectorStore, NumbersOfEventsAreNotUsedAgainAfterClearing) {
    CollectorStore collector(":memory:");
    store(collector, TestUpload());
    const auto before = collector.events({}).at(0).id;
    collector.clear();
    store(collector, TestUpload());
    EXPECT_GT(collector.events({}).at(0).id, before);
}

StoredEvent event(std::int64_t id, const std::string& type, const std::string& text) {
    StoredEvent made;
    made.id = id;
    made.evtType = type;
    made.record = text;
    return made;
}

TEST(ExpectMatcher, AllMembersAndTheTypeMustMatch) {
    const auto request = ExpectRequest::parse(R"({"count":1,"type":"a","match":{"x":"1","y":[{"z":2}]}})").value();
    ExpectMatcher matcher(request);
    matcher.add(
        {event(1, "a", R"({"x":"1"})"), event(2, "b", R"({"x":"1","y":[{"z":2}]})"), event(3, "a", R"({"x":"2"})")});
    EXPECT_FALSE(matcher.isSatisfied());
    ASSERT_EQ(matcher.nearestMisses().size(), 3U);
    EXPECT_EQ(matcher.nearestMisses()[0].event.id, 1);
    EXPECT_EQ(matcher.nearestMisses()[0].differences.dump(), R"({"y":{"expected":[{"z":2}],"actual":null}})");
    EXPECT_EQ(matcher.nearestMisses()[2].event.id, 3);
    matcher.add({event(4, "a", R"({"w":0,"x":"1","y":[{"z":2}]})")});
    EXPECT_TRUE(matcher.isSatisfied());
    EXPECT_EQ(matcher.matches().at(0).id, 4);
    EXPECT_EQ(matcher.last(), 4);
}

TEST(ExpectMatcher, KeepsAFewMissesOnly) {
    const auto request = ExpectRequest::parse(R"({"match":{"x":"1","y":"1"}})").value();
    ExpectMatcher matcher(request);
    for (int i = 0; i < 20; ++i) matcher.add({event(i, "a", R"({"x":"0"})")});
    matcher.add({event(20, "a", R"({"x":"1"})")});
    ASSERT_EQ(matcher.nearestMisses().size(), 5U);
    EXPECT_EQ(matcher.nearestMisses()[0].event.id, 20);
}

TEST(ExpectMatcher, NoneAreExpectedAtOnce) {
    const auto request = ExpectRequest::parse(R"({"count":0})").value();
    EXPECT_TRUE(ExpectMatcher(request).isSatisfied());
}

} // namespace
} // namespace tallyfoot::collector
