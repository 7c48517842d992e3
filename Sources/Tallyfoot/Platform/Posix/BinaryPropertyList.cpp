#include "Tallyfoot/Platform/Posix/BinaryPropertyList.h"

#include <unicode/ustring.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tallyfoot::binarypropertylist {

namespace {

// The layout: a signature, the objects, a table of their offsets, a trailer. An object begins with
// a marker: its kind in the upper half, its count (or the power of two of its width) in the lower.
constexpr std::string_view versionedSignature = "bplist00";
constexpr std::size_t trailerSize = 32;
constexpr UChar32 replacement = 0xFFFD;

enum Kind : unsigned {
    singleton = 0x0,
    integer = 0x1,
    real = 0x2,
    date = 0x3,
    data = 0x4,
    asciiText = 0x5,
    utf16Text = 0x6,
    identifierKind = 0x8,
    array = 0xA,
    dictionary = 0xD
};

constexpr unsigned markerFalse = 0x08;
constexpr unsigned markerTrue = 0x09;
constexpr unsigned countFollows = 0xF;
constexpr std::string_view uniqueIDKey = "CF$UID";

std::uint64_t bigEndian(std::string_view bytes) {
    std::uint64_t number = 0;
    for (const char byte : bytes) number = number << 8 | static_cast<unsigned char>(byte);
    return number;
}

void appendBigEndian(std::string& bytes, std::uint64_t number, std::size_t width) {
    while (width-- > 0) bytes += static_cast<char>(number >> (8 * width) & 0xFF);
}

bool isASCII(std::string_view text) {
    for (const char character : text)
        if (static_cast<unsigned char>(character) > 0x7F) return false;
    return true;
}

std::u16string toUTF16(std::string_view text) {
    std::u16string units(text.size(), u'\0'); // never more units than bytes
    auto status = U_ZERO_ERROR;
    std::int32_t length = 0;
    const auto size = static_cast<std::int32_t>(text.size());
    u_strFromUTF8WithSub(units.data(), size, &length, text.data(), size, replacement, nullptr, &status);
    units.resize(static_cast<std::size_t>(length));
    return units;
}

std::string fromUTF16(std::string_view bytes) {
    std::u16string units;
    units.reserve(bytes.size() / 2);
    for (std::size_t at = 0; at < bytes.size(); at += 2) units += static_cast<char16_t>(bigEndian(bytes.substr(at, 2)));
    std::string text(units.size() * 3, '\0'); // never more than three bytes a unit
    auto status = U_ZERO_ERROR;
    std::int32_t length = 0;
    u_strToUTF8WithSub(text.data(), static_cast<std::int32_t>(text.size()), &length, units.data(),
                       static_cast<std::int32_t>(units.size()), replacement, nullptr, &status);
    text.resize(static_cast<std::size_t>(length));
    return text;
}

class Reader {
public:
    explicit Reader(std::string_view bytes) : bytes_(bytes) {}

    std::optional<PropertyList> read() {
        if (!bytes_.starts_with(signature) || bytes_.size() < versionedSignature.size() + trailerSize)
            return std::nullopt;
        const auto trailer = bytes_.substr(bytes_.size() - trailerSize);
        offsetWidth_ = static_cast<unsigned char>(trailer[6]);
        referenceWidth_ = static_cast<unsigned char>(trailer[7]);
        objectCount_ = bigEndian(trailer.substr(8, 8));
        const auto top = bigEndian(trailer.substr(16, 8));
        const auto table = bigEndian(trailer.substr(24, 8));
        const auto tableEnd = bytes_.size() - trailerSize;
        if (offsetWidth_ < 1 || offsetWidth_ > 8 || referenceWidth_ < 1 || referenceWidth_ > 8) return std::nullopt;
        if (table < versionedSignature.size() || table > tableEnd) return std::nullopt;
        if (objectCount_ > (tableEnd - table) / offsetWidth_) return std::nullopt;
        table_ = bytes_.substr(table, objectCount_ * offsetWidth_);
        objects_ = bytes_.substr(0, table);
        return object(top, 0);
    }

private:
    struct Marker {
        unsigned kind;
        unsigned low;
        std::size_t bodyAt;
    };

