#include "TallyfootObjC/Binding/LiveBodies.h"

#include "TallyfootObjC/Binding/Binding.h"
#include "TallyfootObjC/Binding/LiveObjects.h"
#include "TallyfootObjC/Binding/Messenger.h"
#include "TallyfootObjC/Support/Text.h"

#include <cstdint>
#include <cstring>
#include <string>

namespace tallyfoot::objc {

namespace {

SEL selectorOf(MethodBody body) { return sel_registerName(selectorName(body)); }

// --- Options

id customName(id self, SEL) { return string(capture().customName(reference(self))); }

void setCustomName(id self, SEL, id name) { capture().setCustomName(reference(self), optionalText(name)); }

BOOL logEnabled(id self, SEL) { return capture().logEnabled(reference(self)) ? YES : NO; }

void setLogEnabled(id self, SEL, BOOL isEnabled) { capture().setLogEnabled(reference(self), isEnabled != NO); }

// --- In the place of the platform's own: what was there goes by the body's selector now

id initWithTarget(id self, SEL, id target, SEL action) {
    static const SEL forwarded = selectorOf(MethodBody::initWithTarget);
    return live(capture().swizzle_initWithTarget([&] { return reference(send<id>(self, forwarded, target, action)); }));
}

BOOL sendAction(id self, SEL, SEL action, id target, id sender, id event) {
    static const SEL forwarded = selectorOf(MethodBody::sendAction);
    return capture().swizzledSendAction(
               reference(action), reference(sender),
               [&] { return send<BOOL>(self, forwarded, action, target, sender, event) != NO; })
               ? YES
               : NO;
}

void viewWillAppear(id self, SEL, BOOL) { capture().swizzledViewWillAppear(reference(self)); }

void viewWillDisappear(id self, SEL, BOOL) { capture().swizzledViewWillDisappear(reference(self)); }

template <MethodBody setter>
void setDelegate(id self, SEL, id delegate) {
    capture().swizzledSetter(setter, reference(self), reference(delegate));
}

// --- Added

void gestureAction(id self, SEL, id) { capture().swizzleGestureAction(reference(self)); }

template <MethodBody callback>
void told(id self, SEL, id sender) {
    capture().swizzledCallback(callback, reference(self), reference(sender));
}

// Selections are added to delegates with an encoding that calls their item an int. Who passes one on by that
// encoding, as proxies do, hands over the lower half of the item's address, extended. Nothing lies there.
bool isHalfAnAddress(id item, id sender) {
    const auto upperHalf = [](id object) { return std::int64_t{reinterpret_cast<std::intptr_t>(object)} >> 32; };
    return item != nil && upperHalf(sender) != 0 && (upperHalf(item) == 0 || upperHalf(item) == -1);
}

template <MethodBody callback>
void toldOfItem(id self, SEL, id sender, id item) {
    if (isHalfAnAddress(item, sender)) item = nil;
    capture().swizzledCallback(callback, reference(self), reference(sender), reference(item));
}

template <class Function>
MethodBodies::Code code(Function* function, const char* types) {
    return {{reinterpret_cast<Implementation>(function)}, types};
}

// With a truth value in the place of "?", which differs from platform to platform.
const char* withTruth(std::string types) {
    types.replace(types.find('?'), 1, @encode(BOOL));
    return ::strdup(types.c_str()); // a few, kept as long as the process
}

} // namespace

MethodBodies::Code LiveBodies::code(MethodBody body) {
    static const char* const truth = withTruth("?@:");
    static const char* const setTruth = withTruth("v@:?");
    static const char* const action = withTruth("?@::@@@");
    switch (body) {
    case MethodBody::customName: return objc::code(customName, "@@:");
    case MethodBody::setCustomName: return objc::code(setCustomName, "v@:@");
    case MethodBody::logEnabled: return objc::code(logEnabled, truth);
    case MethodBody::setLogEnabled: return objc::code(setLogEnabled, setTruth);
    case MethodBody::initWithTarget: return objc::code(initWithTarget, "@@:@:");
    case MethodBody::gestureAction: return objc::code(gestureAction, "v@:@");
    case MethodBody::sendAction: return objc::code(sendAction, action);
    case MethodBody::viewWillAppear: return objc::code(viewWillAppear, setTruth);
    case MethodBody::viewWillDisappear: return objc::code(viewWillDisappear, setTruth);
    case MethodBody::scrollViewDelegate: return objc::code(setDelegate<MethodBody::scrollViewDelegate>, "v@:@");
    case MethodBody::tableViewDelegate: return objc::code(setDelegate<MethodBody::tableViewDelegate>, "v@:@");
    case MethodBody::tabBarDelegate: return objc::code(setDelegate<MethodBody::tabBarDelegate>, "v@:@");
    case MethodBody::collectionViewSource: return objc::code(setDelegate<MethodBody::collectionViewSource>, "v@:@");
    case MethodBody::searchBarDelegate: return objc::code(setDelegate<MethodBody::searchBarDelegate>, "v@:@");
    case MethodBody::searchControllerUpdater:
        return objc::code(setDelegate<MethodBody::searchControllerUpdater>, "v@:@");
    case MethodBody::tableViewSelection: return objc::code(toldOfItem<MethodBody::tableViewSelection>, "v@:@@");
    case MethodBody::collectionViewSelection:
        return objc::code(toldOfItem<MethodBody::collectionViewSelection>, "v@:@@");
    case MethodBody::tabBarSelection: return objc::code(toldOfItem<MethodBody::tabBarSelection>, "v@:@@");
    case MethodBody::searchBarSearch: return objc::code(told<MethodBody::searchBarSearch>, "v@:@");
    case MethodBody::searchBarBookmark: return objc::code(told<MethodBody::searchBarBookmark>, "v@:@");
    case MethodBody::searchBarCancel: return objc::code(told<MethodBody::searchBarCancel>, "v@:@");
    case MethodBody::searchBarResultsList: return objc::code(told<MethodBody::searchBarResultsList>, "v@:@");
    case MethodBody::searchResultsUpdate: return objc::code(told<MethodBody::searchResultsUpdate>, "v@:@");
    case MethodBody::endOfDeceleration: return objc::code(told<MethodBody::endOfDeceleration>, "v@:@");
    }
    return {};
}

} // namespace tallyfoot::objc
