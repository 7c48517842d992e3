#include "Support/ManualDispatch.h"
#include "Support/RecordingConsole.h"
#include "Timing/SpyDispatch.h"

#include "Tallyfoot/Recording/Timing/Debouncer.h"

#include <gmock/gmock.h>

namespace tallyfoot {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class DebouncerTest : public ::testing::Test {
protected:
    std::unique_ptr<Debouncer> make(std::function<void()> callback) {
        return std::make_unique<Debouncer>(dispatch, DebugConsole(console, showOutput), Repeater::Interval::seconds(10),
                                           std::move(callback));
    }

    std::unique_ptr<Debouncer> makeCounting() {
        return make([this] { ++fires; });
    }

    testing::ManualDispatch manual;
    testing::SpyDispatch dispatch{manual};
    testing::RecordingConsole console;
    std::atomic<bool> showOutput{true};
    int fires = 0;
};

TEST_F(DebouncerTest, DoesNothingBeforeTheFirstCall) {
    auto debouncer = makeCounting();
    manual.advance(60s);
    EXPECT_EQ(fires, 0);
    EXPECT_EQ(dispatch.timersMade(), 0U);
}

TEST_F(DebouncerTest, ACallFiresOnceAfterTheDelay) {
    auto debouncer = makeCounting();
    debouncer->call();
    manual.advance(9999ms);
    EXPECT_EQ(fires, 0);
    manual.advance(60s);
    EXPECT_EQ(fires, 1);
    EXPECT_EQ(dispatch.lastTimer().queueLabel, "com.repeat.queue");
    EXPECT_EQ(dispatch.lastTimer().leeway, 0s);
}

TEST_F(DebouncerTest, TwoCallsWithinTheDelayFireOnceOneFullDelayAfterTheSecond) {
    auto debouncer = makeCounting();
    debouncer->call();
    manual.advance(6s);
    debouncer->call();
    EXPECT_EQ(dispatch.timersMade(), 2U); // the same repeater, reset
    manual.advance(9999ms);
    EXPECT_EQ(fires, 0);
    manual.advance(1ms);
    EXPECT_EQ(fires, 1);
    manual.advance(60s);
    EXPECT_EQ(fires, 1);
}

TEST_F(DebouncerTest, ACallAfterItFiredStartsAnotherDelay) {
    auto debouncer = makeCounting();
    debouncer->call();
    manual.advance(10s);
    debouncer->call();
    manual.advance(10s);
    EXPECT_EQ(fires, 2);
}

TEST_F(DebouncerTest, WithoutACallbackItSaysSoWhenItFires) {
    auto debouncer = make(nullptr);
    debouncer->call();
    manual.advance(10s);
    EXPECT_THAT(console.lines(), ElementsAre("\"Debouncer fired but callback not set.\""));
}

TEST_F(DebouncerTest, WithoutACallbackItIsSilentWhileTheConsoleIsOff) {
    showOutput = false;
    auto debouncer = make(nullptr);
    debouncer->call();
    manual.advance(10s);
    EXPECT_THAT(console.lines(), IsEmpty());
}

TEST_F(DebouncerTest, ACallbackSetLaterIsTheOneThatIsCalled) {
    auto debouncer = make([] { FAIL() << "replaced"; });
    debouncer->call();
    debouncer->setCallback([this] { ++fires; });
    manual.advance(10s);
    EXPECT_EQ(fires, 1);
    EXPECT_THAT(console.lines(), IsEmpty());
}

TEST_F(DebouncerTest, ACallbackThatIsTakenAwayIsNotCalled) {
    auto debouncer = makeCounting();
    debouncer->setCallback(nullptr);
    debouncer->call();
    manual.advance(10s);
    EXPECT_EQ(fires, 0);
    EXPECT_EQ(console.lines().size(), 1U);
}

TEST_F(DebouncerTest, TheCallbackMayCallAgain) {
    auto debouncer = makeCounting();
    debouncer->setCallback([&] {
        if (++fires < 3) debouncer->call();
    });
    debouncer->call();
    manual.advance(29s);
    EXPECT_EQ(fires, 2);
    manual.advance(60s);
    EXPECT_EQ(fires, 3);
}

TEST_F(DebouncerTest, TheCallbackMayReleaseTheDebouncer) {
    auto debouncer = makeCounting();
    debouncer->setCallback([&] {
        debouncer.reset();
        ++fires;
    });
    debouncer->call();
    manual.advance(60s);
    EXPECT_EQ(fires, 1);
    EXPECT_TRUE(dispatch.lastTimer().isReleased);
}

TEST_F(DebouncerTest, OnceReleasedItDoesNotFire) {
    auto debouncer = makeCounting();
    debouncer->call();
    debouncer.reset();
    manual.advance(60s);
    EXPECT_EQ(fires, 0);
    EXPECT_THAT(console.lines(), IsEmpty());
}

} // namespace
} // namespace tallyfoot
