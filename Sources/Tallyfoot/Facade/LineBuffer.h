#pragma once

#include <string>

namespace tallyfoot {

// The text of the event that a call is about to record: a buffer that its thread keeps, so that
// rendering allocates nothing, or one of the call's own where the thread has none to lend: it is
// at an event already (the host's code logged from inside a log call), or it is ending.
class LineBuffer {
public:
    LineBuffer();
    ~LineBuffer();
    LineBuffer(const LineBuffer&) = delete;
    LineBuffer& operator=(const LineBuffer&) = delete;

    std::string& operator*() noexcept { return *text_; }

private:
    std::string own_;
    std::string* text_;
};

} // namespace tallyfoot
