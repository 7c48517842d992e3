#pragma once

#include "Tallyfoot/Platform/PropertyList.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace tallyfoot {

// A file of numbers by key, mapped into memory: what was stored outlives the process at once and
// whole, and other processes that map it see it. Reading and storing are a few atomic steps. A key
// takes its slot for ever. Any thread; `slotFor` under the lock of the store.
class NumberTable {
public:
    using Number = std::variant<bool, std::int64_t, double>;

    class Slot {
    public:
        std::optional<Number> number() const noexcept;
        void store(Number number) noexcept; // a reader sees the former one or this one
        void clear() noexcept;

    private:
        friend class NumberTable;
        enum Kind : std::uint64_t { none, no, yes, integer, real };
        static constexpr std::size_t keyCapacity = 100;

        bool isSound() const noexcept;
        bool isFree() const noexcept { return keyMark_.load(std::memory_order_acquire) == 0; }
        std::string_view key() const noexcept { return {key_.data(), keyMark_.load(std::memory_order_acquire) - 1}; }
        void take(std::string_view key) noexcept;

        std::atomic<std::uint64_t> kind_;
        std::atomic<std::int64_t> integer_;
        std::atomic<double> real_;
        std::atomic<std::uint32_t> keyMark_; // length + 1, written last; 0 is a free slot
        std::array<char, keyCapacity> key_;
    };

    struct Opened {
        std::unique_ptr<NumberTable> table;
        bool isDamaged = false; // there is something at the path that is no table of ours
    };
    static Opened open(const std::string& path);
    // Makes the file, all of its room allocated, under a hidden name first. False on failure.
    static bool create(const std::string& path);

    ~NumberTable();
    NumberTable(const NumberTable&) = delete;
    NumberTable& operator=(const NumberTable&) = delete;

    Slot* find(std::string_view key) const noexcept; // null when the key has none
    Slot* slotFor(std::string_view key) noexcept;    // takes one; null when the key is too long or all are taken

    bool isWritable() const noexcept { return isWritable_; }
    bool isFileAt(const std::string& path) const noexcept; // and not removed or replaced meanwhile

    // Counts the values that moved out of the table's sight or into it, for readers to notice.
    std::uint64_t generation() const noexcept;
    void nextGeneration() noexcept;

private:
    struct Layout;
    NumberTable(Layout* layout, bool isWritable, std::uint64_t device, std::uint64_t node)
        : layout_(layout), isWritable_(isWritable), device_(device), node_(node) {}

    Layout* layout_;
    bool isWritable_;
    std::uint64_t device_;
    std::uint64_t node_;
};

} // namespace tallyfoot
