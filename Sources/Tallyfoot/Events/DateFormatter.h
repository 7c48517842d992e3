#pragma once

#include "Tallyfoot/Platform/Clock.h"
#include "Tallyfoot/Platform/Mutex.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tallyfoot {

// Dates by a pattern, in the device's locale and time zone. Any thread. With a bad pattern there are
// no texts and no dates. Apple: NSDateFormatter.
class DateFormatter {
public:
    explicit DateFormatter(std::string_view pattern);
    ~DateFormatter();

    std::string string(Date date) const;                   // milliseconds are rounded to the nearest
    std::optional<Date> date(std::string_view text) const; // not lenient: all of it, or nothing

private:
    struct Implementation;
    mutable Mutex mutex_;
    std::unique_ptr<Implementation> implementation_ TALLYFOOT_GUARDED_BY(mutex_);
};

} // namespace tallyfoot
