#pragma once

#include "Tallyfoot/Capture/Held.h"
#include "Tallyfoot/Capture/PlatformObject.h"

namespace tallyfoot {

// A view that contains others.
class SubviewsContainer {
public:
    explicit SubviewsContainer(const PlatformObject& view)
        : platform_(view.platform()), subviews_(view.object(Message::subviews).reference()) {}

    // Calls block(PlatformObject) for each of its subviews, in their order, until one gives true. What the
    // block asks them may run the host's code, which may take them away.
    template <class Block>
    bool any(Block&& block) const {
        const Held subviewsHeld(platform_.runtime, subviews_);
        const auto count = platform_.messages.count(subviews_);
        for (std::size_t index = 0; index < count; ++index) {
            const PlatformObject subview(platform_, platform_.messages.objectAtIndex(subviews_, index));
            const Held subviewHeld(platform_.runtime, subview.reference());
            if (subview && block(subview)) return true;
        }
        return false;
    }

private:
    const CapturePlatform& platform_;
    ObjectRef subviews_;
};

} // namespace tallyfoot
