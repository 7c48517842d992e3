#include "Support/ManualClock.h"
#include "Support/MemoryUserDefaults.h"
#include "Support/RecordingConsole.h"

#include "Tallyfoot/Crash/ExceptionHandler.h"
#include "Tallyfoot/Platform/CrashHooks.h"
#include "Tallyfoot/Platform/Random.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <set>

namespace tallyfoot::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Crashes when the test says so, and goes on afterwards.
class ManualCrashHooks final : public CrashHooks {
public:
    struct Exit {
        int status;
    };

    void setUncaughtExceptionHandler(ExceptionHook hook) override {
        order.emplace_back(0);
        exceptionHook = hook;
    }
    void connect(const ExceptionRuntime&) override {}
    void signal(int number, SignalHook hook) override {
        order.push_back(number);
        signalHook = hook;
    }
    [[noreturn]] void exit(int) noexcept override { std::abort(); } // tests of signals use real processes
    void prepareThread() noexcept override { ++prepared; }
    void pause() noexcept override { ++pauses; }

    std::vector<int> order; // 0 is the exceptions' hook
    ExceptionHook exceptionHook = nullptr;
    SignalHook signalHook = nullptr;
    int prepared = 0;
    int pauses = 0;
};

class CountingRandom final : public Random {
public:
    std::uint32_t number() override { return ++count; }
    std::string uuidString() override { return "identifier-" + std::to_string(++count); }
    std::uint32_t count = 0;
};

class ExceptionHandlerTest : public ::testing::Test, public CrashFacade {
protected:
    PlatformServices services() const {
        PlatformServices services;
        services.clock = std::make_shared<ManualClock>();
        services.console = console_;
        services.crashHooks = hooks;
        services.random = std::make_shared<CountingRandom>();
        services.userDefaults = defaults;
        return services;
    }

    void log(EventType type, Attributes& attributes) override {
        EXPECT_EQ(type, EventType::crash);
        if (whileLogging) whileLogging();
        logged.push_back(attributes);
    }
    bool isIgnored(std::string_view category) const override { return ignored.contains(std::string(category)); }
    const DebugConsole& console() const override { return debugConsole; }

    void store(PropertyList::Dictionary record) { defaults->setObject("crash", PropertyList{std::move(record)}); }
    static PropertyList text(const std::string& value) { return PropertyList{value}; }

    std::shared_ptr<ManualCrashHooks> hooks = std::make_shared<ManualCrashHooks>();
    std::shared_ptr<MemoryUserDefaults> defaults = std::make_shared<MemoryUserDefaults>();
    std::shared_ptr<RecordingConsole> console_ = std::make_shared<RecordingConsole>();
    std::atomic<bool> showOutput{true};
    DebugConsole debugConsole{*console_, showOutput};
    CrashContext context{*hooks};
    std::set<std::string> ignored;
    std::vector<Attributes> logged;
    std::function<void()> whileLogging;
    ExceptionHandler handler{services(), context, *this};
};

TEST_F(ExceptionHandlerTest, InstallsTheHooksInTheirOrderAtEachCall) {
    handler.install();
    EXPECT_THAT(hooks->order, ElementsAre(0, SIGABRT, SIGILL, SIGSEGV, SIGFPE, SIGBUS, SIGPIPE));
    handler.install();
    EXPECT_EQ(hooks->order.size(), 14U);
    EXPECT_GE(hooks->prepared, 2);
}

TEST_F(ExceptionHandlerTest, AnExceptionIsStoredWithTheGeneratedAttributes) {
    handler.install();
    context.setScreenTitle("Basket");
    context.setPageParent("web");
    hooks->exceptionHook("no shelf");
    EXPECT_EQ(defaults->object("crash"),
              (PropertyList{PropertyList::Dictionary{{"crashreason", text("no shelf")},
                                                     {"evtId", text("identifier-1")},
                                                     {"evtLclTimestamp", text("2024-03-07 14:05:09 +0000")},
                                                     {"pgName", text("Basket")},
                                                     {"pgPrnt", text("web")}}}));
}

TEST_F(ExceptionHandlerTest, AnExceptionWithoutAReasonIsStoredWithAnEmptyText) {
    handler.install();
    hooks->exceptionHook("");
    const auto stored = defaults->object("crash");
    ASSERT_TRUE(stored);
    EXPECT_EQ(stored->as<PropertyList::Dictionary>()->at("crashreason"), text(""));
    EXPECT_EQ(stored->as<PropertyList::Dictionary>()->at("pgPrnt"), text("iOS"));
    EXPECT_EQ(stored->as<PropertyList::Dictionary>()->at("pgName"), text(""));
}