    bool weigh(std::uint64_t bytes) {
        if (bytes > maximumWeight || weight_ > maximumWeight - bytes) return false;
        weight_ += bytes;
        return true;
    }

    std::optional<std::string_view> slice(std::size_t at, std::uint64_t length) const {
        if (at > objects_.size() || length > objects_.size() - at) return std::nullopt;
        return objects_.substr(at, length);
    }

    std::optional<Marker> marker(std::uint64_t index) const {
        if (index >= objectCount_) return std::nullopt;
        const auto offset = bigEndian(table_.substr(index * offsetWidth_, offsetWidth_));
        if (offset < versionedSignature.size() || offset >= objects_.size()) return std::nullopt;
        const unsigned byte = static_cast<unsigned char>(objects_[offset]);
        return Marker{byte >> 4U, byte & 0xFU, offset + 1};
    }

    // Counts from fifteen on stand behind the marker, as an integer object.
    std::optional<std::uint64_t> count(Marker& from) const {
        if (from.low != countFollows) return from.low;
        const auto width = slice(from.bodyAt, 1);
        if (!width) return std::nullopt;
        const unsigned byte = static_cast<unsigned char>(width->front());
        if (byte >> 4U != integer || (byte & 0xFU) > 3) return std::nullopt;
        const auto digits = slice(from.bodyAt + 1, 1U << (byte & 0xFU));
        if (!digits) return std::nullopt;
        from.bodyAt += 1 + digits->size();
        return bigEndian(*digits);
    }

    // The body of `count` elements of a width.
    std::optional<std::string_view> body(Marker from, std::size_t width) const {
        const auto number = count(from);
        if (!number || *number > objects_.size()) return std::nullopt;
        return slice(from.bodyAt, *number * width);
    }

    std::optional<PropertyList> object(std::uint64_t index, int depth) {
        const auto found = marker(index);
        if (!found || depth > maximumDepth || !weigh(valueWeight)) return std::nullopt;
        switch (found->kind) {
        case singleton: return boolean(*found);
        case integer: return number(*found);
        case real:
        case date: return floating(*found);
        case data: return bytes(*found);
        case asciiText:
        case utf16Text: return boxed(text(*found));
        case identifierKind: return identifier(*found);
        case array: return list(*found, depth);
        case dictionary: return entries(*found, depth);
        default: return std::nullopt;
        }
    }

    static std::optional<PropertyList> boxed(std::optional<std::string> text) {
        if (!text) return std::nullopt;
        return PropertyList{*std::move(text)};
    }

    static std::optional<PropertyList> boolean(const Marker& from) {
        if (from.low != markerFalse && from.low != markerTrue) return std::nullopt;
        return PropertyList{from.low == markerTrue};
    }

    std::optional<PropertyList> number(const Marker& from) const {
        if (from.low > 4) return std::nullopt;
        const auto digits = slice(from.bodyAt, 1U << from.low);
        if (!digits) return std::nullopt;
        if (digits->size() <= 8) return PropertyList{static_cast<std::int64_t>(bigEndian(*digits))};
        const auto high = static_cast<std::int64_t>(bigEndian(digits->substr(0, 8)));
        const auto low = bigEndian(digits->substr(8));
        const auto narrow = static_cast<std::int64_t>(low);
        if (high == (narrow < 0 ? -1 : 0)) return PropertyList{narrow};
        return PropertyList{static_cast<double>(high) * 0x1p64 + static_cast<double>(low)};
    }

