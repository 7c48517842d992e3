#include "CommandLine/DemoAccount.h"
#include "CommandLine/DemoLedger.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace tallyfoot::commandline {
namespace {

using nlohmann::json;

// A session of ten events by two users: 1 to 6 by the first, of which 5 and 6 were discarded when the
// user changed; 7 to 9 arrived under the second, 10 is still on disk. A test changes one thing.
struct Session {
    Session() {
        for (const std::int64_t number : {1, 2, 3, 4}) arrive(number, 1);
        for (const std::int64_t number : {7, 8, 9}) arrive(number, 2);
        evidence.logged = 10;
        evidence.begunAtUserChange = 6;
        evidence.userAfterChange = "user-2";
        evidence.disk.events[10] = 1;
    }

    void arrive(std::int64_t number, int upload) {
        events.push_back({{"evtId", DemoLedger::identifier(number)},
                          {"upload", upload},
                          {"accepted", true},
                          {"duplicate", false},
                          {"record", {{"evtLabel", DemoLedger::label(number)}}}});
    }

    DemoAccount account() const { return {evidence, events, uploads, problems}; }

    DemoEvidence evidence;
    json events = json::array();
    json uploads = {{{"id", 1}, {"answered", true}, {"fault", "accept"}, {"fields", {{"userId", "user-1"}}}},
                    {{"id", 2}, {"answered", true}, {"fault", "accept"}, {"fields", {{"userId", "user-2"}}}},
                    {{"id", 3}, {"answered", false}, {"fault", "dropReply"}, {"fields", {{"userId", "user-2"}}}}};
    json problems = json::array();
};

bool mentions(const std::vector<std::string>& lines, const std::string& text) {
    for (const auto& line : lines) {
        if (line.find(text) != std::string::npos) return true;
    }
    return false;
}

TEST(DemoAccount, AWholeSessionAddsUp) {
    const auto account = Session().account();
    EXPECT_EQ(account.confirmed(), 7);
    EXPECT_EQ(account.onDisk(), 1);
    EXPECT_EQ(account.discarded(), 2);
    EXPECT_TRUE(account.isBalanced());
    EXPECT_EQ(account.errors(), std::vector<std::string>{});
    EXPECT_EQ(account.duplicates(), std::vector<std::string>{});
}

TEST(DemoAccount, OneEventTooFewIsFound) {
    Session session;
    session.events.erase(session.events.size() - 1);
    const auto account = session.account();
    EXPECT_FALSE(account.isBalanced());
    EXPECT_TRUE(mentions(account.errors(), "event 9 is lost"));
}

TEST(DemoAccount, AnEventLostAfterTheChangeOfUserIsNotDiscardedByRule) {
    Session session;
    session.evidence.disk.events.clear();
    EXPECT_FALSE(session.account().isBalanced());
    EXPECT_TRUE(mentions(session.account().errors(), "event 10 is lost"));
}

TEST(DemoAccount, WithoutAChangeOfUserNothingIsDiscardedByRule) {
    Session session;
    session.evidence.begunAtUserChange.reset();
    EXPECT_EQ(session.account().discarded(), 0);
    EXPECT_FALSE(session.account().isBalanced());
    EXPECT_TRUE(mentions(session.account().errors(), "event 5 is lost"));
}

TEST(DemoAccount, AnEventOfTheFormerUserThatSurvivedIsOneTooMany) {
    Session session;
    session.evidence.disk.events[5] = 1;
    EXPECT_FALSE(session.account().isBalanced());
    EXPECT_TRUE(mentions(session.account().errors(), "event 5 of the former user is still on disk"));
}

TEST(DemoAccount, AnEventSentUnderTheNewUsersNameIsFound) {
    Session session;
    session.arrive(6, 2);
    EXPECT_TRUE(mentions(session.account().errors(), "event 6 of the former user was sent under the new user's name"));
}

TEST(DemoAccount, AnEventThatNobodyLoggedIsFound) {
    Session arrived;
    arrived.arrive(11, 2);
    EXPECT_TRUE(mentions(arrived.account().errors(), "nobody logged"));
    Session stored;
    stored.evidence.disk.events[11] = 1;
    EXPECT_TRUE(mentions(stored.account().errors(), "nobody logged"));
}

TEST(DemoAccount, AnEventWithAnotherContentIsFoundAndDoesNotCount) {
    Session session;
    session.events[0]["record"]["evtLabel"] = "Event 2";
    EXPECT_TRUE(mentions(session.account().errors(), "event 1 arrived with another label"));
    EXPECT_EQ(session.account().confirmed(), 6);
}

TEST(DemoAccount, ARefusedEventDoesNotCount) {
    Session session;
    session.events.back()["accepted"] = false;
    EXPECT_EQ(session.account().confirmed(), 6);
    EXPECT_FALSE(session.account().isBalanced());
}

TEST(DemoAccount, ADuplicateWhoseAnswerWasLostIsExplained) {
    Session session;
    session.events.erase(session.events.size() - 1);
    session.arrive(9, 3);
    session.arrive(9, 2);
    const auto account = session.account();
    EXPECT_EQ(account.confirmed(), 7);
    EXPECT_EQ(account.errors(), std::vector<std::string>{});
    EXPECT_EQ(account.duplicates(),
              std::vector<std::string>{"1 events of upload 3 came again in upload 2: its answer was lost (dropReply)"});
}

TEST(DemoAccount, ADuplicateOfAnAnsweredUploadIsAnError) {
    Session session;
    session.arrive(9, 3);
    EXPECT_TRUE(mentions(session.account().errors(), "came again in upload 3 although its answer had been sent"));
}

TEST(DemoAccount, AnEventOnDiskWhoseAnswerWasLostCountsOnce) {
    Session session;
    session.events.back()["upload"] = 3;
    session.evidence.disk.events[9] = 1;
    EXPECT_TRUE(session.account().isBalanced());
    EXPECT_EQ(session.account().errors(), std::vector<std::string>{});
}

TEST(DemoAccount, AnEventOnDiskAfterItsAnswerIsAnError) {
    Session session;
    session.evidence.disk.events[9] = 1;
    EXPECT_TRUE(mentions(session.account().errors(), "event 9 is still on disk although"));
}

TEST(DemoAccount, AnEventOnDiskTwiceIsAnError) {
    Session session;
    session.evidence.disk.events[10] = 2;
    EXPECT_TRUE(mentions(session.account().errors(), "event 10 is on disk 2 times"));
}

TEST(DemoAccount, ViolationsOfTheWireFormatAndFragmentsOnDiskAreErrors) {
    Session session;
    session.problems.push_back({{"kind", "cookie"}, {"detail", "missing"}});
    session.evidence.disk.complaints.emplace_back("a.log: torn");
    EXPECT_TRUE(mentions(session.account().errors(), "cookie"));
    EXPECT_TRUE(mentions(session.account().errors(), "a.log: torn"));
}

// The tenth event of the session is what tells a crash.
struct CrashedSession : Session {
    CrashedSession() {
        evidence.disk.events.clear();
        evidence.crash = DemoCrash{"THE-CRASH", "SIGSEGV"};
        evidence.number = [](std::string_view identifier) {
            return identifier == "THE-CRASH" ? 10 : DemoLedger::number(identifier);
        };
        evidence.label = [](std::int64_t number) { return number == 10 ? std::string() : DemoLedger::label(number); };
    }

