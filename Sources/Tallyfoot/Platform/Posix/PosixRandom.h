#pragma once

#include "Tallyfoot/Platform/Random.h"

namespace tallyfoot {

// Bytes of the system's generator, drawn by each thread in batches. Usable until the last moment of
// a thread or of the process. Without getrandom the bytes come from /dev/urandom; without that from
// the clocks and the process's number, which still tell records apart but can be guessed.
class PosixRandom final : public Random {
public:
    std::uint32_t number() override;
    std::string uuidString() override;
};

} // namespace tallyfoot
