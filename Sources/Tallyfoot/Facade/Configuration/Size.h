#pragma once

#include <cstdint>

namespace tallyfoot {

// A number of bytes, counted in a unit.
class Size {
public:
    enum class Unit { bytes, KB, MB, GB, TB };

    static constexpr Size bytes(std::int64_t n) noexcept { return {Unit::bytes, n}; }
    static constexpr Size KB(std::int64_t n) noexcept { return {Unit::KB, n}; }
    static constexpr Size MB(std::int64_t n) noexcept { return {Unit::MB, n}; }
    static constexpr Size GB(std::int64_t n) noexcept { return {Unit::GB, n}; }
    static constexpr Size TB(std::int64_t n) noexcept { return {Unit::TB, n}; }

    constexpr Unit unit() const noexcept { return unit_; }
    constexpr std::int64_t count() const noexcept { return count_; }

    // In 32-bit floating point. A terabyte counts as a gigabyte: the thresholds were tuned to it.
    constexpr float inBytes() const noexcept {
        switch (unit_) {
        case Unit::bytes: return static_cast<float>(count_);
        case Unit::KB: return static_cast<float>(count_) * 1024.0F;
        case Unit::MB: return static_cast<float>(count_) * 1048576.0F;
        case Unit::GB:
        case Unit::TB: return static_cast<float>(count_) * 1073741824.0F;
        }
        return 0;
    }

    constexpr bool operator==(const Size&) const = default;

private:
    constexpr Size(Unit unit, std::int64_t count) noexcept : unit_(unit), count_(count) {}
    Unit unit_;
    std::int64_t count_;
};

} // namespace tallyfoot
