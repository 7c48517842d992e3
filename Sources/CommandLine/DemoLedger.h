#pragma once

#include "Tallyfoot/Platform/Mutex.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace tallyfoot::commandline {

// Numbers the demo's events and tells on a pipe what has become of them. A number is given before its
// event is logged: what was begun before some moment is known exactly. Any thread.
class DemoLedger {
public:
    explicit DemoLedger(int descriptor, std::int64_t begun = 0) : descriptor_(descriptor), begun_(begun) {}

    std::int64_t begin();            // the next event's number, from 1, or behind those of a former start
    void logged(std::int64_t count); // so many calls have returned; told at once
    void tell(std::string_view line);
    // A line with the number of events begun so far, under that name.
    void tellBegun(std::string_view name);

    static std::string identifier(std::int64_t number);      // the event's evtId
    static std::int64_t number(std::string_view identifier); // 0 for one that is none of ours
    static std::string label(std::int64_t number);           // the event's evtLabel

private:
    void write(std::string_view line) TALLYFOOT_REQUIRES(mutex_);

    Mutex mutex_;
    int descriptor_;
    std::int64_t begun_ TALLYFOOT_GUARDED_BY(mutex_);
    std::int64_t logged_ TALLYFOOT_GUARDED_BY(mutex_) = 0;
};

} // namespace tallyfoot::commandline
