#include "Crash/CrashHost.h"
#include "Crash/Faults.h"
#import "TallyfootObjC/TallyfootObjC.h"

#import <UIKit/UIKit.h>
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>
#include <thread>

// Raises what it is told to.
@interface Raiser : NSObject {
@public
    NSString* reason;
}
- (void)raise:(id)sender;
@end

@implementation Raiser

- (void)raise:(id)sender {
    (void)sender;
    @autoreleasepool {
        [[NSException exceptionWithName:@"Own" reason:reason userInfo:nil] raise];
    }
}

@end

// Has no reason to give, gives something else, or fails when it is asked.
@interface OddException : NSException {
@public
    id (^answer)(void);
}
@end

@implementation OddException

- (NSString*)reason {
    return answer();
}

@end

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using tallyfoot::testing::aborted;
using tallyfoot::testing::writeToForbiddenMemory;

constexpr int ended = 1; // as Foundation ends a process for an exception that nobody catches

void raise(NSString* reason) {
    Raiser* raiser = [[[Raiser alloc] init] autorelease];
    raiser->reason = reason;
    [raiser raise:nil];
}

void raiseOdd(id (^answer)(void)) {
    OddException* exception = (OddException*)[OddException exceptionWithName:@"Odd" reason:@"other" userInfo:nil];
    exception->answer = answer;
    [exception raise];
}

void callWithoutLettingPass(void (*function)()) noexcept { function(); }

class ObjCCrash : public tallyfoot::testing::CrashTest {
protected:
    ObjCCrash() { ::unsetenv("CRASH_ON_ABORT"); }
    ~ObjCCrash() override { [pool_ drain]; }

    // The Objective-C face switches on, then the host crashes.
    ::testing::AssertionResult hostEndsWith(int status, const std::function<void()>& crash) {
        return endsWith(status, [&] {
            switchOn();
            crash();
        });
    }

    static void switchOn() {
        Tallyfoot.showOutput = NO;
        Tallyfoot.appInfo = [[[ApplicationInfo alloc] initWithAppName:@"Shop"
                                                                appId:@"id"
                                                              bizArea:@"area"
                                                            bizAreaId:@"area-id"] autorelease];
        [Tallyfoot configure:[[[UploadConfiguration alloc] initWithSeconds:3600 eventsCount:1000000] autorelease]
                    ignoreClasses:@[]
            authenticationClosure:^{
              return [[[Authentication alloc] initWithUserId:@"user-1" authenticationToken:@"token-1"
                                               userLogOnTime:nil] autorelease];
            }];
    }

    // What the next start of the host tells.
    std::vector<std::string> toldByHost() {
        switchOn();
        std::vector<std::string> reasons;
        for (const auto& record : crashRecords()) reasons.push_back(record["crashreason"]);
        return reasons;
    }

private:
    NSAutoreleasePool* pool_ = [[NSAutoreleasePool alloc] init];
};

TEST_F(ObjCCrash, AnExceptionIsToldWithItsReasonOnceAndEndsTheProcessAsUsual) {
    ASSERT_TRUE(hostEndsWith(ended, [] { raise(@"no shelf"); }));
    EXPECT_THAT(message, HasSubstr("Uncaught exception Own, reason: no shelf"));
    EXPECT_EQ(storedReason(), "no shelf");
    EXPECT_THAT(toldByHost(), ElementsAre("no shelf"));
    EXPECT_EQ(storedReason(), "nothing");
    EXPECT_THAT(toldByHost(), ElementsAre("no shelf")); // not again
    const auto record = crashRecords()[0];
    EXPECT_EQ(record.size(), 7U);
    EXPECT_EQ(record["evtType"], "crash");
    EXPECT_EQ(record["evtCategory"], "crash");
    EXPECT_EQ(record["pgPrnt"], "iOS");
}

TEST_F(ObjCCrash, AnExceptionThatIsThrownWithoutRaising) {
    ASSERT_TRUE(hostEndsWith(ended, [] { @throw [NSException exceptionWithName:@"Own" reason:@"r" userInfo:nil]; }));
    EXPECT_THAT(toldByHost(), ElementsAre("r"));
}

