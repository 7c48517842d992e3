#include "Tallyfoot/Platform/Posix/XMLPropertyListValues.h"

#include <unicode/utf8.h>

#include <array>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <utility>

namespace tallyfoot::xmlpropertylist {

namespace {

using Value = std::optional<PropertyList>;

std::string_view trimmed(std::string_view text) {
    const auto start = text.find_first_not_of(whiteSpace);
    return start == text.npos ? "" : text.substr(start, text.find_last_not_of(whiteSpace) - start + 1);
}

// The whole of the text as a number, whatever the locale.
template <class Number, class... Base>
std::optional<Number> number(std::string_view text, Base... base) {
    Number number{};
    const auto* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number, base...);
    return read.ec == std::errc() && read.ptr == end ? std::optional(number) : std::nullopt;
}

bool appendReferred(std::string& into, std::string_view name) {
    constexpr std::array<std::pair<std::string_view, char>, 5> named{
        {{"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}}};
    for (const auto& [known, character] : named)
        if (name == known) {
            into += character;
            return true;
        }
    if (!name.starts_with('#')) return false;
    const bool isHexadecimal = name.starts_with("#x");
    const auto codePoint = number<std::uint32_t>(name.substr(isHexadecimal ? 2 : 1), isHexadecimal ? 16 : 10);
    if (!codePoint || *codePoint == 0) return false;
    std::array<char, U8_MAX_LENGTH> bytes{};
    std::size_t length = 0;
    bool isNoCharacter = false;
    U8_APPEND(bytes, length, bytes.size(), *codePoint, isNoCharacter);
    into.append(bytes.data(), length);
    return !isNoCharacter;
}

Value integer(std::string_view text) {
    constexpr auto bound = std::uint64_t{1} << 63U;
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+')) text.remove_prefix(1);
    const bool isHexadecimal = text.starts_with("0x") || text.starts_with("0X");
    if (isHexadecimal) text.remove_prefix(2);
    const auto magnitude = number<std::uint64_t>(text, isHexadecimal ? 16 : 10);
    if (!magnitude || (isNegative && *magnitude > bound)) return std::nullopt;
    if (!isNegative && *magnitude >= bound) return PropertyList{static_cast<double>(*magnitude)};
    return PropertyList{static_cast<std::int64_t>(isNegative ? 0 - *magnitude : *magnitude)};
}

Value real(std::string_view text) {
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    const auto value = number<double>(text);
    return value ? Value{{*value}} : std::nullopt;
}

// "2001-01-02T00:00:00Z", as seconds since 2001.
Value date(std::string_view text) {
    using namespace std::chrono;
    constexpr std::string_view form = "0000-00-00T00:00:00Z";
    if (text.size() != form.size()) return std::nullopt;
    for (std::size_t at = 0; at < form.size(); ++at) {
        const bool isDigit = text[at] >= '0' && text[at] <= '9';
        if (form[at] == '0' ? !isDigit : text[at] != form[at]) return std::nullopt;
    }
    const auto field = [text](std::size_t at) { return *number<unsigned>(text.substr(at, 2)); };
    const auto century = static_cast<int>(field(0));
    const year_month_day day(year(century * 100 + static_cast<int>(field(2))), month(field(5)),
                             std::chrono::day(field(8)));
    if (!day.ok() || field(11) > 23 || field(14) > 59 || field(17) > 59) return std::nullopt;
    const auto time = sys_days(day) + hours(field(11)) + minutes(field(14)) + seconds(field(17));
    return PropertyList{duration<double>(time - sys_days(year(2001) / 1 / 1)).count()};
}

// Base 64, anywhere broken into lines.
Value data(std::string_view text) {
    constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    PropertyList::Data data;
    std::size_t digits = 0;
    std::size_t padding = 0;
    std::uint32_t bits = 0;
    for (const char character : text) {
        if (whiteSpace.find(character) != whiteSpace.npos) continue;
        if (character == '=') {
            ++padding;
            continue;
        }
        const auto digit = alphabet.find(character);
        if (digit == alphabet.npos || padding > 0) return std::nullopt;
        bits = bits << 6U | static_cast<std::uint32_t>(digit);
        if (++digits % 4 != 1) data.bytes += static_cast<char>(bits >> (6 - 2 * ((digits - 1) % 4)) & 0xFFU);
    }
    if ((digits + padding) % 4 != 0 || padding > 2) return std::nullopt;
    return PropertyList{std::move(data)};
}

} // namespace

bool appendUnescaped(std::string& into, std::string_view text) {
    for (auto at = text.find('&'); at != text.npos; at = text.find('&')) {
        const auto end = text.find(';', at);
        if (end == text.npos) return false;
        into += text.substr(0, at);
        if (!appendReferred(into, text.substr(at + 1, end - at - 1))) return false;
        text.remove_prefix(end + 1);
    }
    into += text;
    return true;
}

std::optional<PropertyList> scalar(std::string_view element, std::string_view content) {
    if (element == "data") return data(content);
    const auto word = trimmed(content);
    if (element == "integer") return integer(word);
    if (element == "real") return real(word);
    if (element == "date") return date(word);
    if ((element == "true" || element == "false") && word.empty()) return PropertyList{element == "true"};
    return std::nullopt;
}

} // namespace tallyfoot::xmlpropertylist
