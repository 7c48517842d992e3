#include "Capture/CaptureHost.h"

#include "Tallyfoot/Capture/Interception.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace tallyfoot::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr const char* didSelect = "tableView:didSelectRowAtIndexPath:";

// Delegates of a table, whose handling notes its class's name.
class DelegateHooksTest : public ::testing::Test {
protected:
    DelegateHooksTest() {
        host_.capture.configureSwizzle();
        host_.addClass("Plain", "NSObject");
        host_.addClass("Handling", "NSObject");
        handle("Handling");
        host_.addClass("Inheriting", "Handling");
        host_.addClass("Overriding", "Handling");
        handle("Overriding", "Overriding");
    }

    // With a class to send it on to its superclass from, where one is given.
    void handle(const char* className, const char* superFrom = nullptr, const char* selector = didSelect) {
        host_.runtime.addMethod(
            className, selector, [this, className, superFrom](const MemoryRuntime::Invocation& call) {
                host_.journal.emplace_back(className);
                if (superFrom)
                    host_.runtime.sendSuper(call.self, superFrom, host_.runtime.sel_getName(call.selector),
                                            call.arguments);
                return MemoryRuntime::Value();
            });
    }
    // As another library does that comes later.
    void exchangeByAnother(const char* className) {
        constexpr const char* replacement = "other:didSelect:";
        host_.runtime.addMethod(className, replacement, [this](const MemoryRuntime::Invocation& call) {
            host_.journal.emplace_back("other");
            return host_.send(call.self, replacement, call.arguments);
        });
        Interception(host_.platform)
            .swizzle(host_.runtime.sel_registerName(didSelect), host_.runtime.sel_registerName(replacement),
                     host_.runtime.objc_getClass(className));
    }
    ObjectRef setDelegate(const char* className) {
        const auto delegate = host_.make(className);
        host_.setDelegate(table_, delegate);
        return delegate;
    }
    void select(ObjectRef delegate) {
        host_.journal.clear();
        host_.events.clear();
        host_.send(delegate, didSelect, {table_, indexPath_});
    }

    CaptureHost host_;
    const ObjectRef table_ = host_.make("UITableView");
    const ObjectRef indexPath_ = host_.make("NSObject");
};

TEST_F(DelegateHooksTest, TheSetterGoesToThePlatformFirst) {
    setDelegate("Handling");
    EXPECT_THAT(host_.journal, ElementsAre("setDelegate:"));
    host_.setDelegate(table_, {});
    EXPECT_THAT(host_.journal, ElementsAre("setDelegate:", "setDelegate:"));
}

TEST_F(DelegateHooksTest, TheHostsHandlingRunsBeforeTheRecord) {
    host_.runtime.addMethod("Plain", didSelect, [&](const auto& call) {
        EXPECT_EQ(call.object(0), table_);
        EXPECT_EQ(call.object(1), indexPath_);
        EXPECT_STREQ(host_.runtime.sel_getName(call.selector), didSelect) << "it sees its own name";
        EXPECT_THAT(host_.events, IsEmpty());
        host_.journal.emplace_back("Plain");
        return MemoryRuntime::Value();
    });
    select(setDelegate("Plain"));
    EXPECT_THAT(host_.journal, ElementsAre("Plain"));
    EXPECT_THAT(host_.events, SizeIs(1));
}

TEST_F(DelegateHooksTest, ADelegateThatIgnoresSelectionsIsRecorded) {
    select(setDelegate("Plain"));
    EXPECT_THAT(host_.events, SizeIs(1));
}

TEST_F(DelegateHooksTest, ADelegateOfTwoTablesIsRecordedOnce) {
    for (const auto* className : {"Plain", "Handling", "Inheriting", "Overriding"}) {
        const auto delegate = setDelegate(className);
        host_.setDelegate(host_.make("UITableView"), delegate);
        host_.setDelegate(table_, delegate);
        select(delegate);
        EXPECT_THAT(host_.events, SizeIs(1)) << className;
    }
}

TEST_F(DelegateHooksTest, AHandlingThatIsInheritedRunsOnce) {
    select(setDelegate("Inheriting"));
    EXPECT_THAT(host_.journal, ElementsAre("Handling"));
    EXPECT_THAT(host_.events, SizeIs(1));
}

