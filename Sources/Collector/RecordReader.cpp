#include "Collector/RecordReader.h"

#include <nlohmann/json.hpp>

#include <iterator>

namespace tallyfoot::collector {

namespace {

using nlohmann::json;

// Lets the parser run over the text and tells how far it came.
class CountingIterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    CountingIterator(const char* position, std::size_t* consumed) : position_(position), consumed_(consumed) {}
    reference operator*() const { return *position_; }

    CountingIterator& operator++() {
        ++position_;
        ++*consumed_;
        return *this;
    }

    CountingIterator operator++(int) {
        const auto before = *this;
        ++*this;
        return before;
    }

    bool operator==(const CountingIterator& other) const { return position_ == other.position_; }

private:
    const char* position_;
    std::size_t* consumed_;
};

// Keeps nothing; stops at what nests too deep.
class DepthGuard final : public nlohmann::json_sax<json> {
public:
    bool null() override { return true; }
    bool boolean(bool) override { return true; }
    bool number_integer(number_integer_t) override { return true; }
    bool number_unsigned(number_unsigned_t) override { return true; }
    bool number_float(number_float_t, const string_t&) override { return true; }
    bool string(string_t&) override { return true; }
    bool binary(binary_t&) override { return true; }
    bool key(string_t&) override { return true; }
    bool start_object(std::size_t) override { return ++depth_ <= deepestRecord; }
    bool start_array(std::size_t) override { return ++depth_ <= deepestRecord; }

    bool end_object() override {
        --depth_;
        return true;
    }

    bool end_array() override {
        --depth_;
        return true;
    }

    bool parse_error(std::size_t, const std::string&, const json::exception&) override { return false; }

private:
    int depth_ = 0;
};

struct Scan {
    bool isObject;
    std::size_t length; // of the object, or of what was read until it could be none
};

Scan scanObject(std::string_view text) {
    if (!text.starts_with('{')) return {false, 0};
    std::size_t consumed = 0;
    DepthGuard guard;
    const bool whole = json::sax_parse(CountingIterator(text.data(), &consumed),
                                       CountingIterator(text.data() + text.size(), &consumed), &guard,
                                       json::input_format_t::json, false);
    return {whole, consumed};
}

} // namespace

LogPiece RecordReader::pieceUpTo(std::size_t end, LogPiece::Kind kind) {
    const LogPiece piece{kind, position_, log_.substr(position_, end - position_)};
    position_ = kind == LogPiece::Kind::tornTail ? log_.size() : end + recordSeparator.size();
    return piece;
}

std::optional<LogPiece> RecordReader::next() {
    if (position_ >= log_.size()) return std::nullopt;
    const auto rest = log_.substr(position_);
    const auto scan = scanObject(rest);
    if (scan.isObject && rest.substr(scan.length).starts_with(recordSeparator)) {
        return pieceUpTo(position_ + scan.length, LogPiece::Kind::record);
    }
    // JSON that the end of the log cuts off is one torn record, whatever its values hold.
    const bool cutOff = !scan.isObject && scan.length == rest.size();
    const auto separator = cutOff ? std::string_view::npos : log_.find(recordSeparator, position_);
    if (separator == std::string_view::npos) return pieceUpTo(log_.size(), LogPiece::Kind::tornTail);
    return pieceUpTo(separator, LogPiece::Kind::malformed);
}

} // namespace tallyfoot::collector
