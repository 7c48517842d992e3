#pragma once
// What the library relies on in an Objective-C runtime, to be instantiated for each there is.

#include "Contracts/Implementation.h"

#include "Tallyfoot/Capture/ObjectiveCRuntime.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace tallyfoot::testing {

// A runtime and the means to make something to look at. Class names are process-wide: each test has its own.
class RuntimeHost {
public:
    virtual ~RuntimeHost() = default;
    virtual ObjectiveCRuntime& runtime() = 0;
    virtual ClassRef makeClass(const std::string& name, ClassRef superclass) = 0; // below NSObject for a nil one
    virtual ImplementationRef implementation(int number) = 0; // takes nothing, gives the number; 1 to 4
    virtual ObjectRef makeObject(ClassRef) = 0;               // lives as long as the host
    virtual int send(ObjectRef, SelectorRef) = 0;             // to such a method
};

class ObjectiveCRuntimeContract : public ::testing::TestWithParam<Implementation<RuntimeHost>> {
protected:
    static constexpr const char* types = "i@:";

    ObjectiveCRuntime& runtime() { return host_->runtime(); }
    SelectorRef selector(const char* name) { return runtime().sel_registerName(name); }
    ImplementationRef number(int number) { return host_->implementation(number); }
    static std::string name(const char* suffix) {
        const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
        return "Contract" + std::to_string(test->line()) + "_" + suffix;
    }
    int send(ObjectRef object, const char* name) { return host_->send(object, selector(name)); }
    ImplementationRef found(ClassRef inClass, const char* name) {
        return runtime().method_getImplementation(runtime().class_getInstanceMethod(inClass, selector(name)));
    }

    const std::shared_ptr<RuntimeHost> host_ = GetParam().make();
    const ClassRef base_ = host_->makeClass(name("Base"), {});
    const ClassRef derived_ = host_->makeClass(name("Derived"), base_);
};

TEST_P(ObjectiveCRuntimeContract, FindsAClassByItsName) {
    EXPECT_EQ(runtime().objc_getClass(name("Base").c_str()), base_);
    EXPECT_EQ(runtime().class_getName(derived_), name("Derived"));
    EXPECT_EQ(runtime().class_getSuperclass(derived_), base_);
    EXPECT_FALSE(runtime().objc_getClass("NoSuchClassAnywhere"));
}

TEST_P(ObjectiveCRuntimeContract, HasARootClass) {
    const auto root = runtime().objc_getClass("NSObject");
    EXPECT_EQ(runtime().class_getSuperclass(base_), root);
    EXPECT_FALSE(runtime().class_getSuperclass(root));
}

TEST_P(ObjectiveCRuntimeContract, ASelectorIsTheSameEachTime) {
    EXPECT_EQ(selector("contractNumber:"), selector("contractNumber:"));
    EXPECT_NE(selector("contractNumber:"), selector("contractNumber"));
    EXPECT_STREQ(runtime().sel_getName(selector("contractNumber:")), "contractNumber:");
}

TEST_P(ObjectiveCRuntimeContract, NilGivesNothing) {
    EXPECT_FALSE(runtime().class_getSuperclass({}));
    EXPECT_FALSE(runtime().class_getInstanceMethod({}, selector("contractNumber")));
    EXPECT_FALSE(runtime().class_respondsToSelector({}, selector("contractNumber")));
    EXPECT_FALSE(runtime().class_addMethod({}, selector("contractNumber"), number(1), types));
    EXPECT_FALSE(runtime().method_getImplementation({}));
    EXPECT_FALSE(runtime().object_getClass({}));
    EXPECT_FALSE(runtime().class_({}));
    EXPECT_FALSE(runtime().classForCoder({}));
    EXPECT_TRUE(std::holds_alternative<std::monostate>(runtime().objc_getAssociatedObject({}, types)));
    runtime().objc_setAssociatedObject({}, types, true);
    runtime().method_exchangeImplementations({}, {});
    runtime().objc_retain({});
    runtime().objc_release({});
}

TEST_P(ObjectiveCRuntimeContract, AnAddedMethodIsFoundWithItsTypes) {
    EXPECT_FALSE(runtime().class_getInstanceMethod(base_, selector("contractNumber")));
    EXPECT_FALSE(runtime().class_respondsToSelector(base_, selector("contractNumber")));
    EXPECT_TRUE(runtime().class_addMethod(base_, selector("contractNumber"), number(1), types));
    const auto method = runtime().class_getInstanceMethod(base_, selector("contractNumber"));
    ASSERT_TRUE(method);
    EXPECT_EQ(runtime().method_getImplementation(method), number(1));
    EXPECT_STREQ(runtime().method_getTypeEncoding(method), types);
    EXPECT_EQ(send(host_->makeObject(base_), "contractNumber"), 1);
}

