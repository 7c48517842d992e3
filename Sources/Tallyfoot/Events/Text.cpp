#include "Tallyfoot/Events/Text.h"

#include "Tallyfoot/Events/DateFormatter.h"
#include "Tallyfoot/Platform/Exclusive.h"
#include "Tallyfoot/Platform/FatalError.h"
#include "Tallyfoot/Platform/UTF8.h"

#include <unicode/brkiter.h>
#include <unicode/utext.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace tallyfoot::text {

namespace {

bool isWhiteSpace(std::uint32_t codePoint) noexcept {
    return (codePoint >= 0x09 && codePoint <= 0x0D) || codePoint == 0x20 || codePoint == 0x85 || codePoint == 0xA0
           || codePoint == 0x1680 || (codePoint >= 0x2000 && codePoint <= 0x200B) || codePoint == 0x2028
           || codePoint == 0x2029 || codePoint == 0x202F || codePoint == 0x205F || codePoint == 0x3000;
}

// Where a text is not all ASCII its characters are found by ICU, whose iterators are dear to make.
// They are kept for the next caller, never released, so that a thread that ends still finds one.
class BreakIterators {
public:
    static BreakIterators& shared() {
        static auto& all = *new BreakIterators;
        return all;
    }

    std::unique_ptr<icu::BreakIterator> take() {
        auto iterator = idle_.modify([](auto& idle) {
            std::unique_ptr<icu::BreakIterator> last;
            if (!idle.empty()) {
                last = std::move(idle.back());
                idle.pop_back();
            }
            return last;
        });
        if (iterator) return iterator;
        UErrorCode error = U_ZERO_ERROR;
        iterator.reset(icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), error));
        if (U_FAILURE(error)) iterator.reset();
        return iterator;
    }

    void giveBack(std::unique_ptr<icu::BreakIterator> iterator) {
        idle_.modify([&](auto& idle) {
            if (idle.size() < mostIdle) idle.push_back(std::move(iterator));
        });
    }

private:
    static constexpr std::size_t mostIdle = 8;
    Exclusive<std::vector<std::unique_ptr<icu::BreakIterator>>> idle_;
};

// Calls `block` with the byte offset of each character's end, in order, until it says false.
template <class Block>
void forEachEnd(std::string_view text, Block&& block) {
    const auto walk = [&](auto length) {
        for (std::size_t end = 0; end < text.size();)
            if (end += length(end); !block(end)) return;
    };
    if (utf8::skipASCII(utf8::begin(text), utf8::end(text)) == utf8::end(text))
        return walk([&](std::size_t at) -> std::size_t { return text.substr(at).starts_with("\r\n") ? 2 : 1; });

    UErrorCode error = U_ZERO_ERROR;
    UText source = UTEXT_INITIALIZER;
    utext_openUTF8(&source, text.data(), static_cast<std::int64_t>(text.size()), &error);
    auto iterator = BreakIterators::shared().take();
    if (iterator) iterator->setText(&source, error);
    utext_close(&source);              // the iterator has a copy
    if (!iterator || U_FAILURE(error)) // ICU's data is missing: code points are the best there is
        return walk([&](std::size_t at) -> std::size_t {
            return utf8::sequence(utf8::begin(text) + at, utf8::end(text)).length;
        });
    for (auto end = iterator->next(); end != icu::BreakIterator::DONE; end = iterator->next())
        if (!block(static_cast<std::size_t>(end))) break;
    BreakIterators::shared().giveBack(std::move(iterator));
}

// From one character position to another, the end where there are fewer characters.
std::string_view betweenCharacters(std::string_view text, std::size_t lower, std::size_t upper) {
    if (upper <= lower) return {};
    std::size_t first = lower == 0 ? 0 : text.size();
    std::size_t last = text.size();
    std::size_t position = 0;
    forEachEnd(text, [&](std::size_t end) {
        ++position;
        if (position == lower) first = end;
        if (position == upper) last = end;
        return position < upper;
    });
    return text.substr(first, last - first);
}

