#include "TallyfootObjC/Support/Dictionaries.h"

#include "TallyfootObjC/Support/Guard.h"
#include "TallyfootObjC/Support/Text.h"

#include <nlohmann/json.hpp>

#include <cstring>
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

bool convertDecimal(NSNumber* number, json& into) {
    into = json::parse(text([number description]), nullptr, false);
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

bool convertArray(NSArray* array, json& into, int level) {
    into = json::array();
    for (id element in array) {
        into.emplace_back();
        if (!convert(element, into.back(), level)) return false;
    }
    return true;
}

bool convertDictionary(NSDictionary* dictionary, json& into, int level) {
    into = json::object();
    for (id key in dictionary) {
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
    if (!isDictionary(dictionary)) return result;
    for (id key in dictionary) {
        const auto attribute = fromRawValue<LogAttribute>(text(key));
        id value = [dictionary objectForKey:key];
        if (attribute && isText(value)) result.set(*attribute, text(value));
    }
    return result;
}

std::map<std::string, std::string> texts(NSDictionary* dictionary) {
    std::map<std::string, std::string> result;
    if (!isDictionary(dictionary)) return result;
    for (id key in dictionary) {
        id value = [dictionary objectForKey:key];
        if (isText(key) && isText(value)) result.insert_or_assign(text(key), text(value));
    }
    return result;
}

std::vector<std::string> texts(NSArray* array) {
    std::vector<std::string> result;
    if (![array isKindOfClass:[NSArray class]]) return result;
    for (id element in array)
        if (isText(element)) result.push_back(text(element));
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