TEST_F(ExceptionHandlerTest, AStoredCrashIsLoggedShownAndCleared) {
    store({{"crashreason", text("SIGSEGV")}, {"evtId", text("id")}});
    handler.install();
    EXPECT_THAT(logged, ElementsAre(Attributes{{LogAttribute::crashReason, "SIGSEGV"},
                                               {LogAttribute::evtId, "id"},
                                               {LogAttribute::evtCategory, "crash"}}));
    EXPECT_THAT(console_->lines(), ElementsAre(R"("Adding crash: [\"crashreason\": \"SIGSEGV\", \"evtCategory\": )"
                                               R"(\"crash\", \"evtId\": \"id\"]")"));
    EXPECT_EQ(defaults->object("crash"), std::nullopt);
    EXPECT_EQ(defaults->synchronizations(), 1);
    handler.install();
    EXPECT_EQ(logged.size(), 1U);
}

TEST_F(ExceptionHandlerTest, IsLoggedBeforeItIsCleared) {
    store({{"crashreason", text("SIGSEGV")}});
    whileLogging = [this] { EXPECT_NE(defaults->object("crash"), std::nullopt); };
    handler.install();
    EXPECT_EQ(logged.size(), 1U);
}

TEST_F(ExceptionHandlerTest, WhatCannotBeLoggedForWantOfMemoryStays) {
    store({{"crashreason", text("SIGSEGV")}});
    whileLogging = [] { throw std::bad_alloc(); };
    handler.install();
    EXPECT_NE(defaults->object("crash"), std::nullopt);
    whileLogging = nullptr;
    handler.install();
    EXPECT_EQ(logged.size(), 1U);
}

TEST_F(ExceptionHandlerTest, AnIgnoredCrashIsShownAndClearedButNotLogged) {
    store({{"crashreason", text("SIGSEGV")}});
    ignored.insert("crash");
    handler.install();
    EXPECT_THAT(logged, IsEmpty());
    EXPECT_EQ(console_->lines().size(), 1U);
    EXPECT_EQ(defaults->object("crash"), std::nullopt);
}

TEST_F(ExceptionHandlerTest, WithTheConsoleOffNothingIsShown) {
    store({{"crashreason", text("SIGSEGV")}});
    showOutput = false;
    handler.install();
    EXPECT_EQ(logged.size(), 1U);
    EXPECT_EQ(console_->text(), "");
}

TEST_F(ExceptionHandlerTest, WhatIsNoDictionaryFromTextToTextStaysUntouched) {
    const std::vector<PropertyList> values{
        text("SIGSEGV"), PropertyList{std::int64_t{7}}, PropertyList{PropertyList::Array{text("SIGSEGV")}},
        PropertyList{
            PropertyList::Dictionary{{"crashreason", text("SIGSEGV")}, {"evtId", PropertyList{std::int64_t{7}}}}}};
    for (const auto& value : values) {
        defaults->setObject("crash", value);
        handler.install();
        EXPECT_EQ(defaults->object("crash"), value);
    }
    EXPECT_THAT(logged, IsEmpty());
    EXPECT_EQ(console_->text(), "");
}

TEST_F(ExceptionHandlerTest, KeysThatAreNoAttributeAreDropped) {
    store({{"crashreason", text("SIGSEGV")}, {"crashReason", text("x")}, {"other", text("y")}});
    handler.install();
    EXPECT_THAT(logged,
                ElementsAre(Attributes{{LogAttribute::crashReason, "SIGSEGV"}, {LogAttribute::evtCategory, "crash"}}));
}

TEST_F(ExceptionHandlerTest, ADictionaryWithoutAnyAttributeStaysUntouched) {
    store({{"other", text("y")}});
    handler.install();
    EXPECT_THAT(logged, IsEmpty());
    EXPECT_NE(defaults->object("crash"), std::nullopt);
    store({});
    handler.install();
    EXPECT_NE(defaults->object("crash"), std::nullopt);
}

TEST_F(ExceptionHandlerTest, ACategoryThatWasStoredIsReplaced) {
    store({{"crashreason", text("SIGSEGV")}, {"evtCategory", text("UIButton")}});
    handler.install();
    EXPECT_EQ(*logged.at(0).find(LogAttribute::evtCategory), "crash");
}

TEST_F(ExceptionHandlerTest, ACrashWhileTheFormerOneIsToldIsNotClearedWithIt) {
    store({{"crashreason", text("SIGSEGV")}});
    whileLogging = [this] { hooks->exceptionHook("the second"); };
    handler.install();
    const auto stored = defaults->object("crash");
    ASSERT_TRUE(stored);
    EXPECT_EQ(stored->as<PropertyList::Dictionary>()->at("crashreason"), text("the second"));
}

TEST_F(ExceptionHandlerTest, ACrashOfAnotherProcessWhileTheFormerOneIsToldIsNotClearedWithIt) {
    store({{"crashreason", text("SIGSEGV")}, {"evtId", text("former")}});
    whileLogging = [this] { store({{"crashreason", text("SIGSEGV")}, {"evtId", text("of another process")}}); };
    handler.install();
    whileLogging = nullptr;
    handler.install();
    ASSERT_EQ(logged.size(), 2U);
    EXPECT_EQ(*logged[1].find(LogAttribute::evtId), "of another process");
    EXPECT_EQ(defaults->object("crash"), std::nullopt);
}

TEST_F(ExceptionHandlerTest, AConfigureFromInsideTheReportDoesNotTellTwice) {
    store({{"crashreason", text("SIGSEGV")}});
    whileLogging = [this] { handler.install(); };
    handler.install();
    EXPECT_EQ(logged.size(), 1U);
}

} // namespace
} // namespace tallyfoot::testing
