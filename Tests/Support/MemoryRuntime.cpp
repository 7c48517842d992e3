#include "Support/MemoryRuntime.h"

#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>
#include <utility>

namespace tallyfoot::testing {

struct MemoryRuntime::Method {
    Class* owner;
    SelectorRef selector;
    ImplementationRef implementation;
    std::string types;
};

struct MemoryRuntime::Class {
    std::string name;
    Class* superclass;
    Class* shown; // differs from itself in a class made by observe
    std::map<SelectorRef, std::unique_ptr<Method>> methods;
};

struct MemoryRuntime::Object {
    Class* isa;
    int retainCount;
    std::map<std::string, Function> answers;
    std::map<const void*, AssociatedValue> associated;
    std::optional<std::vector<ObjectRef>> elements;
};

MemoryRuntime::MemoryRuntime() { addClass("NSObject"); }

MemoryRuntime::~MemoryRuntime() = default;

// --- A world to look at --------------------------------------------------------------------------

ClassRef MemoryRuntime::addClass(const char* name, const char* superclass) {
    const auto super = superclass ? objc_getClass(superclass) : ClassRef{};
    if (superclass && !super) throw std::logic_error(std::string("no class ") + superclass);
    auto made = std::make_unique<Class>(Class{name, of(super), nullptr, {}});
    made->shown = made.get();
    const ClassRef reference{made.get()};
    if (!classes_.emplace(name, std::move(made)).second) throw std::logic_error(std::string("twice: ") + name);
    return reference;
}

ImplementationRef MemoryRuntime::implementation(Function function) {
    functions_.push_back(std::make_unique<Function>(std::move(function)));
    return {reinterpret_cast<void (*)()>(functions_.back().get())}; // never called as one
}

void MemoryRuntime::addMethod(const char* className, const char* selector, Function function, const char* types) {
    const auto toClass = objc_getClass(className);
    if (!toClass || !class_addMethod(toClass, sel_registerName(selector), implementation(std::move(function)), types))
        throw std::logic_error(std::string(className) + " " + selector);
    journal_.pop_back(); // the world's own doing
}

ObjectRef MemoryRuntime::make(const char* className) {
    const auto isa = objc_getClass(className);
    if (!isa) throw std::logic_error(std::string("no class ") + className);
    objects_.push_back(std::make_unique<Object>(Object{of(isa), 1, {}, {}, {}}));
    return {objects_.back().get()};
}

ObjectRef MemoryRuntime::makeArray(std::vector<ObjectRef> elements) {
    const auto array = make("NSObject");
    of(array)->elements = std::move(elements);
    return array;
}

void MemoryRuntime::answer(ObjectRef object, const char* selector, Value value) {
    answerWith(object, selector, [value = std::move(value)](const Invocation&) { return value; });
}

void MemoryRuntime::answerWith(ObjectRef object, const char* selector, Function function) {
    living(object).answers[selector] = std::move(function);
}

void MemoryRuntime::observe(ObjectRef object) {
    auto& isa = living(object).isa;
    const auto name = "NSKVONotifying_" + isa->name;
    auto& made = classes_[name];
    if (!made) made = std::make_unique<Class>(Class{name, isa, isa->shown, {}});
    isa = made.get();
}

MemoryRuntime::Value MemoryRuntime::send(ObjectRef object, const char* selector, std::vector<Value> arguments) {
    auto answer = ask(object, sel_registerName(selector), std::move(arguments));
    if (!answer) throw std::logic_error(std::string("unrecognized selector ") + selector);
    return std::move(*answer);
}

MemoryRuntime::Value MemoryRuntime::sendSuper(ObjectRef object, const char* className, const char* selector,
                                              std::vector<Value> arguments) {
    const auto name = sel_registerName(selector);
    const auto method = class_getInstanceMethod(class_getSuperclass(objc_getClass(className)), name);
    if (!method) throw std::logic_error(std::string("no inherited ") + selector);
    return run(of(method)->implementation, {object, name, std::move(arguments)});
}

bool MemoryRuntime::isAlive(ObjectRef object) const { return of(object)->retainCount > 0; }

int MemoryRuntime::retainCount(ObjectRef object) const { return of(object)->retainCount; }

std::map<std::string, ImplementationRef> MemoryRuntime::ownMethods() const {
    std::map<std::string, ImplementationRef> all;
    for (const auto& [name, one] : classes_)
        for (const auto& [selector, method] : one->methods) all[nameOf(*method)] = method->implementation;
    return all;
}

// --- ObjectiveCRuntime -----------------------------------------------------------------------------

ClassRef MemoryRuntime::objc_getClass(const char* name) {
    const auto place = classes_.find(name);
    return {place == classes_.end() ? nullptr : place->second.get()};
}

const char* MemoryRuntime::class_getName(ClassRef reference) { return reference ? of(reference)->name.c_str() : "nil"; }

ClassRef MemoryRuntime::class_getSuperclass(ClassRef reference) {
    return {reference ? of(reference)->superclass : nullptr};
}

SelectorRef MemoryRuntime::sel_registerName(const char* name) {
    return {const_cast<std::string*>(&*selectors_.emplace(name).first)};
}

const char* MemoryRuntime::sel_getName(SelectorRef reference) {
    return reference ? static_cast<const std::string*>(reference.pointer)->c_str() : "<null selector>";
}

MethodRef MemoryRuntime::class_getInstanceMethod(ClassRef reference, SelectorRef selector) {
    for (auto* one = of(reference); one; one = one->superclass)
        if (const auto place = one->methods.find(selector); place != one->methods.end()) return {place->second.get()};
    return {};
}

bool MemoryRuntime::class_addMethod(ClassRef reference, SelectorRef selector, ImplementationRef implementation,
                                    const char* types) {
    if (!reference || !implementation) return false;
    const auto [place, isNew] = of(reference)->methods.try_emplace(selector);
    if (!isNew) return false;
    place->second = std::make_unique<Method>(Method{of(reference), selector, implementation, types});
    journal_.push_back("add " + nameOf(*place->second));
    return true;
}

ImplementationRef MemoryRuntime::class_replaceMethod(ClassRef reference, SelectorRef selector,
                                                     ImplementationRef implementation, const char* types) {
    if (!reference || class_addMethod(reference, selector, implementation, types)) return {};
    auto& method = *of(reference)->methods.at(selector);
    journal_.push_back("replace " + nameOf(method));
    return std::exchange(method.implementation, implementation);
}

ImplementationRef MemoryRuntime::method_getImplementation(MethodRef reference) {
    return reference ? of(reference)->implementation : ImplementationRef{};
}

const char* MemoryRuntime::method_getTypeEncoding(MethodRef reference) {
    return reference ? of(reference)->types.c_str() : nullptr;
}

ImplementationRef MemoryRuntime::method_setImplementation(MethodRef reference, ImplementationRef implementation) {
    if (!reference) return {};
    journal_.push_back("set " + nameOf(*of(reference)));
    return std::exchange(of(reference)->implementation, implementation);
}

void MemoryRuntime::method_exchangeImplementations(MethodRef one, MethodRef other) {
    if (!one || !other) return;
    journal_.push_back("exchange " + nameOf(*of(one)) + " " + nameOf(*of(other)));
    std::swap(of(one)->implementation, of(other)->implementation);
}

ClassRef MemoryRuntime::object_getClass(ObjectRef reference) { return {reference ? living(reference).isa : nullptr}; }

ClassRef MemoryRuntime::class_(ObjectRef reference) { return {reference ? living(reference).isa->shown : nullptr}; }

ClassRef MemoryRuntime::classForCoder(ObjectRef reference) { return class_(reference); }

AssociatedValue MemoryRuntime::objc_getAssociatedObject(ObjectRef reference, const void* key) {
    if (!reference) return {};
    const auto& associated = living(reference).associated;
    const auto place = associated.find(key);
    return place == associated.end() ? AssociatedValue() : place->second;
}

void MemoryRuntime::objc_setAssociatedObject(ObjectRef reference, const void* key, const AssociatedValue& value) {
    if (reference) living(reference).associated[key] = value;
}

void MemoryRuntime::objc_retain(ObjectRef reference) {
    if (reference) ++living(reference).retainCount;
}

void MemoryRuntime::objc_release(ObjectRef reference) {
    if (reference && --living(reference).retainCount == 0) of(reference)->associated.clear();
}

void* MemoryRuntime::objc_autoreleasePoolPush() {
    ++openPools_;
    return this;
}

void MemoryRuntime::objc_autoreleasePoolPop(void*) { --openPools_; }

// --- ObjectMessages --------------------------------------------------------------------------------

template <class Answer>
std::optional<Answer> MemoryRuntime::askFor(ObjectRef object, SelectorRef selector, std::vector<Value> arguments) try {
    const auto answer = ask(object, selector, std::move(arguments));
    const auto* expected = answer ? std::get_if<Answer>(&*answer) : nullptr;
    return expected ? std::optional(*expected) : std::nullopt;
} catch (const std::runtime_error&) { // as a getter's exception
    return std::nullopt;
}

std::optional<std::string> MemoryRuntime::text(ObjectRef object, SelectorRef selector) {
    return askFor<std::string>(object, selector);
}

std::optional<std::string> MemoryRuntime::text(ObjectRef object, SelectorRef selector, std::int64_t index) {
    return askFor<std::string>(object, selector, {index});
}

std::optional<bool> MemoryRuntime::truth(ObjectRef object, SelectorRef selector) {
    return askFor<bool>(object, selector);
}

std::optional<std::int64_t> MemoryRuntime::integer(ObjectRef object, SelectorRef selector) {
    return askFor<std::int64_t>(object, selector);
}

std::optional<double> MemoryRuntime::doubleValue(ObjectRef object, SelectorRef selector) {
    return askFor<double>(object, selector);
}

std::optional<float> MemoryRuntime::floatValue(ObjectRef object, SelectorRef selector) {
    return askFor<float>(object, selector);
}

std::optional<double> MemoryRuntime::timeIntervalSince1970(ObjectRef object, SelectorRef selector) {
    const auto date = askFor<DateValue>(object, selector);
    return date ? std::optional(date->secondsSince1970) : std::nullopt;
}

ObjectRef MemoryRuntime::object(ObjectRef object, SelectorRef selector) {
    return askFor<ObjectRef>(object, selector).value_or(ObjectRef{});
}

ObjectRef MemoryRuntime::object(ObjectRef object, SelectorRef selector, ObjectRef argument) {
    return askFor<ObjectRef>(object, selector, {argument}).value_or(ObjectRef{});
}

ObjectRef MemoryRuntime::object(ObjectRef object, SelectorRef selector, Point argument) {
    return askFor<ObjectRef>(object, selector, {argument}).value_or(ObjectRef{});
}

std::optional<Point> MemoryRuntime::point(ObjectRef object, SelectorRef selector, ObjectRef argument) {
    return askFor<Point>(object, selector, {argument});
}

std::size_t MemoryRuntime::count(ObjectRef array) {
    return array && living(array).elements ? living(array).elements->size() : 0;
}

ObjectRef MemoryRuntime::objectAtIndex(ObjectRef array, std::size_t index) {
    return index < count(array) ? living(array).elements->at(index) : ObjectRef{};
}

void MemoryRuntime::objc_msgSend(ObjectRef object, SelectorRef selector, std::span<const ObjectRef> arguments) {
    send(object, sel_getName(selector), {arguments.begin(), arguments.end()});
}

void MemoryRuntime::call(ImplementationRef implementation, ObjectRef object, SelectorRef selector,
                         std::span<const ObjectRef> arguments) {
    run(implementation, {object, selector, {arguments.begin(), arguments.end()}});
}

void MemoryRuntime::forwardInvocation(ObjectRef object, SelectorRef selector, std::span<const ObjectRef> arguments) {
    if (const auto named = askFor<ObjectRef>(object, sel_registerName("forwardingTargetForSelector:"), {selector}))
        if (*named) return objc_msgSend(*named, selector, arguments);
    std::vector<Value> all{selector};
    all.insert(all.end(), arguments.begin(), arguments.end());
    ask(object, sel_registerName("forwardInvocation:"), std::move(all));
}

bool MemoryRuntime::respondsToSelector(ObjectRef object, SelectorRef selector) {
    if (!object) return false;
    const auto& answers = living(object).answers;
    if (const auto place = answers.find("respondsToSelector:"); place != answers.end())
        return std::get<bool>(place->second({object, sel_registerName("respondsToSelector:"), {selector}}));
    return class_getInstanceMethod(object_getClass(object), selector) || answers.contains(sel_getName(selector));
}

void MemoryRuntime::addTarget(ObjectRef recognizer, ObjectRef target, SelectorRef action) {
    send(recognizer, "addTarget:action:", {target, action});
}

bool MemoryRuntime::callStackSymbolsContain(std::string_view marker) {
    ++callStackLooks;
    for (const auto& symbol : callStackSymbols)
        if (symbol.find(marker) != std::string::npos) return true;
    return false;
}

MemoryRuntime::Object& MemoryRuntime::living(ObjectRef reference) const {
    auto& object = *of(reference);
    if (object.retainCount <= 0) ADD_FAILURE() << "a message to a dead " << object.isa->name;
    return object;
}

MemoryRuntime::Value MemoryRuntime::run(ImplementationRef implementation, Invocation invocation) {
    return (*reinterpret_cast<const Function*>(implementation.function))(invocation);
}

std::optional<MemoryRuntime::Value> MemoryRuntime::ask(ObjectRef object, SelectorRef selector,
                                                       std::vector<Value> arguments) {
    if (!object) return std::nullopt;
    if (const auto method = class_getInstanceMethod(object_getClass(object), selector))
        return run(of(method)->implementation, {object, selector, std::move(arguments)});
    const auto& answers = living(object).answers;
    const auto place = answers.find(sel_getName(selector));
    if (place == answers.end()) return std::nullopt;
    const auto function = place->second; // the answer may change the answers
    return function({object, selector, std::move(arguments)});
}

std::string MemoryRuntime::nameOf(const Method& method) const {
    return method.owner->name + " " + *static_cast<const std::string*>(method.selector.pointer);
}

} // namespace tallyfoot::testing
