// What capture adds to an interaction: one that is recorded against the same event logged by hand, and
// one that is not recorded. The platform's own part is as small as it can be: no messages are sent.
#include "Support/Workload.h"

#include "Tallyfoot/Facade/CaptureConnection.h"
#include "Tallyfoot/Tallyfoot.h"

#include <benchmark/benchmark.h>

#include <set>
#include <string>

namespace {

using namespace tallyfoot;
using namespace tallyfoot::benchmarks;

constexpr int events = 16000; // few enough that no log file fills up

struct FlatClass {
    const char* name;
    FlatClass* superclass;
};

struct FlatObject {
    FlatClass* isa;
    bool logEnabled = true;
    std::int64_t state = 0;
    std::string title = "Add to basket";
};

// Classes and objects that lie flat in memory.
class FlatPlatform final : public ObjectiveCRuntime, public ObjectMessages, public MethodBodies {
public:
    ClassRef objc_getClass(const char*) override { return {}; }
    const char* class_getName(ClassRef one) override { return static_cast<FlatClass*>(one.pointer)->name; }
    ClassRef class_getSuperclass(ClassRef one) override { return {static_cast<FlatClass*>(one.pointer)->superclass}; }
    SelectorRef sel_registerName(const char* name) override {
        return {const_cast<std::string*>(&*selectors_.emplace(name).first)};
    }
    const char* sel_getName(SelectorRef one) override { return static_cast<std::string*>(one.pointer)->c_str(); }
    MethodRef class_getInstanceMethod(ClassRef, SelectorRef) override { return {}; }
    bool class_respondsToSelector(ClassRef, SelectorRef) override { return false; }
    bool class_addMethod(ClassRef, SelectorRef, ImplementationRef, const char*) override { return false; }
    ImplementationRef class_replaceMethod(ClassRef, SelectorRef, ImplementationRef, const char*) override { return {}; }
    ImplementationRef method_getImplementation(MethodRef) override { return {}; }
    const char* method_getTypeEncoding(MethodRef) override { return ""; }
    ImplementationRef method_setImplementation(MethodRef, ImplementationRef) override { return {}; }
    void method_exchangeImplementations(MethodRef, MethodRef) override {}
    ClassRef object_getClass(ObjectRef one) override { return {one ? of(one).isa : nullptr}; }
    ClassRef class_(ObjectRef one) override { return object_getClass(one); }
    ClassRef classForCoder(ObjectRef one) override { return object_getClass(one); }
    AssociatedValue objc_getAssociatedObject(ObjectRef, const void*) override { return {}; }
    void objc_setAssociatedObject(ObjectRef, const void*, const AssociatedValue&) override {}
    void objc_retain(ObjectRef) override {}
    void objc_release(ObjectRef) override {}
    void* objc_autoreleasePoolPush() override { return nullptr; }
    void objc_autoreleasePoolPop(void*) override {}

    std::optional<std::string> text(ObjectRef one, SelectorRef selector) override {
        return selector == title_ ? std::optional(of(one).title) : std::nullopt;
    }
    std::optional<std::string> text(ObjectRef, SelectorRef, std::int64_t) override { return {}; }
    std::optional<bool> truth(ObjectRef one, SelectorRef selector) override {
        return selector == logEnabled_ ? std::optional(of(one).logEnabled) : std::nullopt;
    }
    std::optional<std::int64_t> integer(ObjectRef one, SelectorRef) override { return of(one).state; }
    std::optional<double> doubleValue(ObjectRef, SelectorRef) override { return {}; }
    std::optional<float> floatValue(ObjectRef, SelectorRef) override { return {}; }
    std::optional<double> timeIntervalSince1970(ObjectRef, SelectorRef) override { return {}; }
    ObjectRef object(ObjectRef, SelectorRef) override { return {}; }
    ObjectRef object(ObjectRef, SelectorRef, ObjectRef) override { return {}; }
    ObjectRef object(ObjectRef, SelectorRef, Point) override { return {}; }
    std::optional<Point> point(ObjectRef, SelectorRef, ObjectRef) override { return {}; }
    std::size_t count(ObjectRef) override { return 0; }
    ObjectRef objectAtIndex(ObjectRef, std::size_t) override { return {}; }
    void objc_msgSend(ObjectRef, SelectorRef, std::span<const ObjectRef>) override {}
    void call(ImplementationRef, ObjectRef, SelectorRef, std::span<const ObjectRef>) override {}
    void forwardInvocation(ObjectRef, SelectorRef, std::span<const ObjectRef>) override {}
    bool respondsToSelector(ObjectRef, SelectorRef) override { return false; }
    void addTarget(ObjectRef, ObjectRef, SelectorRef) override {}
    bool callStackSymbolsContain(std::string_view) override { return false; }
    std::optional<ScreenBounds> mainScreenBounds() override { return {}; }

