#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tallyfoot {

struct OperatingSystemVersion {
    long major;
    long minor;
    long patch;
};

// Facts about the process and its system, asked afresh each time. Any thread. Apple: NSProcessInfo.
class ProcessInfo {
public:
    virtual ~ProcessInfo() = default;
    virtual std::optional<std::string> environment(const std::string& name) const = 0;
    virtual OperatingSystemVersion operatingSystemVersion() const = 0;
    virtual std::string machine() const = 0; // uname's field, up to its first zero byte
};

} // namespace tallyfoot
