#pragma once

#include "Tallyfoot/Capture/PlatformObject.h"

namespace tallyfoot {

// A view that contains others.
class SubviewsContainer {
public:
    explicit SubviewsContainer(const PlatformObject& view) : view_(view), subviews_(view.object(Message::subviews)) {}

    // Calls block(PlatformObject) for each of its subviews, in their order, until one gives true.
    template <class Block>
    bool any(Block&& block) const {
        auto& messages = view_.platform().messages;
        const auto count = messages.count(subviews_.reference());
        for (std::size_t index = 0; index < count; ++index) {
            const PlatformObject subview(view_.platform(), messages.objectAtIndex(subviews_.reference(), index));
            if (subview && block(subview)) return true;
        }
        return false;
    }

private:
    PlatformObject view_;
    PlatformObject subviews_;
};

} // namespace tallyfoot
