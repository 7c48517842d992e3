#pragma once

#include "Collector/Fault.h"
#include "Collector/UploadChecker.h"

#include <string>
#include <vector>

namespace tallyfoot::collector {

// What an upload is told, and which of its files that accepts.
struct Answer {
    int httpStatus = 200;
    std::string statusCode;
    std::string contentType = "application/json";
    std::string location;
    std::string body;
    std::vector<bool> accepted; // one a file, in the archive's order
    bool isSent = true;         // otherwise the client never learns of it
};

// A file that could not be read is never accepted. An upload whose archive cannot be read gets, where a
// plain answer is due, HTTP 400 and its own name under "failure", which makes the client keep everything.
Answer answerTo(const CheckedUpload& upload, const Fault& fault);

// For an upload that could not be stored: the client is to send it again.
Answer answerToUnstored(const CheckedUpload& upload, const std::string& reason);

} // namespace tallyfoot::collector
