// The symbols of methods are local to their files here, and so in no call stack's texts, unless somebody
// has named a function so. But the runtime knows where each method's code begins, and the unwinder where
// the code around an address does.

#include "TallyfootObjC/Binding/CallStack.h"

#include "TallyfootObjC/Support/Text.h"

#include <execinfo.h>
#include <objc/runtime.h>
#include <unwind.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>
#include <vector>

namespace tallyfoot::objc {

namespace {

constexpr int mostFrames = 256;

std::vector<const void*> methodsOf(const std::string& className, std::string_view selectorPrefix) {
    std::vector<const void*> beginnings;
    const Class aClass = objc_lookUpClass(className.c_str());
    if (aClass == Nil) return beginnings;
    unsigned count = 0;
    Method* const methods = class_copyMethodList(aClass, &count);
    for (unsigned index = 0; index < count; ++index)
        if (std::string_view(sel_getName(method_getName(methods[index]))).starts_with(selectorPrefix))
            beginnings.push_back(reinterpret_cast<const void*>(method_getImplementation(methods[index])));
    std::free(methods);
    return beginnings;
}

bool isAnyOnCallStack(const std::vector<const void*>& beginnings) {
    if (beginnings.empty()) return false;
    std::array<void*, mostFrames> frames;
    const int count = ::backtrace(frames.data(), mostFrames);
    return std::any_of(frames.begin(), frames.begin() + count, [&](void* frame) {
        // The address to return to may belong to the function behind: what matters is the call before it.
        const void* begins = _Unwind_FindEnclosingFunction(static_cast<char*>(frame) - 1);
        return std::find(beginnings.begin(), beginnings.end(), begins) != beginnings.end();
    });
}

bool isAmongSymbols(std::string_view marker) {
    NSString* expected = string(marker);
    for (NSString* symbol in [NSThread callStackSymbols])
        if ([symbol rangeOfString:expected].location != NSNotFound) return true;
    return false;
}

} // namespace

bool callStackContains(std::string_view marker) {
    const auto space = marker.find(' ');
    if (space == std::string_view::npos) return isAmongSymbols(marker);
    const auto methods = methodsOf(std::string(marker.substr(0, space)), marker.substr(space + 1));
    return isAnyOnCallStack(methods) || isAmongSymbols(marker);
}

} // namespace tallyfoot::objc
