#include "Collector/CollectorStore.h"

#include "Collector/JSONText.h"

#include <nlohmann/json.hpp>

#include <chrono>

namespace tallyfoot::collector {

namespace {

using nlohmann::ordered_json;

constexpr const char* schema = R"(
PRAGMA journal_mode = WAL;
PRAGMA synchronous = NORMAL;
CREATE TABLE IF NOT EXISTS uploads(
    id INTEGER PRIMARY KEY, received INTEGER NOT NULL, target TEXT NOT NULL, headers TEXT NOT NULL,
    cookie TEXT NOT NULL, boundary TEXT NOT NULL, filename TEXT NOT NULL, fields TEXT NOT NULL,
    bodyBytes INTEGER NOT NULL, fault TEXT NOT NULL, httpStatus INTEGER NOT NULL, statusCode TEXT NOT NULL,
    answer TEXT NOT NULL, answered INTEGER NOT NULL);
CREATE TABLE IF NOT EXISTS files(
    id INTEGER PRIMARY KEY, upload INTEGER NOT NULL, name TEXT NOT NULL, bytes INTEGER NOT NULL,
    records INTEGER NOT NULL, accepted INTEGER NOT NULL, content BLOB NOT NULL);
CREATE TABLE IF NOT EXISTS events(
    id INTEGER PRIMARY KEY AUTOINCREMENT, upload INTEGER NOT NULL, file TEXT NOT NULL, evtId TEXT NOT NULL,
    evtType TEXT NOT NULL, accepted INTEGER NOT NULL, duplicate INTEGER NOT NULL, record TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS problems(
    id INTEGER PRIMARY KEY, upload INTEGER NOT NULL, file TEXT NOT NULL, kind TEXT NOT NULL, detail TEXT NOT NULL);
CREATE INDEX IF NOT EXISTS filesByUpload ON files(upload);
CREATE INDEX IF NOT EXISTS eventsByIdentifier ON events(evtId, accepted);
CREATE INDEX IF NOT EXISTS eventsByType ON events(evtType);
)";

std::string headersText(const RequestHead& head) {
    auto headers = ordered_json::array();
    for (const auto& [name, value] : head.headers) headers.push_back({{"name", name}, {"value", value}});
    return jsonText(headers);
}

std::string fieldsText(const CheckedUpload& upload) {
    auto fields = ordered_json::object();
    for (const auto& [name, value] : upload.fields) fields[name] = value;
    return jsonText(fields);
}

std::int64_t now() {
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(sinceEpoch).count();
}

} // namespace

CollectorStore::CollectorStore(const std::string& file) : database_(file) {
    MutexLock lock(mutex_);
    database_.execute(schema);
}

std::int64_t CollectorStore::store(const CheckedUpload& upload, const Fault& fault, const Answer& answer) {
    MutexLock lock(mutex_);
    Database::Transaction transaction(database_);
    const auto id = insertUpload(upload, fault, answer);
    for (std::size_t index = 0; index < upload.files.size(); ++index) {
        insertFile(id, upload.files[index], answer.accepted.at(index));
        insertRecords(id, upload.files[index], answer.accepted.at(index));
    }
    insertProblems(id, upload.problems);
    transaction.commit();
    return id;
}

std::int64_t CollectorStore::insertUpload(const CheckedUpload& upload, const Fault& fault, const Answer& answer) {
    Database::Statement insert(database_, "INSERT INTO uploads(received, target, headers, cookie, boundary, filename, "
                                          "fields, bodyBytes, fault, httpStatus, statusCode, answer, answered) "
                                          "VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
    insert.bind(now()).bind(upload.head.target).bind(headersText(upload.head)).bind(upload.cookie);
    insert.bind(upload.boundary).bind(upload.filename).bind(fieldsText(upload));
    insert.bind(static_cast<std::int64_t>(upload.bodyBytes)).bind(text(fault.kind)).bind(answer.httpStatus);
    insert.bind(answer.statusCode).bind(answer.body).bind(answer.isSent ? 1 : 0).run();
    return database_.lastRowId();
}

void CollectorStore::insertFile(std::int64_t upload, const CheckedFile& file, bool accepted) {
    Database::Statement insert(database_, "INSERT INTO files(upload, name, bytes, records, accepted, content) "
                                          "VALUES(?, ?, ?, ?, ?, ?)");
    insert.bind(upload).bind(file.name).bind(static_cast<std::int64_t>(file.bytes.size()));
    insert.bind(static_cast<std::int64_t>(file.records.size())).bind(accepted ? 1 : 0).bindBytes(file.bytes).run();
}

void CollectorStore::insertRecords(std::int64_t upload, const CheckedFile& file, bool accepted) {
    Database::Statement insert(
        database_, "INSERT INTO events(upload, file, evtId, evtType, accepted, duplicate, record) "
                   "VALUES(?, ?, ?, ?, ?, EXISTS(SELECT 1 FROM events WHERE evtId = ? AND accepted = 1), ?)");
    for (const auto& record : file.records) {
        insert.bind(upload).bind(file.name).bind(record.evtId).bind(record.evtType).bind(accepted ? 1 : 0);
        insert.bind(record.evtId).bind(record.text).run();
    }
}

void CollectorStore::insertProblems(std::int64_t upload, const Problems& problems) {
    Database::Statement insert(database_, "INSERT INTO problems(upload, file, kind, detail) VALUES(?, ?, ?, ?)");
    for (const auto& problem : problems) {
        insert.bind(upload).bind(problem.file).bind(problem.kind).bind(problem.detail).run();
    }
}

void CollectorStore::markUnanswered(std::int64_t upload) {
    MutexLock lock(mutex_);
    Database::Statement(database_, "UPDATE uploads SET answered = 0 WHERE id = ?").bind(upload).run();
}

std::vector<StoredEvent> CollectorStore::events(const EventFilter& filter) {
    MutexLock lock(mutex_);
    std::string text = "SELECT id, upload, file, evtId, evtType, accepted, duplicate, record FROM events WHERE id > ?";
    if (filter.type) text += " AND evtType = ?";
    if (filter.accepted) text += " AND accepted = ?";
    if (filter.duplicate) text += " AND duplicate = ?";
    Database::Statement select(database_, text + " ORDER BY id");
    select.bind(filter.after);
    if (filter.type) select.bind(*filter.type);
    if (filter.accepted) select.bind(*filter.accepted ? 1 : 0);
    if (filter.duplicate) select.bind(*filter.duplicate ? 1 : 0);
    std::vector<StoredEvent> events;
    while (select.step()) {
        events.push_back({select.number(0), select.number(1), select.text(2), select.text(3), select.text(4),
                          select.number(5) != 0, select.number(6) != 0, select.text(7)});
    }
    return events;
}

ordered_json CollectorStore::filesOf(std::int64_t upload) {
    Database::Statement select(database_,
                               "SELECT name, bytes, records, accepted FROM files WHERE upload = ? ORDER BY id");
    select.bind(upload);
    auto files = ordered_json::array();
    while (select.step()) {
        files.push_back({{"name", select.text(0)},
                         {"bytes", select.number(1)},
                         {"records", select.number(2)},
                         {"accepted", select.number(3) != 0}});
    }
    return files;
}

ordered_json CollectorStore::uploads() {
    MutexLock lock(mutex_);
    Database::Statement select(database_, "SELECT id, received, target, headers, cookie, boundary, filename, fields, "
                                          "bodyBytes, fault, httpStatus, statusCode, answer, answered FROM uploads "
                                          "ORDER BY id");
    auto uploads = ordered_json::array();
    while (select.step()) {
        uploads.push_back({{"id", select.number(0)},
                           {"received", select.number(1)},
                           {"target", select.text(2)},
                           {"headers", ordered_json::parse(select.text(3))},
                           {"cookie", select.text(4)},
                           {"boundary", select.text(5)},
                           {"filename", select.text(6)},
                           {"fields", ordered_json::parse(select.text(7))},
                           {"bodyBytes", select.number(8)},
                           {"fault", select.text(9)},
                           {"httpStatus", select.number(10)},
                           {"statusCode", select.text(11)},
                           {"answer", select.text(12)},
                           {"answered", select.number(13) != 0},
                           {"files", filesOf(select.number(0))}});
    }
    return uploads;
}

ordered_json CollectorStore::problems() {
    MutexLock lock(mutex_);
    Database::Statement select(database_, "SELECT id, upload, file, kind, detail FROM problems ORDER BY id");
    auto problems = ordered_json::array();
    while (select.step()) {
        problems.push_back({{"id", select.number(0)},
                            {"upload", select.number(1)},
                            {"file", select.text(2)},
                            {"kind", select.text(3)},
                            {"detail", select.text(4)}});
    }
    return problems;
}

StoreCounts CollectorStore::counts() {
    MutexLock lock(mutex_);
    Database::Statement select(database_, "SELECT (SELECT count(*) FROM uploads), (SELECT count(*) FROM problems), "
                                          "count(*), count(*) FILTER (WHERE accepted AND NOT duplicate), "
                                          "count(*) FILTER (WHERE duplicate) FROM events");
    select.step();
    return {select.number(0), select.number(1), select.number(2), select.number(3), select.number(4)};
}

void CollectorStore::clear() {
    MutexLock lock(mutex_);
    Database::Transaction transaction(database_);
    database_.execute("DELETE FROM events; DELETE FROM files; DELETE FROM problems; DELETE FROM uploads;");
    transaction.commit();
}

} // namespace tallyfoot::collector
