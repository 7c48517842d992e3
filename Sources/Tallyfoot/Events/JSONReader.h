#pragma once

#include "Tallyfoot/Events/JSONText.h"
#include "Tallyfoot/Platform/UTF8.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

namespace tallyfoot::json {

enum class Container : std::uint8_t { object, array };

// Reads one JSON text from its beginning to its end, without recursion, and tells the sink what it
// meets, in order:
//
//     null(), boolean(bool), integer(int64), unsignedInteger(uint64), real(double),
//     bool string(string_view)   false refuses the text
//     bool open(Container)       false refuses the text
//     close()
//     bool key(string_view)      false passes over the member, which the sink has had already
//
// A text stays valid for the length of the call. What the sink was told of a text that proves
// malformed further on is void.
template <class Sink>
class Reader {
public:
    Reader(std::string_view text, Sink& sink) : at_(utf8::begin(text)), end_(utf8::end(text)), sink_(sink) {}

    bool read(int deepest = deepestLevel) {
        deepest_ = deepest;
        if (end_ - at_ >= 3 && at_[0] == 0xEF && at_[1] == 0xBB && at_[2] == 0xBF) at_ += 3;
        skipSpace();
        if (at_ == end_ || (*at_ != '{' && *at_ != '[') || !value()) return false;
        while (depth_ > 0)
            if (!step()) return false;
        skipSpace();
        return at_ == end_;
    }

private:
    bool isInObject() const { return containers_[static_cast<std::size_t>(depth_ - 1)] == Container::object; }

    void skipSpace() {
        while (at_ != end_ && (*at_ == ' ' || *at_ == '\n' || *at_ == '\r' || *at_ == '\t')) ++at_;
    }

    bool take(unsigned char byte) {
        if (at_ == end_ || *at_ != byte) return false;
        ++at_;
        return true;
    }

    bool takeWord(std::string_view word) {
        for (const char byte : word)
            if (!take(static_cast<unsigned char>(byte))) return false;
        return true;
    }

    // One element or member, or the end of the innermost container.
    bool step() {
        skipSpace();
        if (take(isInObject() ? '}' : ']')) return close();
        if (!isFirst_) {
            if (!take(',')) return false;
            skipSpace();
        }
        if (isInObject() && !key()) return false;
        return value();
    }

    bool key() {
        const auto text = quoted();
        if (!text) return false;
        if (!isSkipping() && !sink_.key(*text)) skippedAt_ = depth_;
        skipSpace();
        if (!take(':')) return false;
        skipSpace();
        return true;
    }

    bool value() {
        if (at_ == end_) return false;
        switch (*at_) {
        case '{': return open(Container::object);
        case '[': return open(Container::array);
        case '"': return string();
        case 'n': return takeWord("null") && finish([this] { sink_.null(); });
        case 't': return takeWord("true") && finish([this] { sink_.boolean(true); });
        case 'f': return takeWord("false") && finish([this] { sink_.boolean(false); });
        default: return number();
        }
    }

    bool open(Container container) {
        if (depth_ == deepest_) return false;
        ++at_;
        containers_[static_cast<std::size_t>(depth_++)] = container;
        isFirst_ = true;
        return isSkipping() || sink_.open(container);
    }

    bool close() {
        --depth_;
        return finish([this] { sink_.close(); });
    }

    // The end of every value, whole containers included.
    template <class Block>
    bool finish(Block&& tell) {
        isFirst_ = false;
        if (!isSkipping())
            tell();
        else if (skippedAt_ == depth_)
            skippedAt_ = 0;
        return true;
    }

    bool isSkipping() const { return skippedAt_ != 0; }

    bool string() {
        const auto text = quoted();
        bool accepted = true;
        return text && finish([&] { accepted = sink_.string(*text); }) && accepted;
    }

    // A string's value: a piece of the text itself where nothing in it is escaped.
    std::optional<std::string_view> quoted() {
        if (!take('"')) return std::nullopt;
        const auto* run = at_;
        if (!skipUnescaped()) return std::nullopt;
        if (take('"')) return piece(run, at_ - 1);
        unescaped_ = piece(run, at_);
        while (take('\\')) {
            if (!escape()) return std::nullopt;
            run = at_;
            if (!skipUnescaped()) return std::nullopt;
            unescaped_ += piece(run, at_);
        }
        if (!take('"')) return std::nullopt;
        return unescaped_;
    }

