#include "CommandLine/DemoKinds.h"
#include "Support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <fstream>

namespace tallyfoot::commandline {
namespace {

using nlohmann::json;

// A walk of four touches: a button that gave records 1 and 4, a switch that gave 2, a button without a
// record, and a long press that gave 3. 1 was discarded when the user changed, 2 and 3 were confirmed, 4
// is on disk. A test changes one thing.
class Walk : public ::testing::Test {
protected:
    Walk() {
        show("1", {"action", "UIButton", "tap", "Buy"});
        show("2", {"action", "UISwitch", "tap", "true"});
        show("3", {"gesture", "UILongPressGestureRecognizer", "Long Press Gesture", ""});
        show("4", {"action", "UIButton", "tap", "Wish"});
        arrive("2", {"action", "UISwitch", "tap", "true"});
        arrive("3", {"gesture", "UILongPressGestureRecognizer", "Long Press Gesture", ""});
        evidence.begunAtUserChange = 1;
        evidence.disk.events[4] = 1;
    }

    void show(const std::string& id, const DemoFacts& facts) {
        const auto banner = "\"" + std::string(50, '*') + "\"\n";
        shown += banner + "\"evtId: " + id + "\"\n\"evtType: " + facts.type + "\"\n\"evtCategory: " + facts.category
                 + "\"\n\"evtAction: " + facts.action + "\"\n\"evtLabel: " + facts.label + "\"\n" + banner;
    }

    void arrive(const std::string& id, const DemoFacts& facts) {
        events.push_back({{"evtId", id},
                          {"accepted", true},
                          {"record",
                           {{"evtType", facts.type},
                            {"evtCategory", facts.category},
                            {"evtAction", facts.action},
                            {"evtLabel", facts.label}}}});
    }

    DemoKinds kinds() {
        std::ofstream(folder.path() / "output.txt") << shown;
        return {told, DemoTrace::read(folder.path() / "output.txt"), evidence, events};
    }

    void expectError(const std::string& part) {
        const auto errors = kinds().errors();
        const bool isTold = std::any_of(errors.begin(), errors.end(),
                                        [&](const auto& error) { return error.find(part) != std::string::npos; });
        EXPECT_TRUE(isTold) << ::testing::PrintToString(errors);
    }

    tallyfoot::testing::TemporaryFolder folder;
    std::string shown;
    json events = json::array();
    DemoEvidence evidence;
    json told = json::parse(R"([
        {"kind": "buttons", "performed": 2, "type": "action", "category": "UIButton", "action": "tap",
         "labels": {"Buy": 1, "Wish": 1}},
        {"kind": "switches", "performed": 1, "type": "action", "category": "UISwitch", "action": "tap",
         "labels": {"true": 1}},
        {"kind": "long presses", "performed": 1, "type": "gesture", "category": "UILongPressGestureRecognizer",
         "action": "Long Press Gesture", "labels": {"": 1}},
        {"kind": "PIN keys", "performed": 1, "category": "UIButton", "label": "7"},
        {"kind": "wheels", "performed": 3}])");
};

TEST_F(Walk, BalancesWhenEveryTouchGaveWhatItMust) {
    const auto books = kinds();
    EXPECT_TRUE(books.errors().empty()) << ::testing::PrintToString(books.errors());
    ASSERT_EQ(books.rows().size(), 5U);
    const auto& buttons = books.rows()[0];
    EXPECT_EQ(buttons.performed, 2);
    EXPECT_EQ(buttons.due, 2);
    EXPECT_EQ(buttons.recorded, 2);
    EXPECT_EQ(buttons.confirmed, 0);
    EXPECT_EQ(buttons.onDisk, 1);
    EXPECT_EQ(buttons.discarded, 1);
    EXPECT_EQ(books.rows()[3].recorded, 0);
    EXPECT_EQ(books.rows()[4].performed, 3);
}

TEST_F(Walk, FindsARecordTooFew) {
    told[0]["labels"]["Buy"] = 2;
    expectError("buttons: 1 records too few with the label \"Buy\"");
    expectError("buttons: the books do not balance");
}

TEST_F(Walk, FindsARecordTooMany) {
    show("5", {"action", "UISwitch", "tap", "true"});
    evidence.disk.events[5] = 1;
    expectError("switches: 1 records too many with the label \"true\"");
}

TEST_F(Walk, FindsALabelInAnothersPlace) {
    told[0]["labels"] = {{"Buy", 2}};
    expectError("too few with the label \"Buy\"");
    expectError("too many with the label \"Wish\"");
}

TEST_F(Walk, FindsARecordOfWhatGivesNone) {
    show("5", {"action", "UIButton", "tap", "7"});
    evidence.disk.events[5] = 1;
    EXPECT_EQ(kinds().rows()[3].recorded, 1);
    expectError("PIN keys: 1 records too many");
}

TEST_F(Walk, FindsARecordThatBelongsToNoKind) {
    show("5", {"action", "UITextField", "tap", "x"});
    expectError("a record that nothing the user did must give: action / UITextField / tap / \"x\"");
}

TEST_F(Walk, FindsALostRecord) {
    evidence.disk.events.clear();
    expectError("buttons: the books do not balance");
}

TEST_F(Walk, FindsARecordThatChangedOnItsWay) {
    events[0]["record"]["evtLabel"] = "false";
    expectError("a record arrived as another: action / UISwitch / tap / \"false\"");
}

TEST_F(Walk, CountsARecordThatCameTwiceOnce) {
    arrive("2", {"action", "UISwitch", "tap", "true"});
    EXPECT_EQ(kinds().rows()[1].confirmed, 1);
    EXPECT_TRUE(kinds().errors().empty());
}

TEST_F(Walk, DoesNotCountARefusedRecord) {
    events[0]["accepted"] = false;
    expectError("switches: the books do not balance");
}

TEST_F(Walk, OfTwoHostsAddsUp) {
    const auto later = json::parse(R"([
        {"kind": "buttons", "performed": 3, "type": "action", "category": "UIButton", "action": "tap",
         "labels": {"Buy": 2, "Call": 1}},
        {"kind": "wheels", "performed": 1},
        {"kind": "tabs", "performed": 1, "type": "action", "category": "UITabBar", "action": "Tap",
         "labels": {"Home": 1}}])");
    const auto both = DemoKinds::together(told, later);
    ASSERT_EQ(both.size(), 6U);
    EXPECT_EQ(both[0].at("performed"), 5);
    EXPECT_EQ(both[0].at("labels"), (json{{"Buy", 3}, {"Wish", 1}, {"Call", 1}}));
    EXPECT_EQ(both[1], told[1]);
    EXPECT_EQ(both[4].at("performed"), 4);
    EXPECT_EQ(both[5], later[2]);
}

TEST_F(Walk, MayEndWithACrash) {
    show("5", {"crash", "crash", "", ""});
    evidence.disk.events[5] = 1;
    expectError("a record that nothing the user did must give");
    told.push_back(DemoKinds::crash());
    const auto books = kinds();
    EXPECT_TRUE(books.errors().empty()) << ::testing::PrintToString(books.errors());
    EXPECT_EQ(books.rows().back().recorded, 1);
    EXPECT_EQ(books.rows().back().onDisk, 1);
}

} // namespace
} // namespace tallyfoot::commandline
