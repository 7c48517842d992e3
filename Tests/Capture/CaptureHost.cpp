#include "Capture/CaptureHost.h"

#include <array>
#include <span>
#include <utility>

namespace tallyfoot::testing {

namespace {

using Value = MemoryRuntime::Value;
using Invocation = MemoryRuntime::Invocation;

// Each below the one after it.
constexpr std::array<std::pair<const char*, const char*>, 40> classes{{
    {"UIResponder", "NSObject"},
    {"UIApplication", "UIResponder"},
    {"UIView", "UIResponder"},
    {"UIViewController", "UIResponder"},
    {"UIBarItem", "NSObject"},
    {"UINavigationItem", "NSObject"},
    {"UIGestureRecognizer", "NSObject"},
    {"UIBarButtonItem", "UIBarItem"},
    {"UITabBarItem", "UIBarItem"},
    {"UINavigationController", "UIViewController"},
    {"UIAlertController", "UIViewController"},
    {"UISearchController", "UIViewController"},
    {"UIControl", "UIView"},
    {"UIButton", "UIControl"},
    {"UISegmentedControl", "UIControl"},
    {"UIStepper", "UIControl"},
    {"UISlider", "UIControl"},
    {"UISwitch", "UIControl"},
    {"UIDatePicker", "UIControl"},
    {"UIPageControl", "UIControl"},
    {"UIRefreshControl", "UIControl"},
    {"UITextField", "UIControl"},
    {"UISwipeActionStandardButton", "UIButton"},
    {"UILabel", "UIView"},
    {"UIScrollView", "UIView"},
    {"UITableView", "UIScrollView"},
    {"UICollectionView", "UIScrollView"},
    {"UITextView", "UIScrollView"},
    {"UIPickerTableView", "UITableView"},
    {"UITableViewCell", "UIView"},
    {"UICollectionViewCell", "UIView"},
    {"UITabBar", "UIView"},
    {"UISearchBar", "UIView"},
    {"UITapGestureRecognizer", "UIGestureRecognizer"},
    {"UISwipeGestureRecognizer", "UIGestureRecognizer"},
    {"UIPinchGestureRecognizer", "UIGestureRecognizer"},
    {"UILongPressGestureRecognizer", "UIGestureRecognizer"},
    {"UIPanGestureRecognizer", "UIGestureRecognizer"},
    {"UIRotationGestureRecognizer", "UIGestureRecognizer"},
    {"UIWebBrowserView", "UIView"},
}};

// Setters of the platform; the table inherits its own.
constexpr std::array<std::pair<const char*, const char*>, 5> setters{
    {{"UIScrollView", "setDelegate:"},
     {"UITabBar", "setDelegate:"},
     {"UICollectionView", "setDataSource:"},
     {"UISearchBar", "setDelegate:"},
     {"UISearchController", "setSearchResultsUpdater:"}}};

} // namespace

CaptureHost::CaptureHost()
    : platform((addClasses(), addMethods(), binding.references())), capture(binding.references(), facade),
      application(runtime.make("UIApplication")) {
    binding.connect(capture);
}

void CaptureHost::addClasses() {
    for (const auto& [name, superclass] : classes) runtime.addClass(name, superclass);
}

void CaptureHost::addMethods() {
    const auto noted = [this](const char* what, Value answer = {}) {
        return [this, what, answer](const Invocation&) {
            journal.emplace_back(what);
            return answer;
        };
    };
    for (const auto& [className, setter] : setters) runtime.addMethod(className, setter, noted(setter), "v@:@");
    runtime.addMethod("UIViewController", "viewWillAppear:", noted("viewWillAppear:"), "v@:B");
    runtime.addMethod("UIViewController", "viewWillDisappear:", noted("viewWillDisappear:"), "v@:B");
    runtime.addMethod("UIApplication", "sendAction:to:from:forEvent:", noted("sendAction", true), "B@::@@@");
    runtime.addMethod("UIGestureRecognizer", "initWithTarget:action:", [this](const Invocation& call) {
        journal.emplace_back("initWithTarget:action:");
        return Value(call.self);
    });
    runtime.addMethod("UIGestureRecognizer", "addTarget:action:", [this](const Invocation& call) {
        const std::string target = call.object(0) == call.self ? "itself " : "another ";
        journal.push_back("addTarget " + target + runtime.sel_getName(std::get<SelectorRef>(call.arguments[1])));
        return Value();
    });
}

ObjectRef CaptureHost::make(const char* className, std::map<std::string, Value> answers) {
    const auto made = runtime.make(className);
    for (auto& [selector, value] : answers) runtime.answer(made, selector.c_str(), std::move(value));
    return made;
}

ObjectRef CaptureHost::makeRecognizer(const char* className, ObjectRef view) {
    const auto made = make(className);
    if (view) runtime.answer(made, "view", view);
    return std::get<ObjectRef>(
        runtime.send(made, "initWithTarget:action:", {ObjectRef{}, runtime.sel_registerName("host:")}));
}

ObjectRef CaptureHost::makeView(const char* className, std::vector<ObjectRef> subviews) {
    return make(className, {{"subviews", runtime.makeArray(std::move(subviews))}});
}

void CaptureHost::name(ObjectRef object, const char* customName) {
    send(object, "setCustomName:", {std::string(customName)});
}

void CaptureHost::disable(ObjectRef object) { send(object, "setLogEnabled:", {false}); }

void CaptureHost::sendAction(const char* action, ObjectRef sender) {
    send(application,
         "sendAction:to:from:forEvent:", {runtime.sel_registerName(action), ObjectRef{}, sender, ObjectRef{}});
}

void CaptureHost::fire(ObjectRef recognizer) { send(recognizer, "swizzleGestureAction:", {recognizer}); }

void CaptureHost::setDelegate(ObjectRef view, ObjectRef delegate, const char* setter) {
    send(view, setter, {delegate});
}

} // namespace tallyfoot::testing