TEST_P(ObjectiveCRuntimeContract, AnInheritedMethodIsTheSuperclassesOwn) {
    runtime().class_addMethod(base_, selector("contractNumber"), number(1), types);
    EXPECT_TRUE(runtime().class_respondsToSelector(derived_, selector("contractNumber")));
    EXPECT_EQ(runtime().class_getInstanceMethod(derived_, selector("contractNumber")),
              runtime().class_getInstanceMethod(base_, selector("contractNumber")));
    EXPECT_EQ(send(host_->makeObject(derived_), "contractNumber"), 1);
}

TEST_P(ObjectiveCRuntimeContract, AddingRefusesWhatTheClassItselfHas) {
    runtime().class_addMethod(base_, selector("contractNumber"), number(1), types);
    EXPECT_FALSE(runtime().class_addMethod(base_, selector("contractNumber"), number(2), types));
    EXPECT_EQ(found(base_, "contractNumber"), number(1));
}

TEST_P(ObjectiveCRuntimeContract, AddingOverridesWhatTheClassInherits) {
    runtime().class_addMethod(base_, selector("contractNumber"), number(1), types);
    EXPECT_TRUE(runtime().class_addMethod(derived_, selector("contractNumber"), number(2), types));
    EXPECT_EQ(send(host_->makeObject(base_), "contractNumber"), 1);
    EXPECT_EQ(send(host_->makeObject(derived_), "contractNumber"), 2);
}

TEST_P(ObjectiveCRuntimeContract, ReplacingGivesTheFormerImplementation) {
    runtime().class_addMethod(base_, selector("contractNumber"), number(1), types);
    EXPECT_EQ(runtime().class_replaceMethod(base_, selector("contractNumber"), number(2), types), number(1));
    EXPECT_EQ(send(host_->makeObject(base_), "contractNumber"), 2);
}

TEST_P(ObjectiveCRuntimeContract, ReplacingAddsWhatIsAbsent) {
    EXPECT_FALSE(runtime().class_replaceMethod(base_, selector("contractNumber"), number(2), types));
    EXPECT_EQ(send(host_->makeObject(base_), "contractNumber"), 2);
}

TEST_P(ObjectiveCRuntimeContract, ReplacingWhatIsInheritedLeavesTheSuperclassAlone) {
    runtime().class_addMethod(base_, selector("contractNumber"), number(1), types);
    EXPECT_FALSE(runtime().class_replaceMethod(derived_, selector("contractNumber"), number(2), types));
    EXPECT_EQ(send(host_->makeObject(base_), "contractNumber"), 1);
    EXPECT_EQ(send(host_->makeObject(derived_), "contractNumber"), 2);
}

TEST_P(ObjectiveCRuntimeContract, SettingAnImplementationChangesTheClassThatHasIt) {
    runtime().class_addMethod(base_, selector("contractNumber"), number(1), types);
    const auto method = runtime().class_getInstanceMethod(derived_, selector("contractNumber"));
    EXPECT_EQ(runtime().method_setImplementation(method, number(2)), number(1));
    EXPECT_EQ(send(host_->makeObject(base_), "contractNumber"), 2);
    EXPECT_EQ(send(host_->makeObject(derived_), "contractNumber"), 2);
}

TEST_P(ObjectiveCRuntimeContract, SettingReachesSubclassesThatHaveBeenMessaged) {
    runtime().class_addMethod(base_, selector("contractNumber"), number(1), types);
    runtime().class_addMethod(derived_, selector("contractOther"), number(3), types);
    const auto object = host_->makeObject(derived_);
    EXPECT_EQ(send(object, "contractNumber") + send(object, "contractOther"), 4);
    runtime().method_setImplementation(runtime().class_getInstanceMethod(base_, selector("contractNumber")), number(2));
    EXPECT_EQ(send(object, "contractNumber"), 2);
}