    std::optional<PropertyList> floating(const Marker& from) const {
        const auto digits = slice(from.bodyAt, 1U << from.low);
        if (!digits) return std::nullopt;
        if (from.low == 3) return PropertyList{std::bit_cast<double>(bigEndian(*digits))};
        if (from.low != 2 || from.kind == date) return std::nullopt;
        return PropertyList{static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(bigEndian(*digits))))};
    }

    std::optional<PropertyList> bytes(const Marker& from) {
        const auto content = body(from, 1);
        if (!content || !weigh(content->size())) return std::nullopt;
        return PropertyList{PropertyList::Data{std::string(*content)}};
    }

    std::optional<std::string> text(const Marker& from) {
        const bool isWide = from.kind == utf16Text;
        const auto content = body(from, isWide ? 2 : 1);
        if (!content || !weigh(content->size())) return std::nullopt;
        if (isWide) return fromUTF16(*content);
        if (!isUTF8(*content)) return std::nullopt;
        return std::string(*content);
    }

    std::optional<PropertyList> identifier(const Marker& from) const {
        const auto digits = slice(from.bodyAt, from.low + 1U);
        if (!digits || digits->size() > 8) return std::nullopt;
        const auto value = bigEndian(*digits);
        if (value > std::numeric_limits<std::uint32_t>::max()) return std::nullopt;
        return uniqueID(static_cast<std::uint32_t>(value));
    }

    std::uint64_t reference(std::string_view references, std::size_t at) const {
        return bigEndian(references.substr(at * referenceWidth_, referenceWidth_));
    }

    std::optional<PropertyList> list(const Marker& from, int depth) {
        const auto references = body(from, referenceWidth_);
        if (!references) return std::nullopt;
        PropertyList::Array elements;
        for (std::size_t at = 0; at < references->size() / referenceWidth_; ++at) {
            auto element = object(reference(*references, at), depth + 1);
            if (!element) return std::nullopt;
            elements.push_back(*std::move(element));
        }
        return PropertyList{std::move(elements)};
    }

    // All keys stand before all values.
    std::optional<PropertyList> entries(const Marker& from, int depth) {
        const auto references = body(from, 2 * referenceWidth_);
        if (!references) return std::nullopt;
        PropertyList::Dictionary all;
        const auto size = references->size() / (2 * referenceWidth_);
        for (std::size_t at = 0; at < size; ++at) {
            const auto keyMarker = marker(reference(*references, at));
            if (!keyMarker || (keyMarker->kind != asciiText && keyMarker->kind != utf16Text)) return std::nullopt;
            auto key = text(*keyMarker);
            if (!key || !weigh(valueWeight)) return std::nullopt;
            auto value = object(reference(*references, size + at), depth + 1);
            if (!value) return std::nullopt;
            all.try_emplace(*std::move(key), *std::move(value));
        }
        return PropertyList{std::move(all)};
    }

    std::string_view bytes_;
    std::string_view objects_;
    std::string_view table_;
    std::size_t offsetWidth_ = 0;
    std::size_t referenceWidth_ = 0;
    std::uint64_t objectCount_ = 0;
    std::size_t weight_ = 0;
};

std::size_t widthFor(std::uint64_t largest) {
    if (largest <= 0xFF) return 1;
    if (largest <= 0xFFFF) return 2;
    return largest <= 0xFFFFFFFF ? 4 : 8;
}

void appendInteger(std::string& into, std::int64_t number) {
    const auto width = number < 0 ? 8 : widthFor(static_cast<std::uint64_t>(number));
    into += static_cast<char>(integer << 4U | static_cast<unsigned>(std::countr_zero(width)));
    appendBigEndian(into, static_cast<std::uint64_t>(number), width);
}

void appendMarker(std::string& into, unsigned kind, std::size_t count) {
    const auto low = count < countFollows ? static_cast<unsigned>(count) : countFollows;
    into += static_cast<char>(kind << 4U | low);
    if (low == countFollows) appendInteger(into, static_cast<std::int64_t>(count));
}

void appendText(std::string& into, std::string_view text) {
    if (isASCII(text)) {
        appendMarker(into, asciiText, text.size());
        into += text;
        return;
    }
    const auto units = toUTF16(text);
    appendMarker(into, utf16Text, units.size());
    for (const char16_t unit : units) appendBigEndian(into, unit, 2);
}

// First every object gets its number, then all are written: the width of a reference depends on
// how many there are.
class Writer {
public:
    std::string write(const PropertyList& list) {
        number(list);
        const auto referenceWidth = widthFor(objects_.size());
        std::string bytes(versionedSignature);
        std::vector<std::size_t> offsets;
        offsets.reserve(objects_.size());
        for (const auto& object : objects_) {
            offsets.push_back(bytes.size());
            append(bytes, object, referenceWidth);
        }
        const auto table = bytes.size();
        const auto offsetWidth = widthFor(table);
        for (const auto offset : offsets) appendBigEndian(bytes, offset, offsetWidth);
        bytes.append(6, '\0');
        appendBigEndian(bytes, offsetWidth, 1);
        appendBigEndian(bytes, referenceWidth, 1);
        appendBigEndian(bytes, objects_.size(), 8);
        appendBigEndian(bytes, 0, 8);
        appendBigEndian(bytes, table, 8);
        return bytes;
    }

private:
    struct Object {
        const PropertyList* value; // none: a key
        std::string_view text;
        std::vector<std::size_t> references;
    };

