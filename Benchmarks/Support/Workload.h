#pragma once

#include <string>

namespace tallyfoot::benchmarks {

// Switches the library on for benchmarks: console off, uploads to this address only when asked for.
void startRecording(const std::string& uploadPath);

// One event of ten attributes in a record of about 400 bytes: five are given, the library adds five.
void logOne();

// What one call of `logOne` puts on disk, separator included. Read back from the disk.
const std::string& oneRecord();

// Starts with an empty log file, so that no file fills up within a measurement.
void forgetLogs();

} // namespace tallyfoot::benchmarks