TEST_F(DelegateHooksTest, AfterASubclassTheSuperclassKeepsItsHandling) {
    setDelegate("Inheriting");
    select(setDelegate("Handling"));
    EXPECT_THAT(host_.journal, ElementsAre("Handling"));
    EXPECT_THAT(host_.events, SizeIs(1));
}

TEST_F(DelegateHooksTest, AHandlingThatCallsItsSuperclassIsRecordedOnce) {
    select(setDelegate("Overriding"));
    EXPECT_THAT(host_.journal, ElementsAre("Overriding", "Handling"));
    EXPECT_THAT(host_.events, SizeIs(1));
}

TEST_F(DelegateHooksTest, SoItIsWhenBothClassesHaveBeenIntercepted) {
    setDelegate("Handling");
    setDelegate("Inheriting");
    select(setDelegate("Overriding"));
    EXPECT_THAT(host_.journal, ElementsAre("Overriding", "Handling"));
    EXPECT_THAT(host_.events, SizeIs(1));
}

TEST_F(DelegateHooksTest, SoItIsThroughThreeClassesWithAnInheritingOneBetween) {
    host_.addClass("Lowest", "Inheriting");
    handle("Lowest", "Lowest");
    for (const auto* className : {"Inheriting", "Lowest", "Handling"}) setDelegate(className);
    select(setDelegate("Lowest"));
    EXPECT_THAT(host_.journal, ElementsAre("Lowest", "Handling"));
    EXPECT_THAT(host_.events, SizeIs(1));
}

TEST_F(DelegateHooksTest, AnInheritedHandlingThatCallsItsSuperclassRunsOnce) {
    host_.addClass("BelowOverriding", "Overriding");
    setDelegate("BelowOverriding");
    setDelegate("Handling");
    select(setDelegate("BelowOverriding"));
    EXPECT_THAT(host_.journal, ElementsAre("Overriding", "Handling"));
    EXPECT_THAT(host_.events, SizeIs(1));
}

TEST_F(DelegateHooksTest, ACallToASuperclassThatHadNoHandlingEnds) {
    setDelegate("Plain");
    host_.addClass("BelowPlain", "Plain");
    handle("BelowPlain", "BelowPlain");
    select(setDelegate("BelowPlain"));
    EXPECT_THAT(host_.journal, ElementsAre("BelowPlain"));
    EXPECT_THAT(host_.events, SizeIs(1));
}

TEST_F(DelegateHooksTest, AnotherSelectionMadeByTheHandlingIsRecordedToo) {
    const auto other = host_.make("NSObject");
    host_.runtime.addMethod("Plain", didSelect, [&](const auto& call) {
        if (call.object(1) == indexPath_) host_.send(call.self, didSelect, {table_, other});
        return MemoryRuntime::Value();
    });
    select(setDelegate("Plain"));
    EXPECT_THAT(host_.events, SizeIs(2));
}

TEST_F(DelegateHooksTest, WhatTheHandlingThrowsPassesAndTheNextCallIsRecorded) {
    bool throws = true;
    host_.runtime.addMethod("Plain", didSelect, [&](const auto&) {
        if (throws) throw std::range_error("host");
        return MemoryRuntime::Value();
    });
    const auto delegate = setDelegate("Plain");
    EXPECT_THROW(select(delegate), std::range_error);
    EXPECT_THAT(host_.events, IsEmpty());
    throws = false;
    select(delegate);
    EXPECT_THAT(host_.events, SizeIs(1));
    EXPECT_EQ(host_.runtime.retainCount(table_), 1);
}

TEST_F(DelegateHooksTest, ATableThatTheHandlingReleasesLivesUntilItIsRecorded) {
    const auto table = host_.make("UITableView");
    const auto indexPath = host_.make("NSObject");
    host_.runtime.addMethod("Plain", didSelect, [&](const auto&) {
        host_.runtime.objc_release(table);
        host_.runtime.objc_release(indexPath);
        return MemoryRuntime::Value();
    });
    const auto delegate = host_.make("Plain");
    host_.setDelegate(table, delegate);
    host_.send(delegate, didSelect, {table, indexPath});
    EXPECT_THAT(host_.events, SizeIs(1));
    EXPECT_FALSE(host_.runtime.isAlive(table));
    EXPECT_FALSE(host_.runtime.isAlive(indexPath));
}