    void tell(int upload) {
        events.push_back({{"evtId", "THE-CRASH"},
                          {"upload", upload},
                          {"accepted", true},
                          {"duplicate", false},
                          {"record", {{"evtType", "crash"}, {"evtCategory", "crash"}, {"crashreason", "SIGSEGV"}}}});
    }
};

TEST(DemoAccount, ACrashThatWasToldIsAnEventLikeAnyOther) {
    CrashedSession session;
    session.tell(2);
    const auto account = session.account();
    EXPECT_EQ(account.errors(), std::vector<std::string>{});
    EXPECT_EQ(account.crashesTold(), 1);
    EXPECT_EQ(account.confirmed(), 8);
    EXPECT_TRUE(account.isBalanced());
}

TEST(DemoAccount, ACrashThatWasToldMayStillBeOnDisk) {
    CrashedSession session;
    session.evidence.disk.events[10] = 1;
    EXPECT_EQ(session.account().errors(), std::vector<std::string>{});
    EXPECT_EQ(session.account().crashesTold(), 1);
}

TEST(DemoAccount, ACrashThatWasNotToldIsAnError) {
    const CrashedSession session;
    EXPECT_TRUE(mentions(session.account().errors(), "the crash \"SIGSEGV\" was told 0 times"));
    EXPECT_TRUE(mentions(session.account().errors(), "event 10 is lost"));
}

TEST(DemoAccount, ACrashThatWasToldTwiceIsAnError) {
    CrashedSession session;
    session.tell(2);
    session.tell(2);
    EXPECT_TRUE(mentions(session.account().errors(), "the crash \"SIGSEGV\" was told 2 times"));
}

TEST(DemoAccount, ACrashThatArrivesAsAnotherEventIsAnError) {
    CrashedSession session;
    session.tell(2);
    session.events.back()["record"]["crashreason"] = "SIGBUS";
    EXPECT_TRUE(mentions(session.account().errors(), "arrived as another event"));
}

TEST(DemoLedger, NumbersGoOnBehindThoseOfAFormerStart) {
    EXPECT_EQ(DemoLedger(-1).begin(), 1);
    EXPECT_EQ(DemoLedger(-1, 41).begin(), 42);
}

TEST(DemoLedger, AnIdentifierGivesItsNumberBack) {
    EXPECT_EQ(DemoLedger::number(DemoLedger::identifier(1)), 1);
    EXPECT_EQ(DemoLedger::number(DemoLedger::identifier(123456789012)), 123456789012);
    EXPECT_EQ(DemoLedger::identifier(42).size(), 36U);
    for (const auto* other : {"", "x", "DE300000-0000-4000-8000-", "DE300000-0000-4000-8000-00000000000X"}) {
        EXPECT_EQ(DemoLedger::number(other), 0) << other;
    }
}

} // namespace
} // namespace tallyfoot::commandline
