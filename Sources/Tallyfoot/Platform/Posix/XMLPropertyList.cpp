#include "Tallyfoot/Platform/Posix/XMLPropertyList.h"

#include "Tallyfoot/Platform/Posix/BinaryPropertyList.h"
#include "Tallyfoot/Platform/Posix/XMLPropertyListValues.h"

#include <algorithm>
#include <utility>

namespace tallyfoot::xmlpropertylist {

namespace {

using Value = std::optional<PropertyList>;

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view sectionStart = "<![CDATA[";
constexpr std::string_view sectionEnd = "]]>";

struct Tag {
    enum class Kind { opening, closing, empty };
    std::string_view name;
    Kind kind;

    bool closes(std::string_view element) const { return kind == Kind::closing && name == element; }
};

class Reader {
public:
    explicit Reader(std::string_view text) : rest_(text) {}

    Value read() {
        if (!skipBlanks() || !skipDeclaration()) return std::nullopt;
        auto top = tag();
        const bool isWrapped = top && top->name == "plist";
        if (isWrapped) top = top->kind == Tag::Kind::opening ? tag() : std::nullopt;
        auto list = value(top, 1);
        if (isWrapped) {
            const auto end = tag();
            if (!end || !end->closes("plist")) return std::nullopt;
        }
        return skipBlanks() && rest_.empty() ? list : std::nullopt;
    }

private:
    bool skipPast(std::string_view terminator, std::size_t from) {
        const auto end = rest_.find(terminator, from);
        if (end == rest_.npos) return false;
        rest_.remove_prefix(end + terminator.size());
        return true;
    }

    // A comment or an instruction, which say nothing here.
    bool isAside() const { return rest_.starts_with("<!--") || rest_.starts_with("<?"); }

    bool skipAside() { return rest_.starts_with("<?") ? skipPast("?>", 2) : skipPast("-->", 4); }

    // False where an aside does not end.
    bool skipBlanks() {
        for (;;) {
            rest_.remove_prefix(std::min(rest_.find_first_not_of(whiteSpace), rest_.size()));
            if (!isAside()) return true;
            if (!skipAside()) return false;
        }
    }

    // The document's type. One that brings declarations of its own is refused: they could define anything.
    bool skipDeclaration() {
        if (!rest_.starts_with("<!DOCTYPE")) return true;
        return rest_.substr(0, rest_.find('>')).find_first_of("<[", 1) == rest_.npos && skipPast(">", 0);
    }

    std::optional<Tag> tag() {
        if (!skipBlanks() || !rest_.starts_with('<')) return std::nullopt;
        const auto end = rest_.find('>');
        if (end == rest_.npos) return std::nullopt;
        auto inside = rest_.substr(1, end - 1);
        rest_.remove_prefix(end + 1);
        auto kind = Tag::Kind::opening;
        if (inside.starts_with('/')) {
            kind = Tag::Kind::closing;
            inside.remove_prefix(1);
        } else if (inside.ends_with('/')) {
            kind = Tag::Kind::empty;
            inside.remove_suffix(1);
        }
        const auto word = inside.substr(0, inside.find_first_of(whiteSpace));
        const bool hasAttributes = word == "plist" && kind == Tag::Kind::opening && inside.find('<') == inside.npos;
        return Tag{hasAttributes ? word : inside.substr(0, inside.find_last_not_of(whiteSpace) + 1), kind};
    }

    bool weigh(std::size_t bytes) {
        weight_ += bytes;
        return weight_ <= binarypropertylist::maximumWeight;
    }

    // Also nothing for a tag that is missing, closes something or is of no known name.
    Value value(const std::optional<Tag>& tag, int depth) {
        if (!tag || tag->kind == Tag::Kind::closing || depth > binarypropertylist::maximumDepth) return std::nullopt;
        if (!weigh(binarypropertylist::valueWeight)) return std::nullopt;
        if (tag->name == "dict") return dictionary(*tag, depth);
        if (tag->name == "array") return array(*tag, depth);
        auto content = text(*tag);
        if (!content) return std::nullopt;
        if (tag->name == "string") return PropertyList{*std::move(content)};
        return scalar(tag->name, *content);
    }

    Value array(const Tag& start, int depth) {
        PropertyList::Array elements;
        if (start.kind == Tag::Kind::empty) return PropertyList{std::move(elements)};
        for (auto next = tag(); !next || !next->closes("array"); next = tag()) {
            auto element = value(next, depth + 1);
            if (!element) return std::nullopt;
            elements.push_back(*std::move(element));
        }
        return PropertyList{std::move(elements)};
    }

    Value dictionary(const Tag& start, int depth) {
        PropertyList::Dictionary entries;
        if (start.kind == Tag::Kind::empty) return PropertyList{std::move(entries)};
        for (auto next = tag(); !next || !next->closes("dict"); next = tag()) {
            if (!next || next->name != "key" || !weigh(binarypropertylist::valueWeight)) return std::nullopt;
            auto key = text(*next);
            if (!key) return std::nullopt;
            auto entry = value(tag(), depth + 1);
            if (!entry) return std::nullopt;
            entries.insert_or_assign(*std::move(key), *std::move(entry));
        }
        return PropertyList{std::move(entries)};
    }

    // What stands between an element's tags.
    std::optional<std::string> text(const Tag& start) {
        std::string text;
        if (start.kind == Tag::Kind::empty) return text;
        while (start.kind == Tag::Kind::opening) {
            const auto plain = rest_.substr(0, rest_.find('<'));
            if (!appendUnescaped(text, plain) || !weigh(plain.size())) return std::nullopt;
            rest_.remove_prefix(plain.size());
            if (rest_.starts_with(sectionStart)) {
                rest_.remove_prefix(sectionStart.size());
                const auto section = rest_.substr(0, rest_.find(sectionEnd));
                text += section;
                if (!weigh(section.size()) || !skipPast(sectionEnd, 0)) return std::nullopt;
            } else if (isAside()) {
                if (!skipAside()) return std::nullopt;
            } else {
                const auto end = tag();
                return end && end->closes(start.name) ? std::optional(std::move(text)) : std::nullopt;
            }
        }
        return std::nullopt;
    }

    std::string_view rest_;
    std::size_t weight_ = 0;
};

} // namespace

std::optional<PropertyList> decoded(std::string_view bytes) {
    if (bytes.starts_with(byteOrderMark)) bytes.remove_prefix(byteOrderMark.size());
    if (bytes.find('\0') != bytes.npos || !binarypropertylist::isUTF8(bytes)) return std::nullopt;
    return Reader(bytes).read();
}

} // namespace tallyfoot::xmlpropertylist
