#include "Tallyfoot/Storage/RecordFile.h"

#include "Tallyfoot/Events/StoredRecord.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

namespace tallyfoot {

namespace {

// Where the last whole record ends; read backwards in blocks, so that memory stays flat.
Result<std::uint64_t> endOfLastRecord(const FileHandle& handle, std::uint64_t size) {
    // The first look is a short one: nearly every file is whole.
    std::array<char, 16384> block;
    std::uint64_t end = size;
    for (std::uint64_t length = recordSeparator.size(); end >= recordSeparator.size(); length = block.size()) {
        const std::uint64_t start = end - std::min(length, end);
        const auto count = handle.read(start, std::span(block).first(static_cast<std::size_t>(end - start)));
        if (!count) return count.error();
        const auto found = std::string_view(block.data(), count.value()).rfind(recordSeparator);
        if (found != std::string_view::npos) return start + found + recordSeparator.size();
        if (start == 0) break;
        end = start + recordSeparator.size() - 1; // a separator may lie across two blocks
    }
    return std::uint64_t{0};
}

// Tells the size that is left.
Result<std::uint64_t> cutOffFragment(FileHandle& handle) {
    auto size = handle.size();
    if (!size) return size;
    auto end = endOfLastRecord(handle, size.value());
    if (!end || end.value() == size.value()) return end;
    if (const auto cut = handle.truncate(end.value()); !cut) return cut.error();
    return end;
}

} // namespace

Result<RecordFile::Opened> RecordFile::open(const std::string& path) {
    auto handle = fileManager_.fileHandleForWriting(path);
    if (!handle) return handle.error();
    if (!handle.value()->lock()) return Opened::anothers;
    handle_ = std::move(handle.value());
    if (const auto size = cutOffFragment(*handle_)) {
        size_ = size.value();
        return Opened::ours;
    }
    // What cannot be cut off is at least kept apart.
    if (auto keptApart = handle_->append(recordSeparator); !keptApart) {
        close();
        return keptApart.error();
    }
    const auto size = handle_->size();
    size_ = size ? size.value() : 0;
    return Opened::ours;
}

Result<void> RecordFile::append(std::string_view record) {
    auto appended = handle_->append(record);
    if (appended) size_ += record.size();
    return appended;
}

} // namespace tallyfoot
