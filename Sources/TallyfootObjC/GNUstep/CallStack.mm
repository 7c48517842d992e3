// The symbols of methods are local to their files here, and so in no call stack's texts. But the runtime
// knows where each method's code begins, and the unwinder where the code around a frame does. That is
// also much faster than making texts, which matters while a finger drags.

#include "TallyfootObjC/Binding/CallStack.h"

#include "TallyfootObjC/Support/Text.h"

#include <dlfcn.h>
#include <objc/runtime.h>
#include <unwind.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace tallyfoot::objc {

namespace {

using Code = std::uintptr_t;

// Where the class's methods begin whose selectors begin so; and functions that bear such a method's symbol.
std::vector<Code> beginnings(const std::string& className, std::string_view selectorPrefix) {
    std::vector<Code> found;
    const Class aClass = objc_lookUpClass(className.c_str());
    if (aClass == Nil) return found;
    const std::string prefix = "-[" + className + ' ';
    unsigned count = 0;
    Method* const methods = class_copyMethodList(aClass, &count);
    for (unsigned index = 0; index < count; ++index) {
        const std::string selector = sel_getName(method_getName(methods[index]));
        if (!selector.starts_with(selectorPrefix)) continue;
        found.push_back(reinterpret_cast<Code>(method_getImplementation(methods[index])));
        if (void* const named = ::dlsym(RTLD_DEFAULT, (prefix + selector + ']').c_str()))
            found.push_back(reinterpret_cast<Code>(named));
    }
    std::free(methods);
    return found;
}

struct Search {
    const std::vector<Code>& beginnings;
    bool isFound = false;
};

_Unwind_Reason_Code look(_Unwind_Context* frame, void* argument) {
    auto& search = *static_cast<Search*>(argument);
    const auto begins = static_cast<Code>(_Unwind_GetRegionStart(frame));
    search.isFound = std::find(search.beginnings.begin(), search.beginnings.end(), begins) != search.beginnings.end();
    return search.isFound ? _URC_NORMAL_STOP : _URC_NO_REASON;
}

IMP symbolsMethod() {
    // By name: while this library is loaded, its own references to classes and selectors are not yet in place.
    const Method method = class_getClassMethod(objc_lookUpClass("NSThread"), sel_registerName("callStackSymbols"));
    return method ? method_getImplementation(method) : nullptr;
}

IMP foundationsOwn = nullptr;

__attribute__((constructor)) void rememberFoundationsOwn() { foundationsOwn = symbolsMethod(); }

// Whoever has given the thread another account of its call stack means it.
bool isAmongSymbols(std::string_view marker) {
    if (symbolsMethod() == foundationsOwn) return false;
    NSString* expected = string(marker);
    for (NSString* symbol in [NSThread callStackSymbols])
        if ([symbol rangeOfString:expected].location != NSNotFound) return true;
    return false;
}

} // namespace

bool callStackContains(std::string_view marker) {
    const auto space = marker.find(' ');
    if (space == std::string_view::npos) return isAmongSymbols(marker);
    const auto expected = beginnings(std::string(marker.substr(0, space)), marker.substr(space + 1));
    Search search{expected};
    if (!expected.empty()) _Unwind_Backtrace(look, &search);
    return search.isFound || isAmongSymbols(marker);
}

} // namespace tallyfoot::objc
