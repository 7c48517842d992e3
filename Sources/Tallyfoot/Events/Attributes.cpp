#include "Tallyfoot/Events/Attributes.h"

namespace tallyfoot {

Attributes::Attributes(std::initializer_list<Entry> entries) {
    for (const auto& [key, text] : entries) set(key, text);
}

Attributes Attributes::fromTexts(const TextAttributes& texts) {
    Attributes attributes;
    for (const auto& [key, text] : texts)
        if (const auto attribute = fromRawValue<LogAttribute>(key)) attributes.set(*attribute, text);
    return attributes;
}

void Attributes::set(LogAttribute key, std::string_view text) {
    if (!isCase(key)) return;
    texts_[index(key)] = text;
    present_ |= bit(key);
}

void Attributes::set(LogAttribute key, std::string&& text) {
    if (!isCase(key)) return;
    texts_[index(key)] = std::move(text);
    present_ |= bit(key);
}

void Attributes::remove(LogAttribute key) {
    if (!contains(key)) return;
    texts_[index(key)].clear();
    present_ &= ~bit(key);
}

Attributes& Attributes::operator+=(const Attributes& other) {
    other.forEach([this](LogAttribute key, const std::string& text) { set(key, std::string_view(text)); });
    return *this;
}

bool Attributes::operator==(const Attributes& other) const {
    return present_ == other.present_ && texts_ == other.texts_;
}

} // namespace tallyfoot
