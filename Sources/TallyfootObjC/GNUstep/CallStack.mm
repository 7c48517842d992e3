// The symbols of methods are local to their files here, and so in no call stack's texts. But the runtime
// knows where each method's code begins, and the unwinder where the code around a frame does. That is
// also much faster than making texts, which matters while a finger drags; and a stack is unwound once.

#include "TallyfootObjC/Binding/CallStack.h"

#include "TallyfootObjC/GNUstep/AllClasses.h"
#include "TallyfootObjC/GNUstep/KnownStacks.h"
#include "TallyfootObjC/Support/Text.h"

#include <dlfcn.h>
#include <objc/runtime.h>
#include <unwind.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tallyfoot::objc {

namespace {

void appendBeginnings(std::vector<Code>& found, Class aClass, std::string_view selectorPrefix) {
    unsigned count = 0;
    Method* const methods = class_copyMethodList(aClass, &count);
    for (unsigned index = 0; index < count; ++index)
        if (std::string_view(sel_getName(method_getName(methods[index]))).starts_with(selectorPrefix))
            found.push_back(reinterpret_cast<Code>(method_getImplementation(methods[index])));
    std::free(methods);
}

// Where the methods begin whose class's name ends so and whose selector begins so.
std::vector<Code> beginnings(std::string_view classSuffix, std::string_view selectorPrefix) {
    std::vector<Code> found;
    for (Class aClass : allClasses())
        if (std::string_view(class_getName(aClass)).ends_with(classSuffix))
            appendBeginnings(found, aClass, selectorPrefix);
    return found;
}

// Functions that bear such a method's symbol. The linker is asked about each function once: a call stack
// has many, and they are the same ones at every move of a finger.
class Symbols {
public:
    explicit Symbols(std::string_view marker) : marker_(marker) {}

    bool contain(Code begins) {
        if (isKnown_.size() > mostKnown) isKnown_.clear();
        const auto [place, isNew] = isKnown_.try_emplace(begins, false);
        if (isNew) place->second = bearsMarker(begins);
        return place->second;
    }

    std::string_view marker() const { return marker_; }

private:
    static constexpr std::size_t mostKnown = 4096;

    bool bearsMarker(Code begins) const {
        Dl_info symbol;
        return ::dladdr(reinterpret_cast<void*>(begins), &symbol) != 0 && symbol.dli_sname != nullptr
               && reinterpret_cast<Code>(symbol.dli_saddr) == begins
               && std::string_view(symbol.dli_sname).find(marker_) != std::string_view::npos;
    }

    std::string marker_;
    std::unordered_map<Code, bool> isKnown_;
};

struct Known {
    Symbols symbols;
    KnownStacks stacks;
};

Known& knownOf(std::string_view marker) {
    thread_local std::vector<Known> all; // one for each marker, of which there are two
    const auto place =
        std::find_if(all.begin(), all.end(), [&](const auto& one) { return one.symbols.marker() == marker; });
    return place == all.end() ? all.emplace_back(Known{Symbols(marker), {}}) : *place;
}

struct Search {
    const std::vector<Code>& beginnings;
    Symbols& symbols;
    const Code* innermost;
    std::vector<Return> returns = {};
    bool isFound = false;
};

// A call pushes the address that it returns to just below where its caller's frame ends. The outermost returns nowhere.
_Unwind_Reason_Code look(_Unwind_Context* frame, void* argument) {
    auto& search = *static_cast<Search*>(argument);
    const auto* const place = reinterpret_cast<const Code*>(_Unwind_GetCFA(frame)) - 1;
    const auto address = static_cast<Code>(_Unwind_GetIP(frame));
    if (place >= search.innermost && address != 0) search.returns.push_back({place, address});
    const auto begins = static_cast<Code>(_Unwind_GetRegionStart(frame));
    search.isFound = std::find(search.beginnings.begin(), search.beginnings.end(), begins) != search.beginnings.end()
                     || search.symbols.contain(begins);
    return search.isFound ? _URC_NORMAL_STOP : _URC_NO_REASON;
}

// Never inlined: where it returns to is the innermost place of all.
[[gnu::noinline]] bool isAmongFrames(std::string_view classSuffix, std::string_view selectorPrefix, Known& known) {
    const auto* const innermost = static_cast<const Code*>(__builtin_dwarf_cfa()) - 1;
    if (const auto answer = known.stacks.answer(innermost)) return *answer;
    const auto expected = beginnings(classSuffix, selectorPrefix);
    Search search{expected, known.symbols, innermost};
    _Unwind_Backtrace(look, &search);
    known.stacks.remember(innermost, std::move(search.returns), search.isFound);
    return search.isFound;
}

const void* imageOf(const void* address) {
    Dl_info image;
    return ::dladdr(address, &image) != 0 ? image.dli_fbase : nullptr;
}

bool isFoundationsOwn(IMP symbolsMethod) {
    static std::atomic<IMP> known = nullptr;
    if (symbolsMethod == known.load(std::memory_order_relaxed)) return true;
    if (imageOf(reinterpret_cast<const void*>(symbolsMethod)) != imageOf((const void*)[NSThread class])) return false;
    known.store(symbolsMethod, std::memory_order_relaxed);
    return true;
}

// Whoever has given the thread another account of its call stack means it.
bool isAmongSymbols(std::string_view marker) {
    const Method method = class_getClassMethod([NSThread class], @selector(callStackSymbols));
    if (method == nullptr || isFoundationsOwn(method_getImplementation(method))) return false;
    NSString* expected = string(marker);
    for (NSString* symbol in [NSThread callStackSymbols])
        if ([symbol rangeOfString:expected].location != NSNotFound) return true;
    return false;
}

} // namespace

bool callStackContains(std::string_view marker) {
    const auto space = marker.find(' ');
    const bool isMethod = space != std::string_view::npos;
    return (isMethod && isAmongFrames(marker.substr(0, space), marker.substr(space + 1), knownOf(marker)))
           || isAmongSymbols(marker);
}

} // namespace tallyfoot::objc
