#pragma once

#include "Tallyfoot/Platform/NetworkInterfaces.h"

namespace tallyfoot {

class PosixNetworkInterfaces final : public NetworkInterfaces {
public:
    std::vector<InterfaceAddress> addresses() const override;
};

} // namespace tallyfoot
