#include "Events/PlatformFacts.h"

#include "Tallyfoot/Events/Device.h"
#include "Tallyfoot/Platform/Posix/PosixNetworkInterfaces.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <limits>

namespace tallyfoot {
namespace {

using testing::PlatformFacts;

TEST(Device, AttributesAreNameUserAgentScreenAndAddress) {
    const PlatformFacts facts{
        .information = {{"CFBundleName", "Shop"}, {"CFBundleShortVersionString", "4.0"}, {"CFBundleVersion", "412"}},
        .addresses = {{"en0", AddressFamily::ipv4, "192.0.2.7"}}};
    EXPECT_EQ(Device(facts.services()).attributes(),
              (Attributes{{LogAttribute::appName, "Shop"},
                          {LogAttribute::userAgent, "iPhone14,2/iOS/17.0.0/4.0/412"},
                          {LogAttribute::deviceScrnDim, "390-844"},
                          {LogAttribute::userIpAddress, "192.0.2.7"}}));
}

TEST(Device, WhatIsMissingIsEmpty) {
    const PlatformFacts facts;
    const auto attributes = Device(facts.services()).attributes();
    EXPECT_EQ(attributes.size(), 4U);
    EXPECT_EQ(*attributes.find(LogAttribute::appName), "");
    EXPECT_EQ(*attributes.find(LogAttribute::userIpAddress), "");
}

std::string dimensions(double width, double height) {
    const PlatformFacts facts{.bounds = {width, height}};
    return Device(facts.services()).screenDimensions();
}

TEST(Device, TheScreensSizeIsTruncated) {
    EXPECT_EQ(dimensions(375.9, 812.0), "375-812");
    EXPECT_EQ(dimensions(0, 0), "0-0");
}

TEST(Device, TheScreensSizeIsTruncatedTowardZero) {
    EXPECT_EQ(dimensions(-0.9, -1.9), "0--1");
    EXPECT_EQ(dimensions(-0.0, 0.999999), "0-0");
}

TEST(Device, TheLargestScreenFits) {
    EXPECT_EQ(dimensions(-0x1p63, std::nextafter(0x1p63, 0)), "-9223372036854775808-9223372036854774784");
}

TEST(DeviceDeathTest, AScreenSizeThatIsNoNumberIsFatal) {
    EXPECT_DEATH(dimensions(std::nan(""), 1), "screen");
    EXPECT_DEATH(dimensions(1, std::numeric_limits<double>::infinity()), "screen");
    EXPECT_DEATH(dimensions(-std::numeric_limits<double>::infinity(), 1), "screen");
}

TEST(DeviceDeathTest, AScreenSizeOutOfRangeIsFatal) {
    EXPECT_DEATH(dimensions(0x1p63, 1), "screen");
    EXPECT_DEATH(dimensions(1, -1e19), "screen");
}

std::optional<std::string> address(std::vector<InterfaceAddress> addresses) {
    const PlatformFacts facts{.addresses = std::move(addresses)};
    return Device(facts.services()).ipAddress();
}

TEST(Device, WithoutInterfacesThereIsNoAddress) { EXPECT_EQ(address({}), std::nullopt); }

TEST(Device, OnlyTheInterfaceEn0Counts) {
    EXPECT_EQ(address({{"lo0", AddressFamily::ipv4, "127.0.0.1"},
                       {"en1", AddressFamily::ipv4, "192.0.2.1"},
                       {"en01", AddressFamily::ipv6, "::1"},
                       {"EN0", AddressFamily::ipv4, "192.0.2.2"}}),
              std::nullopt);
    EXPECT_EQ(address({{"en1", AddressFamily::ipv4, "192.0.2.1"},
                       {"en0", AddressFamily::ipv4, "192.0.2.7"},
                       {"en2", AddressFamily::ipv4, "192.0.2.3"}}),
              "192.0.2.7");
}

TEST(Device, OnlyInternetAddressesCount) {
    EXPECT_EQ(address({{"en0", AddressFamily::other, "00:00:5e:00:53:01"}}), std::nullopt);
    EXPECT_EQ(address({{"en0", AddressFamily::ipv4, "192.0.2.7"}, {"en0", AddressFamily::other, ""}}), "192.0.2.7");
}

TEST(Device, TheLastAddressListedWins) {
    EXPECT_EQ(address({{"en0", AddressFamily::ipv4, "192.0.2.7"}, {"en0", AddressFamily::ipv6, "2001:db8::7"}}),
              "2001:db8::7");
    EXPECT_EQ(address({{"en0", AddressFamily::ipv6, "2001:db8::7"}, {"en0", AddressFamily::ipv4, "192.0.2.7"}}),
              "192.0.2.7");
}

TEST(Device, FactsAreAskedAfreshEachTime) {
    PlatformFacts facts;
    const Device device(facts.services());
    EXPECT_EQ(device.screenDimensions(), "390-844");
    facts.bounds = {844, 390};
    facts.addresses = {{"en0", AddressFamily::ipv4, "192.0.2.7"}};
    EXPECT_EQ(device.screenDimensions(), "844-390");
    EXPECT_EQ(device.ipAddress(), "192.0.2.7");
}

bool runs(const std::string& command) { return std::system((command + " >/dev/null 2>&1").c_str()) == 0; } // NOLINT

// Gives the process a network of its own; a user who is not root needs to become it in a namespace for that.
bool leavesTheNetwork() {
    if (::unshare(CLONE_NEWNET) == 0) return true;
    const auto user = ::getuid();
    if (::unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0) return false;
    std::ofstream("/proc/self/uid_map") << "0 " << user << " 1\n";
    return true;
}

TEST(Device, ARealInterfaceNamedEn0IsFound) {
    if (!runs("command -v ip")) GTEST_SKIP() << "the command ip is missing";
    if (!leavesTheNetwork()) GTEST_SKIP() << "a network namespace of the test's own is not permitted";
    // A pair of linked ends where the kernel has no stand-alone interface to offer.
    if (!runs("ip link add en0 type dummy") && !runs("ip link add en0 type veth peer name en1"))
        GTEST_SKIP() << "no interface can be made in the namespace";

    PlatformFacts facts;
    auto services = facts.services();
    services.networkInterfaces = std::make_shared<PosixNetworkInterfaces>();
    const Device device(services);
    EXPECT_EQ(device.ipAddress(), std::nullopt) << "it has no address yet";

    ASSERT_TRUE(runs("ip address add 192.0.2.7/24 dev en0 && ip link set en0 up"));
    // The kernel may give it an IPv6 address of its own, which then is the last one.
    ASSERT_TRUE(device.ipAddress());
    if (runs("ip -6 address flush dev en0")) {
        EXPECT_EQ(device.ipAddress(), "192.0.2.7");
    }
    if (runs("ip -6 address add 2001:db8::7/64 dev en0 nodad")) {
        EXPECT_EQ(device.ipAddress(), "2001:db8::7");
    }
}

} // namespace
} // namespace tallyfoot
