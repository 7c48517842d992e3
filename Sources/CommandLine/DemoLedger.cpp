#include "CommandLine/DemoLedger.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>

namespace tallyfoot::commandline {

namespace {

constexpr std::string_view identifierPrefix = "DE300000-0000-4000-8000-";

} // namespace

std::int64_t DemoLedger::begin() {
    MutexLock lock(mutex_);
    return ++begun_;
}

void DemoLedger::logged(std::int64_t count) {
    MutexLock lock(mutex_);
    logged_ += count;
    write("{\"logged\":" + std::to_string(logged_) + "}");
}

void DemoLedger::tell(std::string_view line) {
    MutexLock lock(mutex_);
    write(line);
}

void DemoLedger::tellBegun(std::string_view name) {
    MutexLock lock(mutex_);
    write("{\"" + std::string(name) + "\":" + std::to_string(begun_) + "}");
}

// Nobody to tell means nobody to work for.
void DemoLedger::write(std::string_view line) {
    const std::string text = std::string(line) + "\n";
    std::string_view rest = text;
    while (!rest.empty()) {
        const auto count = ::write(descriptor_, rest.data(), rest.size());
        if (count >= 0) {
            rest.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            std::_Exit(1);
        }
    }
}

std::string DemoLedger::identifier(std::int64_t number) {
    std::array<char, 32> digits{};
    std::snprintf(digits.data(), digits.size(), "%012lld", static_cast<long long>(number));
    return std::string(identifierPrefix) + digits.data();
}

std::int64_t DemoLedger::number(std::string_view identifier) {
    if (!identifier.starts_with(identifierPrefix)) return 0;
    identifier.remove_prefix(identifierPrefix.size());
    std::int64_t number = 0;
    const auto* end = identifier.data() + identifier.size();
    return std::from_chars(identifier.data(), end, number).ptr == end ? number : 0;
}

std::string DemoLedger::label(std::int64_t number) { return "Event " + std::to_string(number); }

} // namespace tallyfoot::commandline
