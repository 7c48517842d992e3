#pragma once

#include "Collector/Answer.h"
#include "Collector/Database.h"
#include "Collector/UploadChecker.h"

#include "Tallyfoot/Platform/Mutex.h"

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tallyfoot::collector {

// One record of one upload.
struct StoredEvent {
    std::int64_t id = 0;
    std::int64_t upload = 0;
    std::string file;
    std::string evtId;
    std::string evtType;
    bool accepted = false;  // the answer accepted its file, whether or not the client got to see it
    bool duplicate = false; // its evtId had been accepted before
    std::string record;
};

struct EventFilter {
    std::int64_t after = 0; // an event's id
    std::optional<std::string> type;
    std::optional<bool> accepted;
    std::optional<bool> duplicate;
};

struct StoreCounts {
    std::int64_t uploads = 0;
    std::int64_t problems = 0;
    std::int64_t events = 0;     // records, however often they came
    std::int64_t confirmed = 0;  // different events that were accepted
    std::int64_t duplicates = 0; // records that had been accepted before
};

// Uploads, files, records and problems in SQLite. Any thread; one at a time. Failures throw DatabaseError.
class CollectorStore {
public:
    explicit CollectorStore(const std::string& file);

    // All of an upload or nothing; committed when it returns. Gives the upload's id.
    std::int64_t store(const CheckedUpload& upload, const Fault& fault, const Answer& answer);
    void markUnanswered(std::int64_t upload); // its answer could not be sent

    std::vector<StoredEvent> events(const EventFilter& filter);
    nlohmann::ordered_json uploads();
    nlohmann::ordered_json problems();
    StoreCounts counts();
    void clear();

private:
    std::int64_t insertUpload(const CheckedUpload& upload, const Fault& fault, const Answer& answer)
        TALLYFOOT_REQUIRES(mutex_);
    void insertFile(std::int64_t upload, const CheckedFile& file, bool accepted) TALLYFOOT_REQUIRES(mutex_);
    void insertRecords(std::int64_t upload, const CheckedFile& file, bool accepted) TALLYFOOT_REQUIRES(mutex_);
    void insertProblems(std::int64_t upload, const Problems& problems) TALLYFOOT_REQUIRES(mutex_);
    nlohmann::ordered_json filesOf(std::int64_t upload) TALLYFOOT_REQUIRES(mutex_);

    Mutex mutex_;
    Database database_ TALLYFOOT_GUARDED_BY(mutex_);
};

} // namespace tallyfoot::collector