    std::size_t add(const PropertyList* value, std::string_view text = {}) {
        objects_.push_back({value, text, {}});
        return objects_.size() - 1;
    }

    std::size_t numberText(std::string_view text) {
        const auto [known, isNew] = texts_.try_emplace(text, objects_.size());
        return isNew ? add(nullptr, text) : known->second;
    }

    std::size_t number(const PropertyList& list) {
        if (const auto* text = list.as<std::string>()) return numberText(*text);
        const auto self = add(&list);
        std::vector<std::size_t> references;
        if (const auto* elements = list.as<PropertyList::Array>()) {
            for (const auto& element : *elements) references.push_back(number(element));
        } else if (const auto* entries = list.as<PropertyList::Dictionary>(); entries && !uniqueIDOf(list)) {
            for (const auto& entry : *entries) references.push_back(numberText(entry.first));
            for (const auto& entry : *entries) references.push_back(number(entry.second));
        }
        objects_[self].references = std::move(references);
        return self;
    }

    static void append(std::string& into, const Object& object, std::size_t referenceWidth) {
        if (object.value == nullptr) return appendText(into, object.text);
        if (const auto* flag = object.value->as<bool>()) {
            into += static_cast<char>(*flag ? markerTrue : markerFalse);
        } else if (const auto* whole = object.value->as<std::int64_t>()) {
            appendInteger(into, *whole);
        } else if (const auto* fraction = object.value->as<double>()) {
            into += static_cast<char>(real << 4U | 3U);
            appendBigEndian(into, std::bit_cast<std::uint64_t>(*fraction), 8);
        } else if (const auto* content = object.value->as<PropertyList::Data>()) {
            appendMarker(into, data, content->bytes.size());
            into += content->bytes;
        } else {
            appendContainer(into, object, referenceWidth);
        }
    }

    static void appendContainer(std::string& into, const Object& object, std::size_t referenceWidth) {
        if (const auto* entries = object.value->as<PropertyList::Dictionary>()) {
            if (const auto identifier = uniqueIDOf(*object.value)) {
                const auto width = widthFor(*identifier);
                into += static_cast<char>(identifierKind << 4U | (width - 1));
                return appendBigEndian(into, *identifier, width);
            }
            appendMarker(into, dictionary, entries->size());
        } else {
            appendMarker(into, array, object.references.size());
        }
        for (const auto reference : object.references) appendBigEndian(into, reference, referenceWidth);
    }

    std::vector<Object> objects_;
    std::unordered_map<std::string_view, std::size_t> texts_;
};

} // namespace

std::optional<PropertyList> decoded(std::string_view bytes) { return Reader(bytes).read(); }

std::string encoded(const PropertyList& list) { return Writer().write(list); }

bool isUTF8(std::string_view text) {
    if (isASCII(text)) return true;
    auto status = U_ZERO_ERROR;
    std::int32_t length = 0;
    u_strFromUTF8(nullptr, 0, &length, text.data(), static_cast<std::int32_t>(text.size()), &status);
    return status == U_BUFFER_OVERFLOW_ERROR;
}

PropertyList uniqueID(std::uint32_t number) {
    return {PropertyList::Dictionary{{std::string(uniqueIDKey), {std::int64_t{number}}}}};
}

std::optional<std::uint32_t> uniqueIDOf(const PropertyList& list) {
    const auto* entries = list.as<PropertyList::Dictionary>();
    if (entries == nullptr || entries->size() != 1 || entries->begin()->first != uniqueIDKey) return std::nullopt;
    const auto* number = entries->begin()->second.as<std::int64_t>();
    if (number == nullptr || *number < 0 || *number > std::numeric_limits<std::uint32_t>::max()) return std::nullopt;
    return static_cast<std::uint32_t>(*number);
}

} // namespace tallyfoot::binarypropertylist
