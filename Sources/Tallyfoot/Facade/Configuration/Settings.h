#pragma once

#include "Tallyfoot/Facade/Configuration/Environment.h"
#include "Tallyfoot/Facade/Configuration/UploadConfiguration.h"
#include "Tallyfoot/Platform/Exclusive.h"

#include <atomic>
#include <memory>

namespace tallyfoot {

// The process-wide switches that rooms below the facade read. Any thread.
struct Settings {
    std::atomic<bool> isEnabled{true};
    std::atomic<bool> showOutput{true};
    std::atomic<bool> ignoreFileSizeThreshold{false};

    // As last configured; none before.
    Exclusive<std::shared_ptr<UploadConfiguration>> uploadConfiguration;

    std::shared_ptr<Environment> environment(); // a default one is made on first access
    void setEnvironment(std::shared_ptr<Environment> environment);

private:
    Exclusive<std::shared_ptr<Environment>> environment_;
};

// The one that the facade's class-level properties read and write. Never released.
Settings& processSettings();

} // namespace tallyfoot
