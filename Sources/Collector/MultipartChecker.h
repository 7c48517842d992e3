#pragma once

#include "Collector/Problem.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tallyfoot::collector {

// The parts of an upload's body.
struct MultipartContent {
    bool readable = false; // delimiters and part headers can be followed from the first to the closing one
    std::string boundary;
    std::vector<std::pair<std::string, std::string>> fields; // in their order
    bool hasFile = false;
    std::string filename;
    std::string_view file; // in the body that was checked

    std::string_view field(std::string_view name) const; // empty when there is none
};

// Reads a multipart/form-data body byte for byte and reports every departure from the upload
// protocol: the boundary's form, line ends, part headers, field names, the closing delimiter.
// `contentType` is the header's value.
MultipartContent checkMultipart(std::string_view contentType, std::string_view body, Problems& problems);

} // namespace tallyfoot::collector
