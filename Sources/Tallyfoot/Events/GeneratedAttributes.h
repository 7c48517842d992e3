#pragma once

#include "Tallyfoot/Events/Attributes.h"
#include "Tallyfoot/Platform/Clock.h"
#include "Tallyfoot/Platform/Random.h"

#include <optional>
#include <string>
#include <string_view>

namespace tallyfoot {

// What every event gets without its caller's doing: the time in UTC ("yyyy-MM-dd HH:mm:ss +0000"),
// a fresh identifier, the current screen's title and the page parent. Any thread.
class GeneratedAttributes {
public:
    GeneratedAttributes(const Clock& clock, Random& random) : clock_(clock), random_(random) {}

    // Fills in what is absent; what the caller set stays.
    void addTo(Attributes& attributes, std::string_view screenTitle,
               const std::optional<std::string>& pageParent) const;

private:
    const Clock& clock_;
    Random& random_;
};

} // namespace tallyfoot
