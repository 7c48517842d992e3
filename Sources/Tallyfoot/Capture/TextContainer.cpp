#include "Tallyfoot/Capture/TextContainer.h"

namespace tallyfoot {

std::optional<TextContainer> TextContainer::of(const PlatformObject& view) {
    auto& runtime = view.platform().runtime;
    const bool bearsText = anyClassOf(runtime, runtime.object_getClass(view.reference()), [&](ClassRef one) {
        const std::string_view name = runtime.class_getName(one);
        return name == "UILabel" || name == "UITextField";
    });
    if (!bearsText || view.truth(Message::isSecureTextEntry)) return std::nullopt;
    return TextContainer(view);
}

std::string TextContainer::text() const { return view_.text(Message::text).value_or(std::string()); }

} // namespace tallyfoot
