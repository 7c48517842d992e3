#include "Capture/CaptureHost.h"

#include "Tallyfoot/Capture/Interception.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tallyfoot::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Value = MemoryRuntime::Value;

class InterceptionTest : public ::testing::Test {
protected:
    InterceptionTest() {
        runtime_.addClass("Base", "NSObject");
        runtime_.addClass("Derived", "Base");
    }

    SelectorRef selector(const char* name) { return runtime_.sel_registerName(name); }
    ClassRef named(const char* name) { return runtime_.objc_getClass(name); }
    void add(const char* className, const char* selector, const char* text, const char* types = "@@:") {
        runtime_.addMethod(
            className, selector, [text](const auto&) { return Value(std::string(text)); }, types);
    }
    std::string sent(const char* className, const char* selector) {
        return std::get<std::string>(runtime_.send(runtime_.make(className), selector));
    }
    void swizzle(const char* className) {
        interception_.swizzle(selector("original"), selector("replacement"), named(className));
    }
    void intercept(const char* className) {
        interception_.addInterceptMethod(selector("original"), selector("replacement"), named(className),
                                         selector("renamed"), "v@:@i@");
    }
    std::string types(const char* className, const char* name) {
        return runtime_.method_getTypeEncoding(runtime_.class_getInstanceMethod(named(className), selector(name)));
    }
    bool has(const char* className, const char* name) {
        return static_cast<bool>(runtime_.class_getInstanceMethod(named(className), selector(name)));
    }

    CaptureHost host_;
    MemoryRuntime& runtime_ = host_.runtime;
    const Interception interception_{host_.platform};
};

TEST_F(InterceptionTest, ExchangesTwoMethodsOfTheClass) {
    add("Base", "original", "platform");
    add("Base", "replacement", "library");
    swizzle("Base");
    EXPECT_EQ(sent("Base", "original"), "library");
    EXPECT_EQ(sent("Base", "replacement"), "platform");
    EXPECT_THAT(runtime_.journal(), ElementsAre("exchange Base original Base replacement"));
}

TEST_F(InterceptionTest, AClassThatOnlyInheritsTheOriginalGetsItsOwnAndLeavesTheSuperclassAlone) {
    add("Base", "original", "platform", "original's");
    add("Derived", "replacement", "library", "replacement's");
    swizzle("Derived");
    EXPECT_EQ(sent("Derived", "original"), "library");
    EXPECT_EQ(sent("Derived", "replacement"), "platform");
    EXPECT_EQ(sent("Base", "original"), "platform");
    EXPECT_FALSE(has("Base", "replacement"));
    EXPECT_EQ(types("Derived", "original"), "replacement's");
    EXPECT_THAT(runtime_.journal(), ElementsAre("add Derived original", "replace Derived replacement"));
}

TEST_F(InterceptionTest, BothInheritedLeavesTheSuperclassAlone) {
    add("Base", "original", "platform", "original's");
    add("Base", "replacement", "library", "replacement's");
    swizzle("Derived");
    EXPECT_EQ(sent("Derived", "original"), "library");
    EXPECT_EQ(sent("Derived", "replacement"), "platform");
    EXPECT_EQ(types("Derived", "replacement"), "original's");
    EXPECT_EQ(sent("Base", "original"), "platform");
    EXPECT_EQ(sent("Base", "replacement"), "library");
}

TEST_F(InterceptionTest, AMissingMethodOrClassIsSkipped) {
    swizzle("Base");
    add("Base", "original", "platform");
    swizzle("Base");
    swizzle("NoSuchClass");
    add("Derived", "replacement", "library");
    swizzle("Base");
    EXPECT_EQ(sent("Base", "original"), "platform");
    EXPECT_THAT(runtime_.journal(), IsEmpty());
}

TEST_F(InterceptionTest, HasMethodAsksTheClassForCoding) {
    add("Base", "original", "host");
    const auto object = runtime_.make("Derived");
    EXPECT_TRUE(interception_.hasMethod(object, selector("original")));
    EXPECT_FALSE(interception_.hasMethod(object, selector("renamed")));
    runtime_.answer(object, "renamed", true);
    EXPECT_FALSE(interception_.hasMethod(object, selector("renamed")));
    EXPECT_FALSE(interception_.hasMethod({}, selector("original")));
}

