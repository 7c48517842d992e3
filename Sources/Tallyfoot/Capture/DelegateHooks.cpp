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
    const Call* outer;

    bool isSame(const Call& other) const {
        return body == other.body && delegate == other.delegate && sender == other.sender && item == other.item;
    }
};

thread_local constinit const Call* innermost = nullptr;

class UnderWay {
public:
    explicit UnderWay(const Call& call) { innermost = &call; }
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
    if (!interception_.hasMethod(delegate, selectors.original)
        && platform_.messages.respondsToSelector(delegate, selectors.original))
        passingOn_.modify([&](auto& classes) { classes.emplace(delegateClass, all[place].body); });
    interception_.addInterceptMethod(selectors.original, selectors.replacement, delegateClass, selectors.renamed,
                                     all[place].types);
}

bool DelegateHooks::forward(MethodBody body, ObjectRef delegate, ObjectRef sender, ObjectRef item) {
    const auto place = placeOf(body);
    if (place == all.size()) return false;
    const auto& selectors = selectors_[place];
    Call call{body, delegate, sender, item, {}, {}, innermost};
    const auto* same = innermost;
    while (same && !call.isSame(*same)) same = same->outer;

    auto& runtime = platform_.runtime;
    auto level = same ? runtime.class_getSuperclass(same->level) : runtime.object_getClass(delegate);
    for (; (level = interception_.definingClass(level, selectors.renamed));
         level = runtime.class_getSuperclass(level)) {
        call.level = level;
        call.implementation =
            runtime.method_getImplementation(runtime.class_getInstanceMethod(level, selectors.renamed));
        if (!same || call.implementation != same->implementation) break; // a copy for a subclass has run already
    }

    const std::array<ObjectRef, 2> objects{sender, item};
    const std::span arguments(objects.data(), all[place].arguments);
    const UnderWay underWay(call);
    if (level) // under the name that it was written for
        platform_.messages.call(call.implementation, delegate, selectors.original, arguments);
    else if (!same && passesOn(place, delegate))
        platform_.messages.forwardInvocation(delegate, selectors.original, arguments);
    return !same;
}

bool DelegateHooks::passesOn(std::size_t place, ObjectRef delegate) const {
    const bool isKnown = passingOn_.read([&](const auto& classes) {
        return !classes.empty()
               && anyClassOf(platform_.runtime, platform_.runtime.object_getClass(delegate), [&](ClassRef one) {
                      return classes.contains({one, all[place].body});
                  });
    });
    return isKnown && platform_.messages.respondsToSelector(delegate, selectors_[place].original);
}

} // namespace tallyfoot