std::size_t find(std::string_view text, std::string_view marker) {
    return marker.empty() ? std::string_view::npos : text.find(marker);
}

} // namespace

std::optional<Data> utf8Data(std::string_view text) {
    if (!isWellFormed(text)) return std::nullopt;
    return Data(text);
}

std::string utf8String(std::string_view bytes) { return utf8::wellFormed(bytes); }

bool isWellFormed(std::string_view bytes) noexcept {
    const auto* const end = utf8::end(bytes);
    for (const auto* at = utf8::begin(bytes); (at = utf8::skipASCII(at, end)) != end;) {
        const auto sequence = utf8::sequence(at, end);
        if (!sequence.isWellFormed) return false;
        at += sequence.length;
    }
    return true;
}

bool isEmptyBySpaceTrim(std::string_view text) {
    const auto* const end = utf8::end(text);
    for (const auto* at = utf8::begin(text); at != end;) {
        const auto sequence = utf8::sequence(at, end);
        if (!sequence.isWellFormed || !isWhiteSpace(utf8::codePoint(at, sequence))) return false;
        at += sequence.length;
    }
    return true;
}

std::string prefix(std::string_view text, std::string_view prefix) {
    std::string whole;
    if (!isEmptyBySpaceTrim(prefix)) whole.append(prefix).append("-");
    return whole.append(text);
}

std::string prefer(std::string_view text, std::string_view candidate) {
    return std::string(isEmptyBySpaceTrim(candidate) ? text : candidate);
}

std::optional<std::string> stringAfter(std::string_view text, std::string_view marker) {
    const auto place = find(text, marker);
    if (place == std::string_view::npos) return std::nullopt;
    return std::string(text.substr(place + marker.size()));
}

std::optional<std::string> slice(std::string_view text, std::string_view from, std::string_view to) {
    auto rest = stringAfter(text, from);
    const auto end = rest ? find(*rest, to) : std::string_view::npos;
    if (end == std::string_view::npos) return std::nullopt;
    rest->resize(end);
    return rest;
}

std::string deletingSuffix(std::string_view text, std::string_view suffix) {
    const auto count = length(suffix);
    if (betweenCharacters(text, 0, count) != suffix) return std::string(text);
    return std::string(betweenCharacters(text, 0, length(text) - count));
}

bool contains(std::string_view text, std::span<const std::string_view> list) {
    return std::any_of(list.begin(), list.end(),
                       [&](std::string_view element) { return find(text, element) != std::string_view::npos; });
}

std::optional<Date> date(std::string_view text, std::string_view format) { return DateFormatter(format).date(text); }

std::size_t length(std::string_view text) {
    std::size_t count = 0;
    forEachEnd(text, [&](std::size_t) { return ++count != 0; });
    return count;
}

std::string character(std::string_view text, std::ptrdiff_t index) {
    if (index < 0) return {};
    return std::string(betweenCharacters(text, static_cast<std::size_t>(index), static_cast<std::size_t>(index) + 1));
}

std::string characters(std::string_view text, std::ptrdiff_t lower, std::ptrdiff_t upper) {
    const auto all = static_cast<std::ptrdiff_t>(length(text));
    const auto first = std::clamp<std::ptrdiff_t>(lower, 0, all);
    const auto last = std::clamp<std::ptrdiff_t>(upper, 0, all);
    if (last < first) fatalError("a range of characters whose upper bound lies below its lower bound");
    return std::string(betweenCharacters(text, static_cast<std::size_t>(first), static_cast<std::size_t>(last)));
}

std::string substringFromIndex(std::string_view text, std::ptrdiff_t index) {
    return std::string(
        betweenCharacters(text, static_cast<std::size_t>(std::max<std::ptrdiff_t>(index, 0)), text.size()));
}

std::string substringToIndex(std::string_view text, std::ptrdiff_t index) {
    return std::string(betweenCharacters(text, 0, static_cast<std::size_t>(std::max<std::ptrdiff_t>(index, 0))));
}

} // namespace tallyfoot::text
