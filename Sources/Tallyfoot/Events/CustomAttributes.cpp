#include "Tallyfoot/Events/CustomAttributes.h"

#include "Tallyfoot/Events/JSON.h"
#include "Tallyfoot/Events/JSONText.h"

#include <algorithm>
#include <vector>

namespace tallyfoot {

CustomValue::CustomValue(std::string_view text) : text_(std::in_place) {
    if (!json::appendQuoted(*text_, text)) text_.reset();
}

CustomValue::CustomValue(const char* text)
    : CustomValue(text == nullptr ? CustomValue(nullptr) : CustomValue(std::string_view(text))) {}

CustomValue::CustomValue(std::nullptr_t) : text_("null") {}

CustomValue::CustomValue(const CustomArray& array) : text_(array.text_), depth_(array.depth_) {}

CustomValue::CustomValue(const CustomAttributes& dictionary) : text_(dictionary.text_), depth_(dictionary.depth_) {}

CustomValue CustomValue::fromTruth(bool truth) {
    CustomValue value;
    value.text_ = truth ? "true" : "false";
    return value;
}

CustomValue CustomValue::fromInteger(std::int64_t number) {
    CustomValue value;
    json::appendInteger(value.text_.emplace(), number);
    return value;
}

CustomValue CustomValue::fromUnsigned(std::uint64_t number) {
    CustomValue value;
    json::appendUnsigned(value.text_.emplace(), number);
    return value;
}

CustomValue CustomValue::fromReal(double number) {
    CustomValue value;
    if (!json::appendReal(value.text_.emplace(), number)) value.text_.reset();
    return value;
}

CustomValue CustomValue::fromJSON(const nlohmann::json& json) {
    CustomValue value;
    value.text_ = json::write(json, value.depth_);
    return value;
}

CustomArray::CustomArray(std::initializer_list<CustomValue> values) : text_("[") {
    for (const CustomValue& value : values) {
        depth_ = std::max(depth_, value.depth_ + 1);
        if (!value.text_ || depth_ > json::deepestLevel) {
            text_.reset();
            return;
        }
        if (text_->size() > 1) *text_ += ',';
        *text_ += *value.text_;
    }
    *text_ += ']';
}

CustomAttributes::CustomAttributes(std::initializer_list<Member> members) : text_("{") {
    std::vector<std::string_view> keys;
    keys.reserve(members.size());
    for (const auto& [key, value] : members) {
        if (std::find(keys.begin(), keys.end(), key) != keys.end()) continue;
        keys.push_back(key);
        depth_ = std::max(depth_, value.depth_ + 1);
        if (text_->size() > 1) *text_ += ',';
        if (!json::appendQuoted(*text_, key) || !value.text_ || depth_ > json::deepestLevel) {
            text_.reset();
            return;
        }
        *text_ += ':';
        *text_ += *value.text_;
    }
    *text_ += '}';
}

CustomAttributes CustomAttributes::fromJSON(const nlohmann::json& dictionary) {
    CustomAttributes attributes = std::nullopt;
    attributes.text_ = json::write(dictionary, attributes.depth_);
    if (attributes.text_ && !attributes.text_->starts_with('{')) attributes.text_.reset();
    return attributes;
}

} // namespace tallyfoot
