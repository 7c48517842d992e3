#include "Tallyfoot/Capture/Classification.h"

#include <algorithm>

namespace tallyfoot {

namespace {

int rank(ITFClass itfClass) { return itfClass == ITFClass::alert ? -1 : static_cast<int>(itfClass); }

} // namespace

std::optional<ITFClass> classify(const PlatformObject& sender) {
    if (!sender || sender.isClass()) return std::nullopt;
    if (sender.className() == rawValue(ITFClass::tableviewSwipeAction)) return ITFClass::tableviewSwipeAction;

    std::optional<ITFClass> first;
    auto& runtime = sender.platform().runtime;
    anyClassOf(runtime, runtime.object_getClass(sender.reference()), [&](ClassRef one) {
        const auto itfClass = fromRawValue<ITFClass>(runtime.class_getName(one));
        if (itfClass && itfClass != ITFClass::tableviewSwipeAction && (!first || rank(*itfClass) < rank(*first)))
            first = itfClass;
        return false;
    });
    return first;
}

} // namespace tallyfoot