TEST_F(InterceptionTest, AnInterceptedMethodIsKeptUnderItsOtherName) {
    add("NSObject", "replacement", "library");
    add("Base", "original", "host", "host's");
    intercept("Base");
    EXPECT_EQ(sent("Base", "original"), "library");
    EXPECT_EQ(sent("Base", "renamed"), "host");
    EXPECT_EQ(types("Base", "original"), "host's");
    EXPECT_EQ(types("Base", "renamed"), "v@:@i@");
    EXPECT_EQ(runtime_.openPools(), 0);
}

TEST_F(InterceptionTest, AnAbsentMethodIsAddedWithTheGivenTypes) {
    add("NSObject", "replacement", "library");
    intercept("Base");
    EXPECT_EQ(sent("Base", "original"), "library");
    EXPECT_EQ(types("Base", "original"), "v@:@i@");
    EXPECT_FALSE(has("Base", "renamed"));
}

TEST_F(InterceptionTest, AnInheritedMethodIsChangedWhereItIsDefined) {
    add("NSObject", "replacement", "library");
    add("Base", "original", "host");
    intercept("Derived");
    EXPECT_EQ(sent("Derived", "original"), "library");
    EXPECT_EQ(sent("Derived", "renamed"), "host");
    EXPECT_EQ(sent("Base", "original"), "library");
    EXPECT_EQ(sent("Base", "renamed"), "host") << "a base object finds its own handling too";
}

TEST_F(InterceptionTest, NothingHappensWithoutTheLibrarysBody) {
    add("Base", "original", "host");
    intercept("Base");
    EXPECT_EQ(sent("Base", "original"), "host");
    EXPECT_THAT(runtime_.journal(), IsEmpty());
    EXPECT_EQ(runtime_.openPools(), 0);
}

TEST_F(InterceptionTest, TheSecondRunChangesNothing) {
    add("NSObject", "replacement", "library");
    add("Base", "original", "host");
    intercept("Base");
    const auto before = runtime_.ownMethods();
    intercept("Base");
    intercept("Derived");
    EXPECT_EQ(runtime_.ownMethods(), before);
}

TEST_F(InterceptionTest, TheSecondRunOnAClassWithoutTheMethodDoesNotMakeTheBodyItsOwnOriginal) {
    add("NSObject", "replacement", "library");
    intercept("Base");
    const auto before = runtime_.ownMethods();
    intercept("Base");
    intercept("Derived");
    EXPECT_EQ(runtime_.ownMethods(), before);
    EXPECT_FALSE(has("Base", "renamed"));
}

TEST_F(InterceptionTest, ASubclassThatOverridesIsInterceptedOnItsOwn) {
    add("NSObject", "replacement", "library");
    add("Base", "original", "base");
    add("Derived", "original", "derived");
    intercept("Base");
    intercept("Derived");
    EXPECT_EQ(sent("Derived", "original"), "library");
    EXPECT_EQ(sent("Derived", "renamed"), "derived");
    EXPECT_EQ(sent("Base", "renamed"), "base");
}

TEST_F(InterceptionTest, AnotherLibraryThatCameInBetweenKeepsItsPlace) {
    add("NSObject", "replacement", "library");
    add("Base", "original", "host");
    intercept("Base");
    runtime_.method_setImplementation(runtime_.class_getInstanceMethod(named("Base"), selector("original")),
                                      runtime_.implementation([](const auto&) { return Value(std::string("other")); }));
    intercept("Base");
    intercept("Derived");
    EXPECT_EQ(sent("Base", "original"), "other");
    EXPECT_EQ(sent("Derived", "original"), "other");
    EXPECT_EQ(sent("Base", "renamed"), "host");
}

TEST_F(InterceptionTest, ThousandsOfRunsAddNothing) {
    add("NSObject", "replacement", "library");
    intercept("Base");
    const auto before = runtime_.ownMethods();
    for (int run = 0; run < 5000; ++run) intercept("Base");
    EXPECT_EQ(runtime_.ownMethods(), before);
}

} // namespace
} // namespace tallyfoot::testing