// The host may want a core dump.
TEST_F(ObjCCrash, TheAbortThatFollowsAnExceptionIsNotTold) {
    ASSERT_TRUE(hostEndsWith(aborted, [] {
        ::setenv("CRASH_ON_ABORT", "YES", 1);
        raise(@"no shelf");
    }));
    EXPECT_THAT(toldByHost(), ElementsAre("no shelf"));
}

TEST_F(ObjCCrash, AnExceptionOnAnotherThread) {
    ASSERT_TRUE(hostEndsWith(ended, [] {
        Raiser* raiser = [[Raiser alloc] init];
        raiser->reason = @"of a thread";
        [NSThread detachNewThreadSelector:@selector(raise:) toTarget:raiser withObject:nil];
        for (;;) ::pause();
    }));
    EXPECT_THAT(toldByHost(), ElementsAre("of a thread"));
}

TEST_F(ObjCCrash, AnExceptionOnAThreadThatObjectiveCDoesNotKnow) {
    ASSERT_TRUE(hostEndsWith(ended, [] { std::thread([] { raise(@"of C++"); }).join(); }));
    EXPECT_THAT(toldByHost(), ElementsAre("of C++"));
}

TEST_F(ObjCCrash, AnExceptionInAnActionThatIsCaptured) {
    ASSERT_TRUE(hostEndsWith(ended, [] {
        Raiser* raiser = [[Raiser alloc] init];
        raiser->reason = @"of an action";
        [[UIApplication sharedApplication] sendAction:@selector(raise:)
                                                   to:raiser
                                                 from:[UIButton buttonWithType:UIButtonTypeSystem]
                                             forEvent:nil];
    }));
    EXPECT_THAT(toldByHost(), ElementsAre("of an action"));
}

TEST_F(ObjCCrash, AnExceptionWithoutAReasonIsToldWithAnEmptyOne) {
    ASSERT_TRUE(hostEndsWith(ended, [] {
        raiseOdd(^id {
          return nil;
        });
    }));
    EXPECT_THAT(toldByHost(), ElementsAre(""));
}

// Foundation has words of its own for it.
TEST_F(ObjCCrash, AnExceptionMadeWithoutAReasonIsToldAsItAnswers) {
    NSString* answer = [[NSException exceptionWithName:@"Own" reason:nil userInfo:nil] reason];
    ASSERT_TRUE(hostEndsWith(ended, [] { raise(nil); }));
    EXPECT_THAT(toldByHost(), ElementsAre(answer == nil ? "" : [answer UTF8String]));
}

TEST_F(ObjCCrash, AReasonThatIsNoTextIsToldAsAnEmptyOne) {
    (void)hostEndsWith(ended, [] { // the runtime's own message may fail over it
        raiseOdd(^id {
          return [NSNumber numberWithInt:7];
        });
    });
    EXPECT_THAT(toldByHost(), ElementsAre(""));
}

TEST_F(ObjCCrash, AReasonThatRaisesIsToldAsAnEmptyOne) {
    (void)hostEndsWith(ended, [] {
        raiseOdd(^id {
          raise(@"another");
          return nil;
        });
    });
    EXPECT_THAT(toldByHost(), ElementsAre(""));
}

TEST_F(ObjCCrash, AReasonThatCrashesIsToldAsTheSignal) {
    ASSERT_TRUE(hostEndsWith(SIGSEGV, [] {
        raiseOdd(^id {
          writeToForbiddenMemory();
          return nil;
        });
    }));
    EXPECT_THAT(toldByHost(), ElementsAre("SIGSEGV"));
}

TEST_F(ObjCCrash, AReasonThatDoesNotComeIsToldAsAnEmptyOne) {
    ASSERT_TRUE(hostEndsWith(aborted, [] {
        raiseOdd(^id {
          for (;;) ::pause();
        });
    }));
    EXPECT_THAT(toldByHost(), ElementsAre(""));
}

