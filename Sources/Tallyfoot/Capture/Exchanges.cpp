#include "Tallyfoot/Capture/Exchanges.h"

namespace tallyfoot {

namespace {

constexpr std::array classesWithOptions{"UIView", "UIViewController", "UIBarItem", "UIGestureRecognizer"};
constexpr std::array options{MethodBody::customName, MethodBody::setCustomName, MethodBody::logEnabled,
                             MethodBody::setLogEnabled};

// Every object may become somebody's delegate, so these are every object's.
constexpr const char* rootClass = "NSObject";
constexpr std::array callbacks{
    MethodBody::tableViewSelection,   MethodBody::collectionViewSelection, MethodBody::tabBarSelection,
    MethodBody::searchBarSearch,      MethodBody::searchBarBookmark,       MethodBody::searchBarCancel,
    MethodBody::searchBarResultsList, MethodBody::searchResultsUpdate,     MethodBody::endOfDeceleration};

} // namespace

void Exchanges::addMethods() const {
    for (const auto* className : classesWithOptions)
        for (const auto option : options) add(option, className);
    for (const auto& one : all) add(one.replacement, one.className);
    add(MethodBody::gestureAction, "UIGestureRecognizer");
    for (const auto callback : callbacks) add(callback, rootClass);
}

void Exchanges::add(MethodBody body, const char* className) const {
    auto& runtime = platform_.runtime;
    const auto toClass = runtime.objc_getClass(className);
    const auto code = platform_.bodies.code(body);
    if (toClass && code.implementation)
        runtime.class_addMethod(toClass, runtime.sel_registerName(selectorName(body)), code.implementation, code.types);
}

void Exchanges::exchange() const {
    auto& runtime = platform_.runtime;
    for (const auto& one : all)
        interception_.swizzle(runtime.sel_registerName(one.original),
                              runtime.sel_registerName(selectorName(one.replacement)),
                              runtime.objc_getClass(one.className));
}

} // namespace tallyfoot