TEST_P(ObjectiveCRuntimeContract, ExchangingSwapsTwoImplementations) {
    runtime().class_addMethod(base_, selector("contractNumber"), number(1), types);
    runtime().class_addMethod(base_, selector("contractOther"), number(2), types);
    runtime().method_exchangeImplementations(runtime().class_getInstanceMethod(base_, selector("contractNumber")),
                                             runtime().class_getInstanceMethod(base_, selector("contractOther")));
    const auto object = host_->makeObject(base_);
    EXPECT_EQ(send(object, "contractNumber"), 2);
    EXPECT_EQ(send(object, "contractOther"), 1);
}

TEST_P(ObjectiveCRuntimeContract, ExchangingReachesSubclassesThatHaveBeenMessaged) {
    runtime().class_addMethod(base_, selector("contractNumber"), number(1), types);
    runtime().class_addMethod(base_, selector("contractOther"), number(2), types);
    runtime().class_addMethod(derived_, selector("contractThird"), number(3), types);
    const auto object = host_->makeObject(derived_);
    EXPECT_EQ(send(object, "contractNumber") + send(object, "contractOther") + send(object, "contractThird"), 6);
    runtime().method_exchangeImplementations(runtime().class_getInstanceMethod(base_, selector("contractNumber")),
                                             runtime().class_getInstanceMethod(base_, selector("contractOther")));
    EXPECT_EQ(send(object, "contractNumber"), 2);
    EXPECT_EQ(send(object, "contractOther"), 1);
}

TEST_P(ObjectiveCRuntimeContract, AddingReachesSubclassesThatHaveBeenMessaged) {
    runtime().class_addMethod(base_, selector("contractNumber"), number(1), types);
    const auto leaf = host_->makeClass(name("Leaf"), derived_);
    runtime().class_addMethod(leaf, selector("contractOther"), number(3), types);
    const auto object = host_->makeObject(leaf);
    EXPECT_EQ(send(object, "contractNumber") + send(object, "contractOther"), 4);
    runtime().class_addMethod(derived_, selector("contractNumber"), number(2), types);
    EXPECT_EQ(send(object, "contractNumber"), 2);
}

TEST_P(ObjectiveCRuntimeContract, AnObjectKnowsItsClass) {
    const auto object = host_->makeObject(derived_);
    EXPECT_EQ(runtime().object_getClass(object), derived_);
    EXPECT_EQ(runtime().class_(object), derived_);
    EXPECT_EQ(runtime().classForCoder(object), derived_);
}

TEST_P(ObjectiveCRuntimeContract, AnAssociatedValueIsKeptByObjectAndKey) {
    static const char keys[2]{};
    const auto object = host_->makeObject(base_);
    const auto other = host_->makeObject(base_);
    EXPECT_TRUE(std::holds_alternative<std::monostate>(runtime().objc_getAssociatedObject(object, &keys[0])));
    runtime().objc_setAssociatedObject(object, &keys[0], std::string("Größe"));
    runtime().objc_setAssociatedObject(object, &keys[1], false);
    EXPECT_EQ(runtime().objc_getAssociatedObject(object, &keys[0]), AssociatedValue(std::string("Größe")));
    EXPECT_EQ(runtime().objc_getAssociatedObject(object, &keys[1]), AssociatedValue(false));
    EXPECT_TRUE(std::holds_alternative<std::monostate>(runtime().objc_getAssociatedObject(other, &keys[0])));
}

TEST_P(ObjectiveCRuntimeContract, AnAssociatedValueIsReplacedAndRemoved) {
    static const char key = 0;
    const auto object = host_->makeObject(base_);
    runtime().objc_setAssociatedObject(object, &key, std::string("first"));
    runtime().objc_setAssociatedObject(object, &key, std::string(""));
    EXPECT_EQ(runtime().objc_getAssociatedObject(object, &key), AssociatedValue(std::string()));
    runtime().objc_setAssociatedObject(object, &key, true);
    EXPECT_EQ(runtime().objc_getAssociatedObject(object, &key), AssociatedValue(true));
    runtime().objc_setAssociatedObject(object, &key, AssociatedValue());
    EXPECT_TRUE(std::holds_alternative<std::monostate>(runtime().objc_getAssociatedObject(object, &key)));
}

TEST_P(ObjectiveCRuntimeContract, PoolsMayLieInEachOther) {
    auto* const outer = runtime().objc_autoreleasePoolPush();
    auto* const inner = runtime().objc_autoreleasePoolPush();
    runtime().objc_autoreleasePoolPop(inner);
    runtime().objc_autoreleasePoolPop(outer);
}

} // namespace tallyfoot::testing
