#pragma once

#include "Collector/MultipartChecker.h"
#include "Collector/RecordChecker.h"
#include "Collector/RequestHead.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tallyfoot::collector {

// One log file of an upload's archive.
struct CheckedFile {
    std::string name;
    std::string bytes;
    bool readable = false; // whole, and its checksum right
    std::vector<CheckedRecord> records;
};

// An upload as far as it could be read, with everything that is wrong about it.
struct CheckedUpload {
    RequestHead head;
    std::string cookie; // the header's value
    std::string boundary;
    std::string filename;
    std::vector<std::pair<std::string, std::string>> fields;
    std::size_t bodyBytes = 0;
    bool readable = false; // the archive could be opened
    std::vector<CheckedFile> files;
    Problems problems;
};

// Checks a whole upload: head, multipart body, archive, records.
CheckedUpload checkUpload(std::string_view head, std::string_view body);

// The same for an upload whose body never came whole.
CheckedUpload checkInterruptedUpload(std::string_view head, std::size_t bodyBytes);

} // namespace tallyfoot::collector