    Code code(MethodBody) override { return {}; }

private:
    static FlatObject& of(ObjectRef one) { return *static_cast<FlatObject*>(one.pointer); }

    std::set<std::string> selectors_;
    const SelectorRef title_ = sel_registerName("currentTitle");
    const SelectorRef logEnabled_ = sel_registerName("logEnabled");
} platform;

FlatClass root{"NSObject", nullptr};
FlatClass responder{"UIResponder", &root};
FlatClass view{"UIView", &responder};
FlatClass control{"UIControl", &view};
FlatClass button{"UIButton", &control};
FlatClass slider{"UISlider", &control};
FlatClass scrollView{"UIScrollView", &view};
FlatClass table{"UITableView", &scrollView};
FlatClass textField{"UITextField", &control};
FlatClass recognizer{"UIGestureRecognizer", &root};
FlatClass pan{"UIPanGestureRecognizer", &recognizer};

Capture& capture() { return connectCapture({platform, platform, platform}); }

void emptyLog(const benchmark::State&) { forgetLogs(); }

void logOfATap(benchmark::State& state) {
    for (auto _ : state)
        Tallyfoot::log(EventType::action, {{LogAttribute::evtCategory, "UIButton"},
                                           {LogAttribute::evtAction, "tap"},
                                           {LogAttribute::evtLabel, "Add to basket"}});
}
BENCHMARK(logOfATap)->Setup(emptyLog)->Iterations(events)->UseRealTime();

void send(benchmark::State& state, FlatObject& sender) {
    const auto action = platform.sel_registerName("buy:");
    auto& installed = capture();
    for (auto _ : state) benchmark::DoNotOptimize(installed.swizzledSendAction(action, {&sender}, [] { return true; }));
}

void capturedTap(benchmark::State& state) {
    FlatObject sender{&button};
    send(state, sender);
}
BENCHMARK(capturedTap)->Setup(emptyLog)->Iterations(events)->UseRealTime();

// --- Not recorded

void disabledButton(benchmark::State& state) {
    FlatObject sender{&button, false};
    send(state, sender);
}
void ignoredSlider(benchmark::State& state) {
    FlatObject sender{&slider};
    send(state, sender);
}
void unknownSender(benchmark::State& state) {
    FlatObject sender{&textField};
    send(state, sender);
}
void unfinishedPan(benchmark::State& state) {
    FlatObject sender{&pan, true, 2};
    auto& installed = capture();
    for (auto _ : state) installed.swizzleGestureAction({&sender});
}
void disabledRow(benchmark::State& state) {
    FlatObject rows{&table, false};
    FlatObject delegate{&root};
    auto& installed = capture();
    for (auto _ : state) installed.swizzledCallback(MethodBody::tableViewSelection, {&delegate}, {&rows}, {&delegate});
}
BENCHMARK(disabledButton)->UseRealTime();
BENCHMARK(ignoredSlider)->UseRealTime();
BENCHMARK(unknownSender)->UseRealTime();
BENCHMARK(unfinishedPan)->UseRealTime();
BENCHMARK(disabledRow)->UseRealTime();

} // namespace

int main(int argc, char** argv) {
    capture();
    startRecording("http://127.0.0.1:9/upload"); // nothing listens, nothing is sent
    Tallyfoot::configure(UploadConfiguration::defaultConfiguration(), {"UISlider"}, nullptr);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
