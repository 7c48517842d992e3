#include "Tallyfoot/Events/GeneratedAttributes.h"

#include "Tallyfoot/Events/DateDescription.h"

#include <chrono>

namespace tallyfoot {

void GeneratedAttributes::addTo(Attributes& attributes, std::string_view screenTitle,
                                const std::optional<std::string>& pageParent) const {
    if (!attributes.contains(LogAttribute::evtLclTimestamp))
        attributes.set(LogAttribute::evtLclTimestamp,
                       dateDescription(std::chrono::floor<std::chrono::seconds>(clock_.now())));
    if (!attributes.contains(LogAttribute::evtId)) attributes.set(LogAttribute::evtId, random_.uuidString());
    if (!attributes.contains(LogAttribute::screenTitle)) attributes.set(LogAttribute::screenTitle, screenTitle);
    if (!attributes.contains(LogAttribute::window))
        attributes.set(LogAttribute::window, pageParent ? std::string_view(*pageParent) : std::string_view("iOS"));
}

} // namespace tallyfoot