    static std::string_view piece(const unsigned char* from, const unsigned char* to) {
        return {reinterpret_cast<const char*>(from), static_cast<std::size_t>(to - from)};
    }

    // Up to a quotation mark or a backslash; false at a bare control character, ill-formed UTF-8 or the end.
    bool skipUnescaped() {
        while ((at_ = skipPlainBytes(at_, end_)) != end_) {
            if (*at_ == '"' || *at_ == '\\') return true;
            if (*at_ < 0x20) return false;
            const auto sequence = utf8::sequence(at_, end_);
            if (!sequence.isWellFormed) return false;
            at_ += sequence.length;
        }
        return false;
    }

    bool escape() {
        if (at_ == end_) return false;
        switch (*at_++) {
        case '"': unescaped_ += '"'; return true;
        case '\\': unescaped_ += '\\'; return true;
        case '/': unescaped_ += '/'; return true;
        case 'b': unescaped_ += '\b'; return true;
        case 'f': unescaped_ += '\f'; return true;
        case 'n': unescaped_ += '\n'; return true;
        case 'r': unescaped_ += '\r'; return true;
        case 't': unescaped_ += '\t'; return true;
        case 'u': return codePoint();
        default: return false;
        }
    }

    bool codePoint() {
        const auto unit = fourDigits();
        if (!unit || (*unit >= 0xDC00 && *unit <= 0xDFFF)) return false;
        std::uint32_t point = *unit;
        if (point >= 0xD800 && point <= 0xDBFF) {
            if (!takeWord("\\u")) return false;
            const auto low = fourDigits();
            if (!low || *low < 0xDC00 || *low > 0xDFFF) return false;
            point = 0x10000 + ((point - 0xD800) << 10) + (*low - 0xDC00);
        }
        utf8::append(unescaped_, point);
        return true;
    }

    std::optional<std::uint32_t> fourDigits() {
        std::uint32_t number = 0;
        if (end_ - at_ < 4) return std::nullopt;
        const auto [after, error] =
            std::from_chars(reinterpret_cast<const char*>(at_), reinterpret_cast<const char*>(at_ + 4), number, 16);
        if (error != std::errc() || after != reinterpret_cast<const char*>(at_ + 4)) return std::nullopt;
        at_ += 4;
        return number;
    }

    bool skipDigits() {
        const auto* const first = at_;
        while (at_ != end_ && *at_ >= '0' && *at_ <= '9') ++at_;
        return at_ != first;
    }

    bool number() {
        const auto* const first = at_;
        const bool isNegative = take('-');
        if (!take('0') && !skipDigits()) return false;
        bool isWhole = true;
        if (take('.')) {
            isWhole = false;
            if (!skipDigits()) return false;
        }
        if (at_ != end_ && (*at_ == 'e' || *at_ == 'E')) {
            ++at_;
            isWhole = false;
            if (!take('+')) take('-');
            if (!skipDigits()) return false;
        }
        const auto text = piece(first, at_);
        if (isWhole && text != "-0" && (isNegative ? integer<std::int64_t>(text) : integer<std::uint64_t>(text)))
            return true;
        const auto real = realNumber(text);
        return real && finish([&] { sink_.real(*real); });
    }

    template <class Number>
    bool integer(std::string_view text) {
        Number number = 0;
        if (std::from_chars(text.data(), text.data() + text.size(), number).ec != std::errc()) return false;
        return finish([&] {
            if constexpr (std::is_signed_v<Number>)
                sink_.integer(number);
            else
                sink_.unsignedInteger(number);
        });
    }

    const unsigned char* at_;
    const unsigned char* end_;
    Sink& sink_;
    std::string unescaped_;
    std::array<Container, deepestLevel> containers_;
    int deepest_ = deepestLevel;
    int depth_ = 0;
    int skippedAt_ = 0; // the depth of the object whose member is passed over; 0 for none
    bool isFirst_ = false;
};

} // namespace tallyfoot::json
