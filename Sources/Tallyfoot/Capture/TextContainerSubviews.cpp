#include "Tallyfoot/Capture/TextContainerSubviews.h"

#include "Tallyfoot/Capture/SubviewsContainer.h"
#include "Tallyfoot/Capture/TextContainer.h"

namespace tallyfoot {

namespace {

class Search {
public:
    // Whether it goes no further: a text was found, or enough views were looked at.
    bool ends(const PlatformObject& view, int depth) {
        if (--viewsLeft_ < 0) return true;
        if (const auto container = TextContainer::of(view)) {
            if (container->isSecure()) return false;
            found = container->text();
        }
        return !found.empty() || endsBelow(view, depth);
    }

    bool endsBelow(const PlatformObject& view, int depth) {
        if (depth == TextContainerSubviews::mostDepth) return false;
        return SubviewsContainer(view).any([&](const PlatformObject& subview) { return ends(subview, depth + 1); });
    }

    std::string found;

private:
    int viewsLeft_ = TextContainerSubviews::mostViews;
};

} // namespace

std::string TextContainerSubviews::text() const {
    Search search;
    search.ends(view_, 0);
    return search.found;
}

std::string TextContainerSubviews::subviewsText() const {
    Search search;
    search.endsBelow(view_, 0);
    return search.found;
}

std::string TextContainerSubviews::cellText() const {
    auto text = view_.object(Message::textLabel).text(Message::text).value_or(std::string());
    return text.empty() ? subviewsText() : text;
}

} // namespace tallyfoot
