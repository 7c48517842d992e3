#include "Tallyfoot/Capture/DelegateHooks.h"

#include "Tallyfoot/Capture/IgnoreLists.h"
#include "Tallyfoot/Capture/PlatformObject.h"

#include <span>

namespace tallyfoot {

namespace {

// A callback that has been passed on and has not come back yet, on this thread.
struct Call {
    MethodBody body;
    ObjectRef delegate;
    ObjectRef sender;
    ObjectRef item;
    ClassRef level; // whose implementation runs
    ImplementationRef implementation;
    Call* outer;
    int depth = outer ? outer->depth + 1 : 0;
    bool isEndless = false;

    bool tellsTheSame(const Call& other) const {
        return body == other.body && sender == other.sender && item == other.item;
    }
};

// No handling has itself called so often; two libraries that each take the other for the host would, for ever.
constexpr int deepest = 32;

thread_local constinit Call* innermost = nullptr;

class UnderWay {
public:
    explicit UnderWay(Call& call) { innermost = &call; }
    ~UnderWay() { innermost = innermost->outer; }
    UnderWay(const UnderWay&) = delete;
    UnderWay& operator=(const UnderWay&) = delete;
};

std::size_t placeOf(MethodBody body) {
    std::size_t place = 0;
    while (place < DelegateHooks::all.size() && DelegateHooks::all[place].body != body) ++place;
    return place;
}

} // namespace

DelegateHooks::DelegateHooks(const CapturePlatform& platform) : platform_(platform), interception_(platform) {
    auto& runtime = platform.runtime;
    for (std::size_t place = 0; place < all.size(); ++place)
        selectors_[place] = {runtime.sel_registerName(all[place].original),
                             runtime.sel_registerName(selectorName(all[place].body)),
                             runtime.sel_registerName(all[place].renamed)};
}

void DelegateHooks::intercept(MethodBody setter, ObjectRef self, ObjectRef delegate) {
    if (PlatformObject(platform_, self).className() == IgnoreLists::pickerTableView) return;
    const auto delegateClass = platform_.runtime.classForCoder(delegate);
    if (!delegateClass) return;
    for (std::size_t place = 0; place < all.size(); ++place)
        if (all[place].setter == setter) intercept(place, delegate, delegateClass);
}

void DelegateHooks::intercept(std::size_t place, ObjectRef delegate, ClassRef delegateClass) {
    const auto& selectors = selectors_[place];
    if (!interception_.hasMethod(delegate, selectors.original))
        added_.modify([&](auto& classes) { classes.emplace(delegateClass, all[place].body); });
    else if (wasAdded(place, interception_.definingClass(delegateClass, selectors.original)))
        return; // what is there is not the host's: it is the body, or another library's that calls the body
    interception_.addInterceptMethod(selectors.original, selectors.replacement, delegateClass, selectors.renamed,
                                     all[place].types);
}

bool DelegateHooks::forward(MethodBody body, ObjectRef delegate, ObjectRef sender, ObjectRef item) {
    const auto place = placeOf(body);
    if (place == all.size()) return false;
    const auto& selectors = selectors_[place];
    Call call{body, delegate, sender, item, {}, {}, innermost};
    auto* told = innermost; // the call that brought this one about
    while (told && !call.tellsTheSame(*told)) told = told->outer;
    const bool isOwn = told && told->delegate == delegate;
    if (isOwn && call.depth > deepest)
        for (auto* one = told; one; one = one->outer) one->isEndless = true;
    // The call whose handling calls its superclass's.
    const auto* below = isOwn && (told->isEndless || isInterceptedAbove(place, told->level)) ? told : nullptr;

    auto& runtime = platform_.runtime;
    auto level = below ? runtime.class_getSuperclass(below->level) : firstLevel(place, delegate);
    for (; (level = interception_.definingClass(level, selectors.renamed));
         level = runtime.class_getSuperclass(level)) {
        call.level = level;
        call.implementation =
            runtime.method_getImplementation(runtime.class_getInstanceMethod(level, selectors.renamed));
        if (!below || call.implementation != below->implementation) break; // a copy for a subclass has run already
    }

    const std::array<ObjectRef, 2> objects{sender, item};
    const std::span arguments(objects.data(), all[place].arguments);
    const UnderWay underWay(call);
    if (level) // under the name that it was written for
        platform_.messages.call(call.implementation, delegate, selectors.original, arguments);
    else if (!below && passesOn(delegate) && platform_.messages.respondsToSelector(delegate, selectors.original))
        platform_.messages.forwardInvocation(delegate, selectors.original, arguments);
    return !told || (isOwn && !below && !call.isEndless);
}

ClassRef DelegateHooks::firstLevel(std::size_t place, ObjectRef delegate) const {
    auto& runtime = platform_.runtime;
    const auto& selectors = selectors_[place];
    const auto itsClass = runtime.object_getClass(delegate);
    const auto implementation = [&](SelectorRef selector) {
        return runtime.method_getImplementation(runtime.class_getInstanceMethod(itsClass, selector));
    };
    const bool isInPlace = implementation(selectors.original) == implementation(selectors.replacement);
    return isInPlace ? interception_.definingClass(itsClass, selectors.original) : itsClass;
}

bool DelegateHooks::isInterceptedAbove(std::size_t place, ClassRef level) const {
    const auto& selectors = selectors_[place];
    const auto writtenFor = interception_.definingClass(level, selectors.original);
    const auto above = platform_.runtime.class_getSuperclass(writtenFor);
    return platform_.runtime.class_getInstanceMethod(above, selectors.renamed)
           || wasAdded(place, interception_.definingClass(above, selectors.original));
}

bool DelegateHooks::wasAdded(std::size_t place, ClassRef toClass) const {
    return added_.read([&](const auto& classes) { return classes.contains({toClass, all[place].body}); });
}

bool DelegateHooks::passesOn(ObjectRef delegate) const {
    auto& runtime = platform_.runtime;
    const auto root = runtime.objc_getClass("NSObject");
    const auto overrides = [&](Message message) {
        const auto selector = platform_.vocabulary.selector(message);
        return runtime.class_getInstanceMethod(runtime.object_getClass(delegate), selector)
               != runtime.class_getInstanceMethod(root, selector);
    };
    return overrides(Message::forwardInvocation) || overrides(Message::forwardingTargetForSelector);
}

} // namespace tallyfoot
