#include "Capture/CaptureHost.h"

#include "Tallyfoot/Capture/Exchanges.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tallyfoot::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(Exchanges, AreMadeInTheirOrder) {
    CaptureHost host;
    host.capture.prepare();
    host.runtime.journal().clear();
    host.capture.configureSwizzle();
    EXPECT_THAT(
        host.runtime.journal(),
        ElementsAre(
            "exchange UIGestureRecognizer initWithTarget:action: UIGestureRecognizer "
            "swizzle_initWithTarget:action:",
            "exchange UIApplication sendAction:to:from:forEvent: UIApplication swizzledSendAction:to:from:for:",
            "exchange UIViewController viewWillAppear: UIViewController swizzledViewWillAppear:",
            "exchange UIViewController viewWillDisappear: UIViewController swizzledViewWillDisappear:",
            "exchange UIScrollView setDelegate: UIScrollView setDelegateSwizzled:", "add UITableView setDelegate:",
            "replace UITableView setDelegateSwizzled_:", "exchange UITabBar setDelegate: UITabBar setDelegateSwizzled:",
            "exchange UICollectionView setDataSource: UICollectionView setDataSourceSwizzled:",
            "exchange UISearchBar setDelegate: UISearchBar setDelegateSwizzled:",
            "exchange UISearchController setSearchResultsUpdater: UISearchController "
            "searchResultsUpdaterSwizzled:"));
}

TEST(Exchanges, ASecondTimeNothingIsExchanged) {
    CaptureHost host;
    host.capture.configureSwizzle();
    const auto before = host.runtime.ownMethods();
    host.runtime.journal().clear();
    host.capture.configureSwizzle();
    EXPECT_THAT(host.runtime.journal(), IsEmpty());
    EXPECT_EQ(host.runtime.ownMethods(), before);
}

TEST(Exchanges, PreparingAgainPutsNothingBack) {
    CaptureHost host;
    host.capture.configureSwizzle();
    const auto before = host.runtime.ownMethods();
    host.capture.prepare();
    EXPECT_EQ(host.runtime.ownMethods(), before);
}

TEST(Exchanges, ExactlyTheListedMethodsChange) {
    CaptureHost host;
    host.capture.prepare();
    const auto before = host.runtime.ownMethods();
    host.capture.configureSwizzle();
    auto after = host.runtime.ownMethods();
    std::set<std::string> expected{"UITableView setDelegate:"};
    for (const auto& one : Exchanges::all) {
        expected.insert(std::string(one.className) + " " + one.original);
        expected.insert(std::string(one.className) + " " + selectorName(one.replacement));
    }
    std::set<std::string> changed;
    for (const auto& [name, implementation] : after)
        if (const auto place = before.find(name); place == before.end() || !(place->second == implementation))
            changed.insert(name);
    EXPECT_EQ(changed, expected);
    EXPECT_EQ(after.size(), before.size() + 1) << "the table's own setter";
}

TEST(Exchanges, PreparingAddsTheOptionsToTheFourBaseClasses) {
    CaptureHost host;
    host.capture.prepare();
    const auto methods = host.runtime.ownMethods();
    for (const auto* className : {"UIView", "UIViewController", "UIBarItem", "UIGestureRecognizer"})
        for (const auto* selector : {"customName", "setCustomName:", "logEnabled", "setLogEnabled:"})
            EXPECT_TRUE(methods.contains(std::string(className) + " " + selector)) << className << selector;
    EXPECT_FALSE(methods.contains("NSObject customName"));
}

TEST(Exchanges, MissingClassesAndSelectorsAreSkippedAndTheRestIsMade) {
    MemoryRuntime runtime;
    runtime.addClass("UIViewController", "NSObject"); // without viewWillAppear:
    runtime.addMethod("UIViewController", "viewWillDisappear:", [](const auto&) { return MemoryRuntime::Value(); });
    struct Bodies final : MethodBodies {
        explicit Bodies(MemoryRuntime& memory) : runtime(memory) {}
        Code code(MethodBody body) override {
            if (body == MethodBody::scrollViewDelegate) return {};
            return {runtime.implementation([](const auto&) { return MemoryRuntime::Value(); }), "v@:"};
        }
        MemoryRuntime& runtime;
    } bodies(runtime);
    RecordingFacade facade;
    Capture capture({runtime, runtime, bodies}, facade);
    capture.prepare();
    runtime.journal().clear();
    capture.configureSwizzle();
    EXPECT_THAT(runtime.journal(), ElementsAre("exchange UIViewController viewWillDisappear: UIViewController "
                                               "swizzledViewWillDisappear:"));
}

TEST(Exchanges, ClassesThatComeLaterArePreparedWithTheExchanges) {
    CaptureHost host;
    host.capture.prepare();
    host.addClass("Later", "UIView");
    host.capture.configureSwizzle();
    EXPECT_EQ(std::get<std::string>(host.send(host.make("Later"), "customName")), "");
}

TEST(Exchanges, AnotherLibraryBeforeAndAfterIsStillRunOnce) {
    CaptureHost host;
    auto& runtime = host.runtime;
    const auto exchangeAs = [&](const char* own) {
        runtime.addMethod("UIApplication", own, [&host, own](const MemoryRuntime::Invocation& call) {
            host.journal.emplace_back(own);
            return host.runtime.send(call.self, own, call.arguments);
        });
        const auto application = runtime.objc_getClass("UIApplication");
        const auto find = [&](const char* name) {
            return runtime.class_getInstanceMethod(application, runtime.sel_registerName(name));
        };
        runtime.method_exchangeImplementations(find("sendAction:to:from:forEvent:"), find(own));
    };
    exchangeAs("before_sendAction");
    host.capture.configureSwizzle();
    exchangeAs("after_sendAction");
    host.sendAction("buy:", host.make("UIButton"));
    EXPECT_THAT(host.journal, ElementsAre("after_sendAction", "before_sendAction", "sendAction"));
    EXPECT_EQ(host.events.size(), 1U);
}

} // namespace
} // namespace tallyfoot::testing
