#include "Tallyfoot/Facade/LineBuffer.h"

namespace tallyfoot {

namespace {

// A single huge event must not hold its memory for as long as the thread lives.
constexpr std::size_t largestKept = std::size_t{64} * 1024;

enum class Lending { available, lent, gone };

// Outlives the thread's other variables, since it has no destructor.
thread_local Lending lending = Lending::available;

struct ThreadText {
    std::string text;
    ThreadText() = default;

    ~ThreadText() { lending = Lending::gone; }

    ThreadText(const ThreadText&) = delete;
    ThreadText& operator=(const ThreadText&) = delete;
};

std::string& threadText() {
    thread_local ThreadText kept;
    return kept.text;
}

} // namespace

LineBuffer::LineBuffer() : text_(&own_) {
    if (lending != Lending::available) return;
    text_ = &threadText();
    lending = Lending::lent;
}

LineBuffer::~LineBuffer() {
    if (text_ == &own_) return;
    if (text_->capacity() > largestKept) std::string().swap(*text_);
    lending = Lending::available;
}

} // namespace tallyfoot
