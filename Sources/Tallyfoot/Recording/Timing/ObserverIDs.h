#pragma once

#include <cstdint>

namespace tallyfoot {

// Hands out the ids of observers: 1, 2, …; after the largest comes 0.
class ObserverIDs {
public:
    constexpr explicit ObserverIDs(std::uint64_t last = 0) noexcept : last_(last) {}

    constexpr std::uint64_t next() noexcept { return ++last_; }

private:
    std::uint64_t last_;
};

} // namespace tallyfoot