TEST_F(DelegateHooksTest, NothingIsHeldAfterwards) {
    const auto delegate = setDelegate("Handling");
    select(delegate);
    for (const auto object : {table_, indexPath_, delegate}) EXPECT_EQ(host_.runtime.retainCount(object), 1);
}

TEST_F(DelegateHooksTest, ThousandsOfSettingsAddNothing) {
    const auto delegate = setDelegate("Handling");
    const auto before = host_.runtime.ownMethods();
    for (int time = 0; time < 5000; ++time) {
        host_.setDelegate(table_, delegate);
        host_.setDelegate(table_, {});
    }
    EXPECT_EQ(host_.runtime.ownMethods(), before);
    EXPECT_EQ(host_.runtime.openPools(), 0);
}

TEST_F(DelegateHooksTest, AnObservedDelegateIsInterceptedInItsOwnClass) {
    const auto delegate = host_.make("Handling");
    host_.runtime.observe(delegate);
    host_.setDelegate(table_, delegate);
    select(delegate);
    EXPECT_THAT(host_.journal, ElementsAre("Handling"));
    EXPECT_THAT(host_.events, SizeIs(1));
    select(setDelegate("Handling"));
    EXPECT_THAT(host_.events, SizeIs(1));
}

TEST_F(DelegateHooksTest, ARootClassOfItsOwnIsLeftAlone) {
    host_.runtime.addClass("Proxy");
    const auto before = host_.runtime.ownMethods();
    setDelegate("Proxy");
    EXPECT_EQ(host_.runtime.ownMethods(), before);
}

// A proxy has no handling of its own: it passes on whatever it is sent.
class ProxyTest : public DelegateHooksTest {
protected:
    ProxyTest() {
        host_.addClass("Proxy", "NSObject");
        host_.runtime.addMethod("Proxy", "forwardInvocation:", [this](const auto& call) {
            host_.journal.emplace_back("forwardInvocation:");
            auto arguments = call.arguments;
            const auto selector = std::get<SelectorRef>(arguments[0]);
            arguments.erase(arguments.begin());
            return host_.send(targets_.at(call.self), host_.runtime.sel_getName(selector), std::move(arguments));
        });
        host_.addClass("NamingProxy", "NSObject");
        host_.runtime.addMethod("NamingProxy", "forwardingTargetForSelector:", [this](const auto& call) {
            return MemoryRuntime::Value(targets_.at(call.self));
        });
    }

    ObjectRef makeProxy(ObjectRef target, const char* className = "Proxy") {
        const auto proxy = host_.make(className);
        targets_[proxy] = target;
        host_.runtime.answerWith(proxy, "respondsToSelector:", [this, proxy](const auto& call) {
            return MemoryRuntime::Value(
                host_.runtime.respondsToSelector(targets_.at(proxy), std::get<SelectorRef>(call.arguments[0])));
        });
        return proxy;
    }

    std::map<ObjectRef, ObjectRef> targets_;
};

TEST_F(ProxyTest, ItsTargetStillHandlesTheSelection) {
    const auto proxy = makeProxy(host_.make("Handling"));
    host_.setDelegate(table_, proxy);
    host_.setDelegate(table_, proxy);
    select(proxy);
    EXPECT_THAT(host_.journal, ElementsAre("forwardInvocation:", "Handling"));
    EXPECT_THAT(host_.events, SizeIs(1));
}

TEST_F(ProxyTest, ATargetThatDoesNotHandleItIsNotSentIt) {
    host_.setDelegate(table_, makeProxy(host_.make("Handling")));
    const auto proxy = makeProxy(host_.make("Plain"));
    host_.setDelegate(table_, proxy);
    select(proxy);
    EXPECT_THAT(host_.journal, IsEmpty());
    EXPECT_THAT(host_.events, SizeIs(1));
}

TEST_F(ProxyTest, ATargetThatComesAfterTheProxyWasSetHandlesTheSelection) {
    const auto proxy = makeProxy(host_.make("Plain"));
    host_.setDelegate(table_, proxy);
    targets_[proxy] = host_.make("Handling");
    select(proxy);
    EXPECT_THAT(host_.journal, ElementsAre("forwardInvocation:", "Handling"));
    EXPECT_THAT(host_.events, SizeIs(1));
}

