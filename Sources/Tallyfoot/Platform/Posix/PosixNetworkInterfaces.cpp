#include "Tallyfoot/Platform/Posix/PosixNetworkInterfaces.h"

#include <ifaddrs.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <array>
#include <memory>

namespace tallyfoot {

namespace {

InterfaceAddress described(const ifaddrs& entry) {
    const int family = entry.ifa_addr == nullptr ? AF_UNSPEC : entry.ifa_addr->sa_family;
    if (family != AF_INET && family != AF_INET6) return {entry.ifa_name, AddressFamily::other, ""};
    const bool isIPv4 = family == AF_INET;
    const socklen_t length = isIPv4 ? sizeof(sockaddr_in) : sizeof(sockaddr_in6);
    std::array<char, NI_MAXHOST> text{}; // 1025
    if (::getnameinfo(entry.ifa_addr, length, text.data(), text.size(), nullptr, 0, NI_NUMERICHOST) != 0)
        text[0] = '\0';
    return {entry.ifa_name, isIPv4 ? AddressFamily::ipv4 : AddressFamily::ipv6, text.data()};
}

} // namespace

std::vector<InterfaceAddress> PosixNetworkInterfaces::addresses() const {
    ifaddrs* first = nullptr;
    if (::getifaddrs(&first) != 0) return {};
    const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> list(first, &::freeifaddrs);
    std::vector<InterfaceAddress> all;
    for (const auto* entry = first; entry != nullptr; entry = entry->ifa_next) all.push_back(described(*entry));
    return all;
}

} // namespace tallyfoot
