#pragma once

#include <string>
#include <vector>

namespace tallyfoot {

enum class AddressFamily { ipv4, ipv6, other };

struct InterfaceAddress {
    std::string name;
    AddressFamily family;
    std::string numericHost; // empty where the address has no numeric text
};

// Apple: getifaddrs and getnameinfo. Any thread.
class NetworkInterfaces {
public:
    virtual ~NetworkInterfaces() = default;
    virtual std::vector<InterfaceAddress> addresses() const = 0; // in the system's order; empty on failure
};

} // namespace tallyfoot
