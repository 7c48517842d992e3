// Any bytes: the text helpers keep every byte, and nothing makes them fail.
#include "Fuzz/Require.h"

#include "Tallyfoot/Events/Text.h"

using namespace tallyfoot;
using fuzzing::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto whole = fuzzing::text(data, size);
    require(text::isWellFormed(text::utf8String(whole)), "decoded bytes are well-formed");
    require(text::isWellFormed(whole) == (text::utf8String(whole) == whole), "only what is ill-formed is replaced");
    require(text::utf8Data(whole).has_value() == text::isWellFormed(whole), "only ill-formed text has no data");

    const auto length = static_cast<std::ptrdiff_t>(text::length(whole));
    require(text::substringToIndex(whole, length) == whole, "all characters are the whole");
    const auto middle = length / 2;
    require(text::substringToIndex(whole, middle) + text::substringFromIndex(whole, middle) == whole,
            "no byte is lost");
    require(text::characters(whole, middle, middle + 1) == text::character(whole, middle),
            "a character is a range of one");
    require((middle < length) == !text::character(whole, middle).empty(), "a character is never empty");

    const auto first = whole.substr(0, whole.find(','));
    const auto rest = whole.substr(std::min(whole.size(), first.size() + 1));
    require(text::prefer("x", first) == (text::isEmptyBySpaceTrim(first) ? "x" : first), "a blank is never preferred");
    if (const auto after = text::stringAfter(rest, first)) {
        require(rest.ends_with(std::string(first) + *after), "what follows is the end");
    }
    text::slice(rest, first, first);
    require(text::deletingSuffix(rest, first).size() <= rest.size(), "deleting makes nothing longer");
    text::date(whole, "dd-MM-yyyy'T'HH-mm-ss-SSS");
    return 0;
}
