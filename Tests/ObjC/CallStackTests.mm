// What the call stack is said to hold, while calls of several kinds reach one place, again and again.
#include "TallyfootObjC/Binding/CallStack.h"

#import <Foundation/Foundation.h>
#include <alloca.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <random>

using Call = std::function<void()>;

// Its calls are not its last deeds, or its frames would be gone by then.
@interface CallStackTracker : NSObject {
@public
    int calls;
}
- (void)continueTracking:(const Call*)call;
- (void)endTracking:(const Call*)call;
@end

@implementation CallStackTracker
- (void)continueTracking:(const Call*)call {
    (*call)();
    ++calls;
}
- (void)endTracking:(const Call*)call {
    (*call)();
    ++calls;
}
@end

// Has nothing of the other one but the end of its name.
@interface HostsCallStackTracker : NSObject {
@public
    int calls;
}
- (void)continueTracking:(const Call*)call;
@end

@implementation HostsCallStackTracker
- (void)continueTracking:(const Call*)call {
    (*call)();
    ++calls;
}
@end

// The beginning of the other one's name is no part of a symbol's text that counts.
@interface CallStackTrackerOfTheHosts : HostsCallStackTracker
@end

@implementation CallStackTrackerOfTheHosts
- (void)continueTracking:(const Call*)call {
    (*call)();
    ++calls;
}
@end

namespace {

using tallyfoot::objc::callStackContains;

constexpr auto marker = "CallStackTracker continueTracking";

// As deep as asked for, in frames of a size that varies.
[[gnu::noinline]] void deeper(int levels, std::size_t bytes, const Call& call) {
    auto* const room = static_cast<volatile char*>(alloca(bytes + 1));
    if (levels == 0)
        call();
    else
        deeper(levels - 1, bytes, call);
    room[bytes] = 1;
}

class CallStack : public testing::Test {
protected:
    ~CallStack() override { [tracker_ release]; }

    bool isFound(bool whileTracking, int levels = 0, std::size_t bytes = 0) {
        bool isThere = false;
        const Call look = [&] { isThere = callStackContains(marker); };
        const Call call = [&] { deeper(levels, bytes, look); };
        if (whileTracking)
            [tracker_ continueTracking:&call];
        else
            [tracker_ endTracking:&call];
        return isThere;
    }

private:
    CallStackTracker* tracker_ = [[CallStackTracker alloc] init];
};

TEST_F(CallStack, IsToldAnewEachTime) {
    for (int round = 0; round < 20; ++round) {
        EXPECT_TRUE(isFound(true));
        EXPECT_EQ(isFound(round % 3 == 0), round % 3 == 0);
        if (round % 4 == 0) EXPECT_FALSE(callStackContains(marker));
    }
}

// What earlier calls have left on the stack then lies within the frames of later ones.
TEST_F(CallStack, IsToldAtAnyDepthAndWithFramesOfAnySize) {
    std::mt19937 random(1);
    for (int round = 0; round < 5000; ++round) {
        const bool whileTracking = random() % 2 == 0;
        const int levels = round % 50 == 0 ? 300 : static_cast<int>(random() % 4);
        const std::size_t bytes = random() % 64 * 16;
        ASSERT_EQ(isFound(whileTracking, levels, bytes), whileTracking) << levels << ' ' << bytes;
    }
}

TEST_F(CallStack, IsToldByAnyPartOfASymbolsText) {
    const auto isFoundIn = [](Class trackerClass) {
        bool isThere = false;
        const Call look = [&] { isThere = callStackContains(marker); };
        id tracker = [[trackerClass alloc] init];
        [tracker continueTracking:&look];
        [tracker release];
        return isThere;
    };
    EXPECT_TRUE(isFoundIn([HostsCallStackTracker class]));
    EXPECT_FALSE(isFoundIn([CallStackTrackerOfTheHosts class]));
}

} // namespace
