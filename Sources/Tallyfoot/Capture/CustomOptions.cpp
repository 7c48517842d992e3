#include "Tallyfoot/Capture/CustomOptions.h"

namespace tallyfoot {

namespace {

// Their addresses are the keys.
constinit char customNamePlace = 0;
constinit char logEnabledPlace = 0;

} // namespace

const void* CustomOptions::customNameKey() noexcept { return &customNamePlace; }

const void* CustomOptions::logEnabledKey() noexcept { return &logEnabledPlace; }

std::string CustomOptions::customName(ObjectRef object) const {
    auto value = runtime_.objc_getAssociatedObject(object, customNameKey());
    auto* text = std::get_if<std::string>(&value);
    return text ? std::move(*text) : std::string();
}

void CustomOptions::setCustomName(ObjectRef object, std::optional<std::string_view> name) const {
    runtime_.objc_setAssociatedObject(object, customNameKey(),
                                      name ? AssociatedValue(std::string(*name)) : AssociatedValue());
}

bool CustomOptions::logEnabled(ObjectRef object) const {
    const auto value = runtime_.objc_getAssociatedObject(object, logEnabledKey());
    const auto* truth = std::get_if<bool>(&value);
    return truth == nullptr || *truth;
}

void CustomOptions::setLogEnabled(ObjectRef object, bool isEnabled) const {
    runtime_.objc_setAssociatedObject(object, logEnabledKey(), AssociatedValue(isEnabled));
}

} // namespace tallyfoot
