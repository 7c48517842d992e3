#include "Tallyfoot/Platform/Posix/XMLPropertyList.h"

#include "Tallyfoot/Platform/Posix/BinaryPropertyList.h"

#include <plist/plist.h>

#include <cctype>
#include <cstdint>
#include <limits>
#include <memory>

namespace tallyfoot::xmlpropertylist {

namespace {

// Follows the tags and nothing else, to know the depth before libplist meets it: libplist keeps a
// stack frame for each level. What is no plain tag is refused rather than interpreted, so that the
// two can never read one text differently.
class TagScanner {
public:
    explicit TagScanner(std::string_view rest) : rest_(rest) {}

    bool isWholeAndShallow() {
        for (auto at = rest_.find('<'); at != std::string_view::npos; at = rest_.find('<')) {
            rest_.remove_prefix(at);
            if (!skipConstruct()) return false;
        }
        return depth_ == 0; // libplist takes what comes before a list's end for all of it
    }

private:
    bool skipConstruct() {
        if (rest_.starts_with("<!-->") || rest_.starts_with("<!--->")) return false;
        if (rest_.starts_with("<!--")) return skipPast("-->", 4);
        if (rest_.starts_with("<![CDATA[")) return skipPast("]]>", 9);
        if (rest_.starts_with("<?")) return skipPast("?>", 2);
        const auto end = rest_.find('>');
        if (end == std::string_view::npos) return false;
        const auto inside = rest_.substr(1, end - 1);
        rest_.remove_prefix(end + 1);
        if (inside.starts_with("!")) return inside.find_first_of("<[") == std::string_view::npos;
        return countTag(inside);
    }

    bool skipPast(std::string_view terminator, std::size_t from) {
        const auto end = rest_.find(terminator, from);
        if (end == std::string_view::npos) return false;
        rest_.remove_prefix(end + terminator.size());
        return true;
    }

    bool countTag(std::string_view inside) {
        const bool closes = inside.starts_with('/');
        if (closes) inside.remove_prefix(1);
        const bool isEmpty = !closes && inside.ends_with('/');
        if (isEmpty) inside.remove_suffix(1);
        while (!inside.empty() && std::isspace(static_cast<unsigned char>(inside.back()))) inside.remove_suffix(1);
        // Only the outermost element has attributes.
        if (inside.starts_with("plist ")) inside = inside.find('<') == std::string_view::npos ? "plist" : "";
        if (inside.empty()) return false;
        for (const char letter : inside)
            if (letter < 'a' || letter > 'z') return false;
        if (closes) return --depth_ >= 0;
        return isEmpty || ++depth_ <= binarypropertylist::maximumDepth;
    }

    std::string_view rest_;
    int depth_ = 0;
};

struct NodeDeleter {
    void operator()(void* node) const noexcept { plist_free(node); }
};

struct BinaryDeleter {
    void operator()(char* bytes) const noexcept { plist_to_bin_free(bytes); }
};

} // namespace

std::optional<PropertyList> decoded(std::string_view bytes) {
    if (bytes.size() > std::numeric_limits<std::uint32_t>::max() || !TagScanner(bytes).isWholeAndShallow())
        return std::nullopt;
    plist_t parsed = nullptr;
    plist_from_xml(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &parsed);
    const std::unique_ptr<void, NodeDeleter> node(parsed);
    if (!node) return std::nullopt;
    // By way of the binary form, which tells signed numbers from large ones where libplist's
    // accessors do not, and which has one reader then.
    char* written = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(node.get(), &written, &length);
    const std::unique_ptr<char, BinaryDeleter> binary(written);
    if (!binary) return std::nullopt;
    return binarypropertylist::decoded({binary.get(), length});
}

} // namespace tallyfoot::xmlpropertylist