TEST_F(ObjCCrash, AReasonOfAnyCharacters) {
    const std::string reason = "\"quoted\" 'and' \\ <&>\n\r\tK\u00f6rbe \U0001F6D2 \x01";
    ASSERT_TRUE(hostEndsWith(ended, [&] { raise([NSString stringWithUTF8String:reason.c_str()]); }));
    // What an XML text cannot hold is replaced.
    EXPECT_THAT(toldByHost(), ElementsAre(reason.substr(0, reason.size() - 1) + "\uFFFD"));
}

TEST_F(ObjCCrash, AVeryLongReason) {
    const std::string reason(1'000'000, 'x');
    ASSERT_TRUE(hostEndsWith(ended, [&] { raise([NSString stringWithUTF8String:reason.c_str()]); }));
    EXPECT_THAT(toldByHost(), ElementsAre(reason));
}

TEST_F(ObjCCrash, AnExceptionThatMayNotPassIsToldWithoutItsReason) {
    (void)hostEndsWith(aborted, [] { callWithoutLettingPass([] { raise(@"unheard"); }); });
    EXPECT_THAT(toldByHost(), ElementsAre(""));
}

TEST_F(ObjCCrash, WhatIsNoExceptionButThrownIsToldAsTheAbort) {
    ASSERT_TRUE(hostEndsWith(SIGABRT, [] { @throw @"a text"; }));
    EXPECT_THAT(toldByHost(), ElementsAre("SIGABRT"));
}

TEST_F(ObjCCrash, AnExceptionOfCppIsToldWithItsReason) {
    ASSERT_TRUE(hostEndsWith(aborted, [] { throw std::runtime_error("of C++"); }));
    EXPECT_THAT(toldByHost(), ElementsAre("of C++"));
}

TEST_F(ObjCCrash, AFaultIsToldAsItsSignal) {
    ASSERT_TRUE(hostEndsWith(SIGSEGV, writeToForbiddenMemory));
    EXPECT_THAT(toldByHost(), ElementsAre("SIGSEGV"));
}

TEST_F(ObjCCrash, AnExceptionThatIsCaughtIsNone) {
    ASSERT_TRUE(hostEndsWith(0, [] {
        @try {
            raise(@"caught");
        } @catch (NSException* exception) {
        }
    }));
    EXPECT_THAT(toldByHost(), IsEmpty());
}

TEST_F(ObjCCrash, BeforeConfigureIsNotHeard) {
    ASSERT_TRUE(endsWith(ended, [] {
        Tallyfoot.showOutput = NO;
        raise(@"early");
    }));
    EXPECT_THAT(toldByHost(), IsEmpty());
}

void endOtherwise(NSException*) { ::_exit(99); }

TEST_F(ObjCCrash, AHandlerOfTheHostBeforeConfigureIsReplaced) {
    ASSERT_TRUE(endsWith(ended, [] {
        NSSetUncaughtExceptionHandler(endOtherwise);
        switchOn();
        raise(@"no shelf");
    }));
    EXPECT_THAT(toldByHost(), ElementsAre("no shelf"));
}

TEST_F(ObjCCrash, AHandlerOfTheHostAfterConfigureCountsUntilTheNextOne) {
    ASSERT_TRUE(hostEndsWith(99, [] {
        NSSetUncaughtExceptionHandler(endOtherwise);
        raise(@"no shelf");
    }));
    EXPECT_EQ(storedReason(), "nothing");
    ASSERT_TRUE(hostEndsWith(ended, [] {
        NSSetUncaughtExceptionHandler(endOtherwise);
        switchOn();
        raise(@"no shelf");
    }));
    EXPECT_THAT(toldByHost(), ElementsAre("no shelf"));
}

TEST_F(ObjCCrash, AnExitHandlerThatCrashesLeavesTheReason) {
    ASSERT_TRUE(hostEndsWith(aborted, [] {
        std::atexit(writeToForbiddenMemory);
        raise(@"no shelf");
    }));
    EXPECT_THAT(toldByHost(), ElementsAre("no shelf"));
}

} // namespace
