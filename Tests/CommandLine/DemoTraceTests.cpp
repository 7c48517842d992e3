#include "CommandLine/DemoTrace.h"
#include "Support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>

namespace tallyfoot::commandline {
namespace {

class DemoTraces : public ::testing::Test {
protected:
    DemoTrace read(const std::string& output) {
        const auto file = folder_.path() / "output.txt";
        std::ofstream(file) << output;
        return DemoTrace::read(file);
    }

    static std::string event(const std::string& lines) { return banner + lines + banner; }

    static inline const std::string banner = "\"" + std::string(50, '*') + "\"\n";

private:
    tallyfoot::testing::TemporaryFolder folder_;
};

TEST_F(DemoTraces, NumbersTheEventsInTheirOrder) {
    const auto trace =
        read(event("\"evtId: A\"\n\"evtType: action\"\n") + "\"Request is \"\n"
             + event("\"evtId: B\"\n\"evtCategory: UIButton\"\n\"evtAction: tap\"\n\"evtLabel: Buy\"\n"));
    EXPECT_EQ(trace.size(), 2);
    EXPECT_EQ(trace.number("A"), 1);
    EXPECT_EQ(trace.number("B"), 2);
    EXPECT_EQ(trace.number("C"), 0);
    EXPECT_EQ(trace.facts(1), (DemoFacts{"action", "", "", ""}));
    EXPECT_EQ(trace.facts(2), (DemoFacts{"", "UIButton", "tap", "Buy"}));
}

TEST_F(DemoTraces, ReadsEscapedTexts) {
    const auto trace = read(event(R"("evtId: A")"
                                  "\n"
                                  R"("evtLabel: \"Best\" honey: 1\\2")"
                                  "\n"));
    EXPECT_EQ(trace.facts(1).label, R"("Best" honey: 1\2)");
}

TEST_F(DemoTraces, TakesNothingFromBetweenEvents) {
    const auto trace = read("\"evtId: X\"\n" + event("\"evtId: A\"\n") + "\"evtId: Y\"\n▿ a dump\n");
    EXPECT_EQ(trace.size(), 1);
    EXPECT_EQ(trace.number("X"), 0);
}

TEST_F(DemoTraces, IsEmptyWithoutAnOutput) { EXPECT_EQ(DemoTrace::read("/nonexistent/file").size(), 0); }

TEST(DemoFactsOfARecord, AreEmptyWhereItHasNone) {
    EXPECT_EQ(DemoFacts::of({{"evtType", "screen"}}), (DemoFacts{"screen", "", "", ""}));
    EXPECT_EQ(DemoFacts::of(nlohmann::json::array()), DemoFacts{});
}

} // namespace
} // namespace tallyfoot::commandline
