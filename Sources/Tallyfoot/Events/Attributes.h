#pragma once

#include "Tallyfoot/Events/LogAttribute.h"
#include "Tallyfoot/Export.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace tallyfoot {

// String-keyed attributes, as they come from callers that know only the record's keys.
using TextAttributes = std::map<std::string, std::string, std::less<>>;

// A dictionary from LogAttribute to text: a small value with one place per case, so that nothing
// is allocated beyond the texts. Enumerates in declaration order. A key that is none of the cases is
// dropped.
class TALLYFOOT_EXPORT Attributes {
public:
    // One in braces: {LogAttribute::evtLabel, "Buy"}. A missing text (nullptr) is an empty one.
    struct Entry {
        Entry(LogAttribute attribute, std::string_view value) : key(attribute), text(value) {}

        Entry(LogAttribute attribute, const char* value) : key(attribute), text(value ? value : "") {}

        LogAttribute key;
        std::string_view text;
    };

    Attributes() = default;
    Attributes(std::initializer_list<Entry> entries); // NOLINT: braces convert; on a key given twice the later one wins

    // Keys that are no record key are dropped; values are kept as they are.
    static Attributes fromTexts(const TextAttributes& texts);

    bool empty() const noexcept { return present_ == 0; }

    std::size_t size() const noexcept { return static_cast<std::size_t>(std::popcount(present_)); }

    bool contains(LogAttribute key) const noexcept { return isCase(key) && (present_ & bit(key)) != 0; }

    // The value, or nullptr when there is none.
    const std::string* find(LogAttribute key) const noexcept { return contains(key) ? &texts_[index(key)] : nullptr; }

    void set(LogAttribute key, std::string_view text);
    void set(LogAttribute key, std::string&& text);

    void set(LogAttribute key, const char* text) { set(key, std::string_view(text ? text : "")); }

    void remove(LogAttribute key);

    // Adds every entry of the other; on a key in both the other's value wins.
    Attributes& operator+=(const Attributes& other);

    // Calls block(LogAttribute, const std::string&) for each entry.
    template <class Block>
    void forEach(Block&& block) const {
        for (std::uint32_t rest = present_; rest != 0; rest &= rest - 1) {
            const auto place = static_cast<std::size_t>(std::countr_zero(rest));
            block(static_cast<LogAttribute>(place), texts_[place]);
        }
    }

    bool operator==(const Attributes& other) const;

private:
    // A number that a caller has cast may name no place.
    static constexpr bool isCase(LogAttribute key) noexcept { return index(key) < logAttributeTexts.size(); }

    static constexpr std::size_t index(LogAttribute key) noexcept { return static_cast<std::size_t>(key); }

    static constexpr std::uint32_t bit(LogAttribute key) noexcept { return std::uint32_t{1} << index(key); }

    std::uint32_t present_ = 0;
    std::array<std::string, logAttributeTexts.size()> texts_; // an absent entry's text is empty
};

} // namespace tallyfoot
