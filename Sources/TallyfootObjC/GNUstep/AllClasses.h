#pragma once

#include <objc/runtime.h>

#include <cstddef>
#include <vector>

namespace tallyfoot::objc {

// Those that the runtime knows by now. None is initialised by the question.
inline std::vector<Class> allClasses() {
    std::vector<Class> classes;
    for (int count = objc_getClassList(nullptr, 0); static_cast<std::size_t>(count) > classes.size();) {
        classes.resize(static_cast<std::size_t>(count));
        count = objc_getClassList(classes.data(), count);
        if (static_cast<std::size_t>(count) < classes.size()) classes.resize(static_cast<std::size_t>(count));
    }
    return classes;
}

} // namespace tallyfoot::objc
