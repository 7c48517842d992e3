#include "Tallyfoot/Platform/Posix/PosixNetworkInterfaces.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>

#include <algorithm>

namespace tallyfoot::testing {
namespace {

TEST(PosixNetworkInterfaces, FindTheLoopbackInterface) {
    const auto all = PosixNetworkInterfaces().addresses();
    const auto isLoopback = [](const InterfaceAddress& one) {
        return one.family == AddressFamily::ipv4 && one.numericHost == "127.0.0.1";
    };
    const auto found = std::find_if(all.begin(), all.end(), isLoopback);
    ASSERT_NE(found, all.end());
    EXPECT_FALSE(found->name.empty());
}

TEST(PosixNetworkInterfaces, GiveNumericHostsOfTheirFamily) {
    for (const auto& one : PosixNetworkInterfaces().addresses()) {
        const auto number = one.numericHost.substr(0, one.numericHost.find('%'));
        in6_addr parsed{};
        if (one.family == AddressFamily::ipv4)
            EXPECT_EQ(::inet_pton(AF_INET, number.c_str(), &parsed), 1) << one.numericHost;
        else if (one.family == AddressFamily::ipv6)
            EXPECT_EQ(::inet_pton(AF_INET6, number.c_str(), &parsed), 1) << one.numericHost;
        else
            EXPECT_EQ(one.numericHost, "");
    }
}

} // namespace
} // namespace tallyfoot::testing
