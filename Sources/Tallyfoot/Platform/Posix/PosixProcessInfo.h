#pragma once

#include "Tallyfoot/Platform/ProcessInfo.h"

namespace tallyfoot {

class PosixProcessInfo final : public ProcessInfo {
public:
    std::optional<std::string> environment(const std::string& name) const override;
    OperatingSystemVersion operatingSystemVersion() const override; // the kernel's
    std::string machine() const override;
};

// The numbers at the head of a release such as "6.1.0-13-amd64"; what is missing is 0.
OperatingSystemVersion operatingSystemVersion(std::string_view release);

} // namespace tallyfoot
