#pragma once

#include "Collector/Changes.h"
#include "Collector/CollectorStore.h"
#include "Collector/FaultQueue.h"

#include <httplib.h>

#include <cstdint>

namespace tallyfoot::collector {

// Takes one upload: reads, checks, stores, then answers as the next fault says. What the client is
// told has been committed before.
class UploadHandler {
public:
    UploadHandler(CollectorStore& store, FaultQueue& faults, Changes& changes)
        : store_(store), faults_(faults), changes_(changes) {}

    void handle(const httplib::ContentReader& readContent, httplib::Response& response);

private:
    void handleInterrupted(const Fault& fault, std::size_t bodyBytes, httplib::Response& response);
    void handleWhole(const Fault& fault, const std::string& body, httplib::Response& response);
    void noteLostAnswer(std::int64_t upload);

    CollectorStore& store_;
    FaultQueue& faults_;
    Changes& changes_;
};

} // namespace tallyfoot::collector
