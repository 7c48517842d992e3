#pragma once

#include <functional>
#include <memory>
#include <ostream>

namespace tallyfoot::testing {

// One way to come by an interface, under the name that its tests bear.
template <class Interface>
struct Implementation {
    const char* name;
    std::function<std::shared_ptr<Interface>()> make;

    friend std::ostream& operator<<(std::ostream& stream, const Implementation& one) { return stream << one.name; }
};

inline constexpr auto nameOfImplementation = [](const auto& instance) { return instance.param.name; };

} // namespace tallyfoot::testing
