#include "TallyfootObjC/Support/Text.h"

#include "TallyfootObjC/Support/Guard.h"

#include "Tallyfoot/Platform/UTF8.h"

#include <algorithm>
#include <array>

namespace tallyfoot::objc {

namespace {

constexpr bool isHighSurrogate(unichar unit) noexcept { return (unit & 0xFC00) == 0xD800; }
constexpr bool isLowSurrogate(unichar unit) noexcept { return (unit & 0xFC00) == 0xDC00; }

// A unit of a pair that stands alone is reported once, and written as U+FFFD.
bool append(std::string& into, const unichar* units, NSUInteger count) {
    bool isWellFormed = true;
    for (NSUInteger at = 0; at < count; ++at) {
        const unichar unit = units[at];
        if (unit < 0x80) {
            into += static_cast<char>(unit);
        } else if (isHighSurrogate(unit) && at + 1 < count && isLowSurrogate(units[at + 1])) {
            utf8::append(into, 0x10000U + ((unit & 0x3FFU) << 10) + (units[++at] & 0x3FFU));
        } else if (isHighSurrogate(unit) || isLowSurrogate(unit)) {
            into += utf8::replacementCharacter;
            isWellFormed = false;
        } else {
            utf8::append(into, unit);
        }
    }
    return isWellFormed;
}

// Read a piece at a time, so that a long text costs no second copy of itself.
bool append(std::string& into, NSString* string) {
    std::array<unichar, 256> units;
    bool isWellFormed = true;
    const NSUInteger length = [string length];
    into.reserve(into.size() + length);
    for (NSUInteger at = 0; at < length;) {
        NSUInteger count = std::min<NSUInteger>(length - at, units.size());
        [string getCharacters:units.data() range:NSMakeRange(at, count)];
        if (at + count < length && isHighSurrogate(units[count - 1])) --count; // stays with its other half
        isWellFormed = append(into, units.data(), count) && isWellFormed;
        at += count;
    }
    return isWellFormed;
}

} // namespace

bool isText(id object) { return [object isKindOfClass:[NSString class]]; }

bool isDictionary(id object) { return [object isKindOfClass:[NSDictionary class]]; }

std::string text(id object) { return optionalText(object).value_or(""); }

std::optional<std::string> optionalText(id object) {
    std::optional<std::string> result;
    const bool isCompleted = guarded([&] {
        if (isText(object)) append(result.emplace(), object);
    });
    if (!isCompleted) result.reset();
    return result;
}

std::optional<std::string> wellFormedText(NSString* string) {
    std::string result;
    if (!append(result, string)) return std::nullopt;
    return result;
}

NSString* string(std::string_view text) {
    // Not at the beginning, where Foundation may take it for a mark of the bytes' order and leave it out.
    if (text.starts_with("\uFEFF")) return [string("." + std::string(text)) substringFromIndex:1];
    NSString* made = [[NSString alloc] initWithBytes:text.data() length:text.size() encoding:NSUTF8StringEncoding];
    if (made == nil) {
        const std::string repaired = utf8::wellFormed(text);
        made = [[NSString alloc] initWithBytes:repaired.data() length:repaired.size() encoding:NSUTF8StringEncoding];
    }
    return [made autorelease];
}

NSString* optionalString(const std::optional<std::string>& text) {
    return text ? string(std::string_view(*text)) : nil;
}

} // namespace tallyfoot::objc
