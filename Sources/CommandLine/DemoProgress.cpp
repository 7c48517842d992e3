#include "CommandLine/DemoProgress.h"

#include <unistd.h>

#include <array>
#include <cstdio>
#include <iostream>

namespace tallyfoot::commandline {

namespace {

constexpr const char* eraseLine = "\r\x1b[K";

} // namespace

DemoProgress::DemoProgress() : isTerminal_(::isatty(STDOUT_FILENO) == 1) {}

std::string DemoProgress::line() const {
    std::array<char, 160> text{};
    const auto number = [](std::int64_t count) { return static_cast<long long>(count); };
    std::snprintf(text.data(), text.size(), "  logged %5lld  written %4lld  packed %4lld  sent %5lld  confirmed %5lld",
                  number(counts_.logged), number(counts_.written), number(counts_.packed), number(counts_.sent),
                  number(counts_.confirmed));
    return text.data();
}

void DemoProgress::step(const std::string& text) {
    endStep();
    std::cout << text << std::endl;
}

void DemoProgress::show(const Counts& counts) {
    counts_ = counts;
    isLineShown_ = true;
    if (isTerminal_) std::cout << eraseLine << line() << std::flush;
}

void DemoProgress::endStep() {
    if (!isLineShown_) return;
    std::cout << (isTerminal_ ? eraseLine : "") << line() << std::endl;
    isLineShown_ = false;
}

} // namespace tallyfoot::commandline
