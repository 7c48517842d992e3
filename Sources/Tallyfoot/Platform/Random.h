#pragma once

#include <cstdint>
#include <string>

namespace tallyfoot {

// Random numbers and identifiers of the system's generator. Any thread; a forked child never
// repeats its parent's. Apple: arc4random and NSUUID.
class Random {
public:
    virtual ~Random() = default;
    virtual std::uint32_t number() = 0;
    virtual std::string uuidString() = 0; // version 4, canonical, upper case, 36 characters
};

} // namespace tallyfoot
