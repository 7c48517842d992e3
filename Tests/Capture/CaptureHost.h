#pragma once

#include "Support/ManualClock.h"
#include "Support/MemoryBinding.h"
#include "Support/MemoryRuntime.h"
#include "Support/RecordingConsole.h"

#include "Tallyfoot/Capture/Capture.h"
#include "Tallyfoot/Capture/PlatformObject.h"

#include <atomic>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace tallyfoot::testing {

// What came out, in the order in which it did.
struct RecordedEvent {
    EventType type;
    Attributes attributes;

    std::string text(LogAttribute key) const {
        const auto* found = attributes.find(key);
        return found ? *found : "(none)";
    }
    std::string action() const { return text(LogAttribute::evtAction); }
    std::string label() const { return text(LogAttribute::evtLabel); }
    std::string category() const { return text(LogAttribute::evtCategory); }
};

class RecordingFacade final : public CaptureFacade {
public:
    void log(EventType type, Attributes& attributes) override { events.push_back({type, attributes}); }
    std::string category(ITFClass itfClass) const override { return tallyfoot::category(itfClass, titles); }
    bool isIgnored(std::string_view category) const override { return ignored.contains(category); }
    void setCurrentScreenTitle(std::string_view title) override { currentScreenTitle = title; }
    void setScreenSize(ScreenBounds bounds) override { screenSizes.push_back(bounds.width); }
    const DebugConsole& console() const override { return debugConsole; }
    const Clock& clock() const override { return manualClock; }

    CategoryTitles titles;
    std::set<std::string, std::less<>> ignored;
    std::vector<RecordedEvent> events;
    std::string currentScreenTitle;
    std::vector<double> screenSizes; // their widths
    std::atomic<bool> showOutput = true;
    RecordingConsole output;
    ManualClock manualClock;
    DebugConsole debugConsole{output, showOutput};
};

// A platform with UIKit's classes, as far as capture knows them, a binding whose method bodies call the
// capture, and a facade that keeps the events. `journal` tells what the platform's own methods did.
class CaptureHost {
public:
    CaptureHost();

    PlatformObject object(ObjectRef reference) const { return {platform, reference}; }
    ObjectRef make(const char* className, std::map<std::string, MemoryRuntime::Value> answers = {});
    ObjectRef makeRecognizer(const char* className, ObjectRef view = {}); // through initWithTarget:action:
    ObjectRef makeView(const char* className, std::vector<ObjectRef> subviews);
    ObjectRef makeLabel(const char* text) { return make("UILabel", {{"text", std::string(text)}}); }
    void addClass(const char* name, const char* superclass) { runtime.addClass(name, superclass); }

    void name(ObjectRef object, const char* customName);
    void disable(ObjectRef object);
    void sendAction(const char* action, ObjectRef sender); // through the application
    void fire(ObjectRef recognizer);                       // its library's action
    void setDelegate(ObjectRef view, ObjectRef delegate, const char* setter = "setDelegate:");
    MemoryRuntime::Value send(ObjectRef object, const char* selector,
                              std::vector<MemoryRuntime::Value> arguments = {}) {
        return runtime.send(object, selector, std::move(arguments));
    }

    MemoryRuntime runtime;
    MemoryBinding binding{runtime};
    RecordingFacade facade;
    std::vector<std::string> journal;
    const CapturePlatform platform;
    Capture capture;
    const ObjectRef application;
    std::vector<RecordedEvent>& events = facade.events;

private:
    void addClasses();
    void addMethods();
};

} // namespace tallyfoot::testing
