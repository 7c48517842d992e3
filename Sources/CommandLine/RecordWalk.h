#pragma once

#include "Collector/RecordReader.h"

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace tallyfoot::commandline {

// Where the records of a log file, an archive of logs or a folder of both go, in their order.
struct RecordVisitor {
    // `log` names the file, and the entry where it is in an archive.
    std::function<void(const std::string& log, std::string_view record)> record;
    // A torn tail, or what is no record.
    std::function<void(const std::string& log, const collector::LogPiece& piece)> fragment;
    std::function<void(const std::string& path, const std::string& reason)> unreadable;
};

// A name that ends in .zip is an archive, any other file a log. Of a folder, everything below that
// ends in .log or .zip is read in the order of its path; hidden files are not.
void walkRecords(const std::filesystem::path& path, const RecordVisitor& visitor);

} // namespace tallyfoot::commandline
