#include "Collector/ArchiveReader.h"
#include "Collector/UploadChecker.h"
#include "TestUpload.h"

#include <gtest/gtest.h>

namespace tallyfoot::collector {
namespace {

using testing::checked;
using testing::log;
using testing::record;
using testing::TestUpload;

std::vector<std::string> kinds(const CheckedUpload& upload) {
    std::vector<std::string> all;
    for (const auto& problem : upload.problems) all.push_back(problem.kind);
    return all;
}

using List = std::vector<std::string>;

TEST(UploadChecker, AWellFormedUploadHasNoProblem) {
    const auto upload =
        checked(TestUpload({{"a.log", log({record("1"), record("2")})}, {"b.log", log({record("3")})}}));
    EXPECT_EQ(kinds(upload), List{});
    ASSERT_EQ(upload.files.size(), 2U);
    EXPECT_EQ(upload.files[0].name, "a.log");
    EXPECT_EQ(upload.files[0].records.size(), 2U);
    EXPECT_EQ(upload.files[1].records.at(0).evtId, "3");
    EXPECT_EQ(upload.cookie, "token-1");
}

TEST(UploadChecker, TheCookieIsTheToken) {
    TestUpload upload;
    upload.cookie = "another";
    EXPECT_EQ(kinds(checked(upload)), List{"cookie"});
}

TEST(UploadChecker, TheCookieComesOnceAndInLowerCase) {
    TestUpload twice;
    twice.extraHeaders = "cookie: token-1\r\n";
    EXPECT_EQ(kinds(checked(twice)), List{"cookie"});
    const TestUpload upload;
    const auto body = upload.body();
    auto head = upload.head(body.size());
    head.replace(head.find("cookie"), 6, "Cookie");
    EXPECT_EQ(kinds(checkUpload(head, body)), List{"cookie"});
    head.erase(head.find("Cookie"), std::string("Cookie: token-1\r\n").size());
    EXPECT_EQ(kinds(checkUpload(head, body)), List{"cookie"});
}

TEST(UploadChecker, ATokenThatFitsNoHeaderComesWithoutOne) {
    TestUpload upload;
    upload.setField("authtoken", "a\r\nb: c");
    const auto body = upload.body();
    auto head = upload.head(body.size());
    EXPECT_EQ(kinds(checkUpload(head, body)), List{"cookie"});
    head.erase(head.find("cookie"), std::string("cookie: token-1\r\n").size());
    EXPECT_EQ(kinds(checkUpload(head, body)), List{});
}

TEST(UploadChecker, TheBodysLengthIsGivenAndNotInChunks) {
    const TestUpload upload;
    const auto body = upload.body();
    auto head = upload.head(body.size());
    head.replace(head.find("Content-Length: " + std::to_string(body.size())),
                 ("Content-Length: " + std::to_string(body.size())).size(), "Transfer-Encoding: chunked");
    EXPECT_EQ(kinds(checkUpload(head, body)), (List{"header", "header"}));
}

TEST(UploadChecker, NoExpectHeader) {
    TestUpload upload;
    upload.extraHeaders = "Expect: 100-continue\r\n";
    EXPECT_EQ(kinds(checked(upload)), List{"header"});
}

TEST(UploadChecker, HeaderLinesAreWellFormed) {
    for (const auto& line : std::vector<std::string>{"a b: c\r\n", "nothing\r\n", "a: b\n", "a: b\x01\r\n"}) {
        TestUpload upload;
        upload.extraHeaders = line;
        EXPECT_EQ(kinds(checked(upload)), List{"head"}) << line;
    }
}

TEST(UploadChecker, EntriesAreStored) {
    TestUpload upload;
    upload.file = testing::archive({{"a.log", log({record("1")}) + std::string(0, 'x')}}, true);
    const auto found = checked(upload);
    EXPECT_EQ(kinds(found), List{"method"});
    EXPECT_EQ(found.files.at(0).records.size(), 1U); // it is read all the same
}

TEST(UploadChecker, AWrongChecksumIsFoundAndTheOtherEntriesAreRead) {
    TestUpload upload({{"a.log", log({record("marked")})}, {"b.log", log({record("2")})}});
    upload.file.replace(upload.file.find("marked"), 6, "Marked");
    const auto found = checked(upload);
    EXPECT_EQ(kinds(found), List{"checksum"});
    EXPECT_FALSE(found.files.at(0).readable);
    EXPECT_TRUE(found.files.at(0).records.empty());
    EXPECT_TRUE(found.files.at(1).readable);
}

TEST(UploadChecker, ACutArchiveIsUnreadable) {
    TestUpload upload;
    upload.file.resize(upload.file.size() - 10);
    const auto found = checked(upload);
    EXPECT_EQ(kinds(found), List{"archive"});
    EXPECT_FALSE(found.readable);
}

TEST(UploadChecker, AnEmptyFileIsNoArchive) {
    TestUpload upload;
    upload.file.clear();
    EXPECT_EQ(kinds(checked(upload)), List{"archive"});
}

TEST(UploadChecker, EntryNamesArePlain) {
    for (const std::string name : {"../a.log", "folder/a.log", "a.txt"}) {
        EXPECT_EQ(kinds(checked(TestUpload(TestUpload::Entries{{name, log({record("1")})}}))), List{"entryName"})
            << name;
    }
}

TEST(UploadChecker, AnEmptyLogIsAProblem) {
    EXPECT_EQ(kinds(checked(TestUpload(TestUpload::Entries{{"a.log", ""}}))), List{"empty"});
}

TEST(UploadChecker, ATornTailIsAProblemAndTheRecordsBeforeItCount) {
    const auto upload = checked(TestUpload({{"a.log", log({record("1")}) + "{\"evtId"}}));
    EXPECT_EQ(kinds(upload), List{"tornTail"});
    EXPECT_EQ(upload.files.at(0).records.size(), 1U);
}

TEST(UploadChecker, WhatIsNoRecordIsAProblem) {
    EXPECT_EQ(kinds(checked(TestUpload({{"a.log", "nonsense" + log({"", record("1")})}}))), List{"malformed"});
}

TEST(UploadChecker, LogsAreUTF8) {
    EXPECT_EQ(kinds(checked(TestUpload(TestUpload::Entries{{"a.log", "{\"a\":\"\xFF\"}jsonsplit"}}))),
              (List{"utf8", "malformed"}));
}

TEST(ArchiveReader, RefusesNamesThatLeaveTheFolder) {
    for (const auto* name : {"", ".", "..", "a/b", "a\\b", "a\nb"}) EXPECT_FALSE(isPlainFileName(name)) << name;
    EXPECT_TRUE(isPlainFileName("07-03-2024T14-05-09-123.log"));
}

TEST(ArchiveReader, UnpacksNoMoreThanItIsAllowedFromAllEntriesTogether) {
    const std::string zeros(60000, '0');
    const auto bytes = testing::archive({{"a.log", zeros}, {"b.log", zeros}, {"c.log", "{}"}}, true);
    const auto entries = readArchive(bytes, 100000);
    ASSERT_TRUE(entries);
    EXPECT_EQ(entries.value().at(0).error, "");
    EXPECT_EQ(entries.value().at(0).bytes, zeros);
    EXPECT_EQ(entries.value().at(1).error, "the archive unpacks to more than is taken");
    EXPECT_LE(entries.value().at(1).bytes.size(), 40000U);
    EXPECT_EQ(entries.value().at(2).bytes, "{}");
}

TEST(ArchiveReader, AnArchiveOfStoredEntriesIsReadWhateverItsSize) {
    const std::string log(5000, '0');
    const auto entries = readArchive(testing::archive({{"a.log", log}, {"b.log", log}}), 1);
    ASSERT_TRUE(entries);
    EXPECT_EQ(entries.value().at(0).error, "");
    EXPECT_EQ(entries.value().at(1).bytes, log);
}

} // namespace
} // namespace tallyfoot::collector
