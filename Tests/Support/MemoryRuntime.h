#pragma once

#include "Tallyfoot/Capture/ObjectMessages.h"
#include "Tallyfoot/Capture/ObjectiveCRuntime.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <variant>
#include <vector>

namespace tallyfoot::testing {

// An Objective-C runtime in memory: classes, inheritance, methods and associated values behave as
// Apple's do. Objects are counted; a message to a dead one fails the test. One thread.
class MemoryRuntime final : public ObjectiveCRuntime, public ObjectMessages {
public:
    struct DateValue {
        double secondsSince1970;
    };
    using Value = std::variant<std::monostate, bool, std::int64_t, double, float, std::string, ObjectRef, SelectorRef,
                               Point, DateValue>;
    struct Invocation {
        ObjectRef self;
        SelectorRef selector;
        std::vector<Value> arguments;

        ObjectRef object(std::size_t place) const { return std::get<ObjectRef>(arguments.at(place)); }
    };
    using Function = std::function<Value(const Invocation&)>;

    MemoryRuntime();
    ~MemoryRuntime() override;

    // --- A world to look at ----------------------------------------------------------------------

    ClassRef addClass(const char* name, const char* superclass = nullptr);
    ImplementationRef implementation(Function function);
    void addMethod(const char* className, const char* selector, Function function, const char* types = "v@:");
    ObjectRef make(const char* className); // held once, by the test
    ObjectRef makeArray(std::vector<ObjectRef> elements);
    void answer(ObjectRef object, const char* selector, Value value); // the object's own, without a method
    void answerWith(ObjectRef object, const char* selector, Function function);
    void observe(ObjectRef object); // gives it a class of its own, as key-value observing does
    Value send(ObjectRef object, const char* selector, std::vector<Value> arguments = {});
    // As a method of that class would send it to its superclass.
    Value sendSuper(ObjectRef object, const char* className, const char* selector, std::vector<Value> arguments = {});

    bool isAlive(ObjectRef object) const;
    int retainCount(ObjectRef object) const;
    int openPools() const { return openPools_; }
    // What each class has itself: "Class selector" to the implementation.
    std::map<std::string, ImplementationRef> ownMethods() const;
    // The exchanges, additions and so on, in their order: "exchange UIView a: UIView b:".
    std::vector<std::string>& journal() { return journal_; }

    std::vector<std::string> callStackSymbols;
    int callStackLooks = 0;
    std::optional<ScreenBounds> mainScreen;

    // --- ObjectiveCRuntime -------------------------------------------------------------------------

    ClassRef objc_getClass(const char* name) override;
    const char* class_getName(ClassRef) override;
    ClassRef class_getSuperclass(ClassRef) override;
    SelectorRef sel_registerName(const char* name) override;
    const char* sel_getName(SelectorRef) override;
    MethodRef class_getInstanceMethod(ClassRef, SelectorRef) override;
    bool class_respondsToSelector(ClassRef inClass, SelectorRef selector) override {
        return static_cast<bool>(class_getInstanceMethod(inClass, selector));
    }
    bool class_addMethod(ClassRef, SelectorRef, ImplementationRef, const char* types) override;
    ImplementationRef class_replaceMethod(ClassRef, SelectorRef, ImplementationRef, const char* types) override;
    ImplementationRef method_getImplementation(MethodRef) override;
    const char* method_getTypeEncoding(MethodRef) override;
    ImplementationRef method_setImplementation(MethodRef, ImplementationRef) override;
    void method_exchangeImplementations(MethodRef, MethodRef) override;
    ClassRef object_getClass(ObjectRef) override;
    ClassRef class_(ObjectRef) override;
    ClassRef classForCoder(ObjectRef) override;
    AssociatedValue objc_getAssociatedObject(ObjectRef, const void* key) override;
    void objc_setAssociatedObject(ObjectRef, const void* key, const AssociatedValue&) override;
    void objc_retain(ObjectRef) override;
    void objc_release(ObjectRef) override;
    void* objc_autoreleasePoolPush() override;
    void objc_autoreleasePoolPop(void* pool) override;

    // --- ObjectMessages ----------------------------------------------------------------------------

    std::optional<std::string> text(ObjectRef, SelectorRef) override;
    std::optional<std::string> text(ObjectRef, SelectorRef, std::int64_t index) override;
    std::optional<bool> truth(ObjectRef, SelectorRef) override;
    std::optional<std::int64_t> integer(ObjectRef, SelectorRef) override;
    std::optional<double> doubleValue(ObjectRef, SelectorRef) override;
    std::optional<float> floatValue(ObjectRef, SelectorRef) override;
    std::optional<double> timeIntervalSince1970(ObjectRef, SelectorRef) override;
    ObjectRef object(ObjectRef, SelectorRef) override;
    ObjectRef object(ObjectRef, SelectorRef, ObjectRef argument) override;
    ObjectRef object(ObjectRef, SelectorRef, Point argument) override;
    std::optional<Point> point(ObjectRef, SelectorRef, ObjectRef argument) override;
    std::size_t count(ObjectRef array) override;
    ObjectRef objectAtIndex(ObjectRef array, std::size_t index) override;
    void objc_msgSend(ObjectRef, SelectorRef, std::span<const ObjectRef> arguments) override;
    void call(ImplementationRef, ObjectRef, SelectorRef, std::span<const ObjectRef> arguments) override;
    void forwardInvocation(ObjectRef, SelectorRef, std::span<const ObjectRef> arguments) override;
    bool respondsToSelector(ObjectRef, SelectorRef) override;
    void addTarget(ObjectRef recognizer, ObjectRef target, SelectorRef action) override;
    bool callStackSymbolsContain(std::string_view marker) override;
    std::optional<ScreenBounds> mainScreenBounds() override { return mainScreen; }

private:
    struct Class;
    struct Method;
    struct Object;

    static Class* of(ClassRef reference) { return static_cast<Class*>(reference.pointer); }
    static Method* of(MethodRef reference) { return static_cast<Method*>(reference.pointer); }
    static Object* of(ObjectRef reference) { return static_cast<Object*>(reference.pointer); }
    Object& living(ObjectRef reference) const;
    Value run(ImplementationRef implementation, Invocation invocation);
    // Nothing where the object neither has such a method nor an answer of its own.
    std::optional<Value> ask(ObjectRef object, SelectorRef selector, std::vector<Value> arguments = {});
    template <class Answer>
    std::optional<Answer> askFor(ObjectRef object, SelectorRef selector, std::vector<Value> arguments = {});
    std::string nameOf(const Method& method) const;

    std::map<std::string, std::unique_ptr<Class>> classes_;
    std::set<std::string> selectors_; // their addresses are the selectors
    std::vector<std::unique_ptr<Function>> functions_;
    std::vector<std::unique_ptr<Object>> objects_; // dead ones too, so that no address comes twice
    std::vector<std::string> journal_;
    int openPools_ = 0;
};

} // namespace tallyfoot::testing
