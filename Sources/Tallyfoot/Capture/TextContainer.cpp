#include "Tallyfoot/Capture/TextContainer.h"

namespace tallyfoot {

std::optional<TextContainer> TextContainer::of(const PlatformObject& view) {
    auto& runtime = view.platform().runtime;
    const bool bearsText = anyClassOf(runtime, runtime.object_getClass(view.reference()), [&](ClassRef one) {
        const std::string_view name = runtime.class_getName(one);
        return name == "UILabel" || name == "UITextField";
    });
    return bearsText ? std::optional(TextContainer(view)) : std::nullopt;
}

bool TextContainer::isSecure() const { return view_.truth(Message::isSecureTextEntry); }

std::string TextContainer::text() const { return view_.text(Message::text).value_or(std::string()); }

} // namespace tallyfoot
