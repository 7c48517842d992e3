#include "Tallyfoot/Events/DateFormatter.h"

#include <unicode/parsepos.h>
#include <unicode/smpdtfmt.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <chrono>
#include <cmath>

namespace tallyfoot {

namespace {

constexpr std::size_t longestDate = 1000; // no pattern of ours comes near it
constexpr int mostDigits =
    9; // in a row, where the pattern has no more: ICU's power of ten for a fraction overflows, in the end to zero

icu::UnicodeString fromUTF8(std::string_view text) {
    return icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
}

bool hasLongerNumber(const icu::UnicodeString& text, int most) {
    int digits = 0;
    for (std::int32_t index = 0; index < text.length(); index = text.moveIndex32(index, 1)) {
        const auto character = text.char32At(index);
        if (u_hasBinaryProperty(character, UCHAR_DEFAULT_IGNORABLE_CODE_POINT)) continue; // ICU passes it over
        digits = u_isdigit(character) ? digits + 1 : 0;
        if (digits > most) return true;
    }
    return false;
}

// Fields with nothing in between are one number to whoever reads it.
int longestField(std::string_view pattern) {
    int longest = mostDigits;
    int letters = 0;
    for (const char character : pattern) {
        const bool isLetter = (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
        letters = isLetter ? letters + 1 : 0;
        longest = std::max(longest, letters);
    }
    return longest;
}

// ICU cuts off what is less than a millisecond. Counted by hand: the earliest dates have no whole
// millisecond before them that fits.
UDate nearestMillisecond(Date date) {
    constexpr std::int64_t each = 1'000'000;
    const std::int64_t nanoseconds = date.time_since_epoch().count();
    std::int64_t milliseconds = nanoseconds / each;
    const std::int64_t rest = nanoseconds % each; // towards zero
    if (rest >= each / 2) ++milliseconds;
    if (rest < -each / 2) --milliseconds;
    return static_cast<UDate>(milliseconds);
}

std::optional<Date> date(UDate milliseconds) {
    // What a Date can hold: some 292 years either way.
    constexpr std::int64_t most = Date::duration::max().count() / 1'000'000 - 1;
    if (!(std::fabs(milliseconds) <= static_cast<double>(most))) return std::nullopt;
    return Date(std::chrono::milliseconds(static_cast<std::int64_t>(milliseconds)));
}

} // namespace

struct DateFormatter::Implementation {
    explicit Implementation(std::string_view pattern)
        : mostDigits(longestField(pattern)), format(fromUTF8(pattern), error) {
        format.setLenient(false);
    }

    const int mostDigits;

    UErrorCode error = U_ZERO_ERROR;
    icu::SimpleDateFormat format;
};

DateFormatter::DateFormatter(std::string_view pattern) : implementation_(std::make_unique<Implementation>(pattern)) {}

DateFormatter::~DateFormatter() = default;

std::string DateFormatter::string(Date date) const {
    MutexLock lock(mutex_);
    UErrorCode error = implementation_->error;
    std::string text;
    if (U_FAILURE(error)) return text;
    icu::UnicodeString formatted;
    implementation_->format.format(nearestMillisecond(date), formatted, nullptr, error);
    if (U_SUCCESS(error)) formatted.toUTF8String(text);
    return text;
}

std::optional<Date> DateFormatter::date(std::string_view text) const {
    if (text.size() > longestDate) return std::nullopt;
    const auto whole = fromUTF8(text);
    icu::ParsePosition position(0);
    UDate milliseconds = 0;
    {
        MutexLock lock(mutex_);
        if (U_FAILURE(implementation_->error) || hasLongerNumber(whole, implementation_->mostDigits))
            return std::nullopt;
        milliseconds = implementation_->format.parse(whole, position);
    }
    if (position.getErrorIndex() >= 0 || position.getIndex() == 0 || position.getIndex() != whole.length())
        return std::nullopt;
    return tallyfoot::date(milliseconds);
}

} // namespace tallyfoot
