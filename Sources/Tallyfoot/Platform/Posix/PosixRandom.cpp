#include "Tallyfoot/Platform/Posix/PosixRandom.h"

#include "Tallyfoot/Platform/Posix/FileDescriptor.h"
#include "Tallyfoot/Platform/Posix/SystemError.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/random.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstring>
#include <span>

namespace tallyfoot {

namespace {

// Counts the forks that lead to this process, so that a child draws anew.
std::atomic<std::uint64_t> forks{1};

void watchForks() {
    static const int watched = ::pthread_atfork(nullptr, nullptr, [] { forks.fetch_add(1); });
    (void)watched;
}

bool fillFromSystem(std::span<unsigned char> bytes) {
    while (!bytes.empty()) {
        const auto count = retrying([&] { return ::getrandom(bytes.data(), bytes.size(), 0); });
        if (count <= 0) return false;
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

bool fillFromDevice(std::span<unsigned char> bytes) {
    const FileDescriptor device(::open("/dev/urandom", O_RDONLY | O_CLOEXEC));
    while (device && !bytes.empty()) {
        const auto count = retrying([&] { return ::read(device.number(), bytes.data(), bytes.size()); });
        if (count <= 0) return false;
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return bytes.empty();
}

// The last resort: different in every process, thread and moment, but no secret.
void fillFromClocks(std::span<unsigned char> bytes) {
    static std::atomic<std::uint64_t> counter{0};
    auto state = static_cast<std::uint64_t>(std::chrono::system_clock::now().time_since_epoch().count());
    state ^= static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count()) << 20U;
    state ^= static_cast<std::uint64_t>(::getpid()) << 40U;
    state += counter.fetch_add(1) << 56U;
    for (auto& byte : bytes) { // splitmix64
        state += 0x9E3779B97F4A7C15U;
        auto mixed = (state ^ (state >> 30U)) * 0xBF58476D1CE4E5B9U;
        mixed = (mixed ^ (mixed >> 27U)) * 0x94D049BB133111EBU;
        byte = static_cast<unsigned char>(mixed >> 56U);
    }
}

// Plain memory without a destructor: it is there for as long as its thread is.
struct Batch {
    std::uint64_t fork = 0;
    std::size_t next = 0;
    std::array<unsigned char, 4096> bytes{};

    std::span<const unsigned char> take(std::size_t count) {
        if (fork != forks.load(std::memory_order_relaxed) || bytes.size() - next < count) refill();
        next += count;
        return std::span<const unsigned char>(bytes).subspan(next - count, count);
    }

    void refill() {
        watchForks();
        if (!fillFromSystem(bytes) && !fillFromDevice(bytes)) fillFromClocks(bytes);
        fork = forks.load(std::memory_order_relaxed);
        next = 0;
    }
};

constinit thread_local Batch batch{};

constexpr auto hexadecimal = [] {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::array<std::array<char, 2>, 256> pairs{};
    for (std::size_t byte = 0; byte < pairs.size(); ++byte) pairs[byte] = {digits[byte >> 4U], digits[byte & 0xFU]};
    return pairs;
}();

} // namespace

std::uint32_t PosixRandom::number() {
    std::uint32_t value = 0;
    std::memcpy(&value, batch.take(sizeof value).data(), sizeof value);
    return value;
}

std::string PosixRandom::uuidString() {
    std::array<unsigned char, 16> bytes;
    std::memcpy(bytes.data(), batch.take(bytes.size()).data(), bytes.size());
    bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0FU) | 0x40U); // version 4
    bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3FU) | 0x80U); // the variant

    std::string text(36, '-');
    std::size_t at = 0;
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        if (index == 4 || index == 6 || index == 8 || index == 10) ++at;
        std::memcpy(text.data() + at, hexadecimal[bytes[index]].data(), 2);
        at += 2;
    }
    return text;
}

} // namespace tallyfoot
