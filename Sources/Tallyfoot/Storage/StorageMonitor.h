#pragma once

namespace tallyfoot {

// The two thresholds of a writer, in bytes.
struct StorageMonitor {
    float thresholdFileSize;    // the current log file is full at this size
    float thresholdStorageSize; // the budget of the closed files
};

} // namespace tallyfoot
