#include "TallyfootObjC/Support/Dictionaries.h"

#include "TallyfootObjC/Support/Guard.h"
#include "TallyfootObjC/Support/Text.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <utility>

namespace tallyfoot::objc {

namespace {

using nlohmann::json;

// Below this a dictionary is not serialised anyway; and one that holds itself ends here.
constexpr int mostLevels = 512;

bool convert(id value, json& into, int level);

// A truth value is one of two shared objects on either platform; by its type it could be a number.
bool isTruth(NSNumber* number) {
    return number == [NSNumber numberWithBool:YES] || number == [NSNumber numberWithBool:NO];
}

// A whole number may come with an exponent, which JSON's readers take for a fraction.
std::string withoutExponent(const std::string& number) {
    const auto mark = number.find('E');
    if (mark == std::string::npos) return number;
    const auto point = std::min(number.find('.'), mark);
    const auto decimals = point < mark ? number.substr(point + 1, mark - point - 1) : "";
    const auto exponent = std::strtoul(number.c_str() + mark + 1, nullptr, 10); // beyond all digits for a negative one
    if (exponent < decimals.size() || exponent > std::numeric_limits<std::uint64_t>::digits10) return number;
    return number.substr(0, point) + decimals + std::string(exponent - decimals.size(), '0');
}

bool convertDecimal(NSNumber* number, json& into) {
    into = json::parse(withoutExponent(text([number description])), nullptr, false);
    return into.is_number();
}

bool convertNumber(NSNumber* number, json& into) {
    if (isTruth(number)) {
        into = static_cast<bool>([number boolValue]);
    } else if ([number isKindOfClass:[NSDecimalNumber class]]) {
        return convertDecimal(number, into);
    } else if (std::strchr("fd", *[number objCType]) != nullptr) {
        into = [number doubleValue];
    } else if (std::strchr("CSILQ", *[number objCType]) != nullptr) {
        into = static_cast<std::uint64_t>([number unsignedLongLongValue]);
    } else {
        into = static_cast<std::int64_t>([number longLongValue]);
    }
    return true;
}

// Through enumerators, since on GNUstep a dictionary of a host's own class knows no fast enumeration.
bool convertArray(NSArray* array, json& into, int level) {
    into = json::array();
    for (id element in [array objectEnumerator]) {
        into.emplace_back();
        if (!convert(element, into.back(), level)) return false;
    }
    return true;
}

bool convertDictionary(NSDictionary* dictionary, json& into, int level) {
    into = json::object();
    for (id key in [dictionary keyEnumerator]) {
        if (!isText(key)) return false;
        const auto name = wellFormedText(key);
        if (!name || !convert([dictionary objectForKey:key], into[*name], level)) return false;
    }
    return true;
}

bool convert(id value, json& into, int level) {
    if (isText(value)) {
        auto converted = wellFormedText(value);
        if (!converted) return false;
        into = *std::move(converted);
        return true;
    }
    if ([value isKindOfClass:[NSNumber class]]) return convertNumber(value, into);
    if (value == [NSNull null]) return true;
    if (++level > mostLevels) return false;
    if (isDictionary(value)) return convertDictionary(value, into, level);
    if ([value isKindOfClass:[NSArray class]]) return convertArray(value, into, level);
    return false;
}

id object(const PropertyList& list);

id object(bool value) { return [NSNumber numberWithBool:value ? YES : NO]; }
id object(std::int64_t value) { return [NSNumber numberWithLongLong:value]; }
id object(double value) { return [NSNumber numberWithDouble:value]; }
id object(const std::string& value) { return string(value); }

id object(const PropertyList::Data& value) {
    return [NSData dataWithBytes:value.bytes.data() length:value.bytes.size()];
}

id object(const PropertyList::Array& value) {
    NSMutableArray* array = [NSMutableArray arrayWithCapacity:value.size()];
    for (const auto& element : value) [array addObject:object(element)];
    return array;
}

id object(const PropertyList::Dictionary& value) { return dictionary(value); }

id object(const PropertyList& list) {
    return std::visit([](const auto& value) { return object(value); }, list.value);
}

} // namespace

Attributes attributes(NSDictionary* dictionary) {
    Attributes result;
    guarded([&] {
        if (!isDictionary(dictionary)) return;
        for (id key in [dictionary keyEnumerator]) {
            const auto attribute = fromRawValue<LogAttribute>(text(key));
            if (!attribute) continue;
            if (auto value = optionalText([dictionary objectForKey:key])) result.set(*attribute, *std::move(value));
        }
    });
    return result;
}

std::map<std::string, std::string> texts(NSDictionary* dictionary) {
    std::map<std::string, std::string> result;
    guarded([&] {
        if (!isDictionary(dictionary)) return;
        for (id key in [dictionary keyEnumerator]) {
            auto name = optionalText(key);
            auto value = optionalText([dictionary objectForKey:key]);
            if (name && value) result.insert_or_assign(*std::move(name), *std::move(value));
        }
    });
    return result;
}

std::vector<std::string> texts(NSArray* array) {
    std::vector<std::string> result;
    guarded([&] {
        if (![array isKindOfClass:[NSArray class]]) return;
        for (id element in [array objectEnumerator])
            if (auto value = optionalText(element)) result.push_back(*std::move(value));
    });
    return result;
}

CustomAttributes customAttributes(NSDictionary* dictionary) {
    json converted;
    bool isConverted = false;
    guarded([&] { isConverted = isDictionary(dictionary) && convert(dictionary, converted, 0); });
    if (!isConverted) return std::nullopt;
    return converted;
}

NSDictionary* dictionary(const PropertyList::Dictionary& dictionary) {
    NSMutableDictionary* result = [NSMutableDictionary dictionaryWithCapacity:dictionary.size()];
    for (const auto& [key, value] : dictionary) [result setObject:object(value) forKey:string(key)];
    return result;
}

} // namespace tallyfoot::objc
