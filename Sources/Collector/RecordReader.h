#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace tallyfoot::collector {

// Ends every stored record. It stands in the text itself and is not escaped inside of values.
inline constexpr std::string_view recordSeparator = "jsonsplit";

// Deepest nesting of a record; deeper ones are no records.
inline constexpr int deepestRecord = 512;

// A stretch of a log: a whole record without its separator, something between two separators that
// is no record, or an unfinished record at the end.
struct LogPiece {
    enum class Kind { record, malformed, tornTail };
    Kind kind;
    std::size_t offset;
    std::string_view text;
};

// Takes a log apart, in order. A record ends where its JSON object ends, so a value that holds the
// separator's word stays whole. Every byte of the log but the separators is in exactly one piece.
class RecordReader {
public:
    explicit RecordReader(std::string_view log) noexcept : log_(log) {} // the text must outlive the reader
    std::optional<LogPiece> next();

private:
    LogPiece pieceUpTo(std::size_t end, LogPiece::Kind kind);

    std::string_view log_;
    std::size_t position_ = 0;
};

} // namespace tallyfoot::collector