TEST_F(ProxyTest, ATargetThatItNamesHandlesTheSelection) {
    const auto proxy = makeProxy(host_.make("Handling"), "NamingProxy");
    host_.setDelegate(table_, proxy);
    select(proxy);
    EXPECT_THAT(host_.journal, ElementsAre("Handling"));
    EXPECT_THAT(host_.events, SizeIs(1));
}

TEST_F(ProxyTest, ATargetThatIsADelegateItselfIsNotRecordedAgain) {
    const auto proxy = makeProxy(setDelegate("Overriding"));
    host_.setDelegate(host_.make("UITableView"), proxy);
    select(proxy);
    EXPECT_THAT(host_.journal, ElementsAre("forwardInvocation:", "Overriding", "Handling"));
    EXPECT_THAT(host_.events, SizeIs(1));
}

TEST_F(DelegateHooksTest, ASelectionThatItsHandlingHasToldAgainIsHandledAgain) {
    int calls = 0;
    host_.runtime.addMethod("Plain", didSelect, [&](const auto& call) {
        if (++calls < 3) host_.send(call.self, didSelect, call.arguments);
        return MemoryRuntime::Value();
    });
    select(setDelegate("Plain"));
    EXPECT_EQ(calls, 3);
    EXPECT_THAT(host_.events, SizeIs(3)) << "a loop inside the handling may have let the user choose again";
}

TEST_F(DelegateHooksTest, TwoLibrariesThatTakeEachOtherForTheHostComeToAnEnd) {
    const auto delegate = setDelegate("Handling");
    const auto original = host_.runtime.sel_registerName(didSelect);
    const auto method = host_.runtime.class_getInstanceMethod(host_.runtime.objc_getClass("Handling"), original);
    const auto body = host_.runtime.method_getImplementation(method);
    const auto renamed = host_.runtime.sel_registerName("orig_tableView:didSelectRowAt:");
    host_.runtime.method_setImplementation(
        host_.runtime.class_getInstanceMethod(host_.runtime.objc_getClass("Handling"), renamed), body);
    select(delegate);
    EXPECT_THAT(host_.events, SizeIs(1));
}

TEST_F(DelegateHooksTest, AnotherLibraryThatExchangesTheCallbackLaterRunsOnceAndSoDoWe) {
    for (const auto* className : {"Handling", "Plain"}) {
        const auto delegate = setDelegate(className);
        exchangeByAnother(className);
        for (int time = 0; time < 2; ++time) {
            select(delegate);
            EXPECT_EQ(std::count(host_.journal.begin(), host_.journal.end(), "other"), 1) << className;
            EXPECT_EQ(std::count(host_.journal.begin(), host_.journal.end(), "Handling"),
                      std::string(className) == "Handling");
            EXPECT_THAT(host_.events, SizeIs(1)) << className << time;
            host_.setDelegate(host_.make("UITableView"), delegate);
        }
    }
}

TEST_F(DelegateHooksTest, AnotherLibraryIsNotCutOffByASubclassThatBecomesADelegateLater) {
    host_.addClass("Lowest", "Inheriting");
    const auto delegate = setDelegate("Handling");
    setDelegate("Inheriting");
    exchangeByAnother("Handling");
    setDelegate("Lowest");
    select(delegate);
    EXPECT_THAT(host_.journal, ElementsAre("other", "Handling"));
    EXPECT_THAT(host_.events, SizeIs(1));
}

TEST_F(DelegateHooksTest, NorByWhatASubclassHasKept) {
    host_.addClass("Lower", "Inheriting");
    host_.addClass("Lowest", "Lower");
    const auto delegate = setDelegate("Lowest");
    exchangeByAnother("Inheriting");
    setDelegate("Lower");
    select(delegate);
    EXPECT_THAT(host_.journal, ElementsAre("other", "Handling"));
    EXPECT_THAT(host_.events, SizeIs(1));
}

TEST_F(DelegateHooksTest, CallbacksOfOneDelegateDoNotGetInEachOthersWay) {
    host_.runtime.addMethod("Plain", didSelect, [&](const auto& call) {
        host_.send(call.self, "scrollViewDidEndDecelerating:", {table_});
        return MemoryRuntime::Value();
    });
    select(setDelegate("Plain"));
    ASSERT_THAT(host_.events, SizeIs(2));
    EXPECT_EQ(host_.events[0].type, EventType::scroll);
    EXPECT_EQ(host_.events[1].type, EventType::selection);
}

} // namespace
} // namespace tallyfoot::testing
