#pragma once

#include "Tallyfoot/Export.h"

#include <nlohmann/json_fwd.hpp>

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

namespace tallyfoot {

class CustomAttributes;
class CustomArray;

template <class Type>
concept CharacterType = std::same_as<Type, char> || std::same_as<Type, wchar_t> || std::same_as<
    Type, char8_t> || std::same_as<Type, char16_t> || std::same_as<Type, char32_t>;

// One value of a custom dictionary: a text, number, truth value, null, array or dictionary.
class TALLYFOOT_EXPORT CustomValue {
public:
    CustomValue(const char* text); // NOLINT: braces convert, all of these; nullptr is null

    CustomValue(const std::string& text) : CustomValue(std::string_view(text)) {} // NOLINT

    CustomValue(std::string_view text); // NOLINT
    CustomValue(std::nullptr_t);        // NOLINT

    template <std::same_as<bool> Truth>
    CustomValue(Truth truth) : CustomValue(fromTruth(truth)) {} // NOLINT

    template <std::signed_integral Number>

    requires(!CharacterType<Number> && sizeof(Number) <= sizeof(std::int64_t)) CustomValue(Number number)
        : CustomValue(fromInteger(number)) {} // NOLINT

    template <std::unsigned_integral Number>

    requires(!std::same_as<Number, bool> && !CharacterType<Number> && sizeof(Number) <= sizeof(std::uint64_t))
        CustomValue(Number number)
        : CustomValue(fromUnsigned(number)) {} // NOLINT

    template <CharacterType Character>
    CustomValue(Character) = delete; // a text ("A") or a number (65): the caller says which

    template <std::floating_point Number>
    CustomValue(Number number) : CustomValue(fromReal(static_cast<double>(number))) {} // NOLINT

    CustomValue(const CustomArray& array);           // NOLINT
    CustomValue(const CustomAttributes& dictionary); // NOLINT

    template <std::same_as<nlohmann::json> JSON>
    CustomValue(const JSON& value) : CustomValue(fromJSON(value)) {} // NOLINT

    // Its compact JSON text; nothing where it cannot be serialised: NaN, an infinity, ill-formed
    // UTF-8 or more than 512 levels, here or anywhere inside.
    const std::optional<std::string>& text() const noexcept { return text_; }

private:
    CustomValue() = default;
    static CustomValue fromTruth(bool truth);
    static CustomValue fromInteger(std::int64_t number);
    static CustomValue fromUnsigned(std::uint64_t number);
    static CustomValue fromReal(double number);
    static CustomValue fromJSON(const nlohmann::json& value);

    std::optional<std::string> text_;
    int depth_ = 0;
    friend class CustomAttributes;
    friend class CustomArray;
};

// An array inside custom data: {"tags", CustomArray{"new", 7}}. An array of nothing but one array is
// CustomArray{CustomValue(CustomArray{…})}: without the name of the value in between compilers differ
// in whether that is a copy.
class TALLYFOOT_EXPORT CustomArray {
public:
    CustomArray(std::initializer_list<CustomValue> values); // NOLINT

private:
    std::optional<std::string> text_;
    int depth_ = 1;
    friend class CustomValue;
};

// The custom data of an event: a dictionary in braces, {{"sku", "A-1"}, {"quantity", 2}}, a
// nlohmann::json object, or none. Nested ones name their type: {"at", CustomAttributes{{"x", 1}}}.
// A dictionary that cannot be serialised is dropped and its event kept; one without members is not
// the same as none. Of a key given twice the first value counts.
class TALLYFOOT_EXPORT CustomAttributes {
public:
    struct Member {
        std::string_view key;
        CustomValue value;
    };

    CustomAttributes(std::nullopt_t) noexcept {} // NOLINT: no custom data at all

    CustomAttributes() : CustomAttributes(std::initializer_list<Member>{}) {} // an empty dictionary

    CustomAttributes(std::initializer_list<Member> members); // NOLINT: braces convert

    template <std::same_as<nlohmann::json> JSON>
    CustomAttributes(const JSON& dictionary) : CustomAttributes(fromJSON(dictionary)) {} // NOLINT

    // The dictionary as compact JSON; nothing when there is none or it cannot be serialised.
    const std::optional<std::string>& text() const noexcept { return text_; }

private:
    static CustomAttributes fromJSON(const nlohmann::json& dictionary); // anything but an object is none

    std::optional<std::string> text_;
    int depth_ = 1;
    friend class CustomValue;
};

} // namespace tallyfoot
