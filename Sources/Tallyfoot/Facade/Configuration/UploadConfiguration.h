#pragma once

#include "Tallyfoot/Export.h"
#include "Tallyfoot/Facade/Configuration/Size.h"
#include "Tallyfoot/Platform/Exclusive.h"
#include "Tallyfoot/Recording/Timing/RepeaterInterval.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace tallyfoot {

// When and where to upload. All but the upload path is fixed once made.
class TALLYFOOT_EXPORT UploadConfiguration {
public:
    // At least 10 seconds and 10 events; smaller values are raised. Files of 10 MiB, storage of 10 MiB.
    // More seconds than 64 bits hold milliseconds of are fatal when the recording starts.
    UploadConfiguration(std::int64_t seconds, std::int64_t eventsCount);

    // Made once, on first use: 1800 seconds, 10 events, files and storage of 5 MiB, and the upload
    // path that the current environment has at that moment.
    static std::shared_ptr<UploadConfiguration> defaultConfiguration();

    // A fixed upload address on the default acceptance-test server.
    static std::string fixedUploadPath();

    RepeaterInterval frequency() const noexcept { return frequency_; } // always in seconds

    Size fileSize() const noexcept { return fileSize_; } // always in bytes; a file this large is closed

    std::int64_t eventsCount() const noexcept { return eventsCount_; } // more than this many trigger an upload

    Size storageSize() const noexcept { return storageSize_; } // always in bytes; the waiting files' budget

    std::optional<std::string> uploadPath() const; // none: the environment's
    void setUploadPath(std::optional<std::string> path);

private:
    UploadConfiguration(double seconds, std::int64_t eventsCount, Size size, std::optional<std::string> uploadPath);

    RepeaterInterval frequency_;
    Size fileSize_;
    std::int64_t eventsCount_;
    Size storageSize_;
    Exclusive<std::optional<std::string>> uploadPath_;
};

} // namespace tallyfoot
