#include "Collector/Database.h"

#include <sqlite3.h>

namespace tallyfoot::collector {

namespace {

// SQLite may not be given a null pointer for a text that is empty and not null.
const char* notNull(std::string_view text) { return text.data() == nullptr ? "" : text.data(); }

} // namespace

Database::Database(const std::string& file) : connection_(nullptr, &sqlite3_close) {
    sqlite3* connection = nullptr;
    const int code = sqlite3_open_v2(file.c_str(), &connection,
                                     SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    connection_.reset(connection);
    if (code != SQLITE_OK) throw DatabaseError("cannot open " + file + ": " + sqlite3_errstr(code));
    sqlite3_busy_timeout(connection, 5000);
}

void Database::execute(const char* statements) {
    if (sqlite3_exec(connection_.get(), statements, nullptr, nullptr, nullptr) != SQLITE_OK) {
        throw DatabaseError(sqlite3_errmsg(connection_.get()));
    }
}

std::int64_t Database::lastRowId() const { return sqlite3_last_insert_rowid(connection_.get()); }

Database::Transaction::Transaction(Database& database) : database_(database) { database_.execute("BEGIN IMMEDIATE"); }

Database::Transaction::~Transaction() {
    if (!committed_) sqlite3_exec(database_.connection_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
}

void Database::Transaction::commit() {
    database_.execute("COMMIT");
    committed_ = true;
}

Database::Statement::Statement(Database& database, std::string_view text)
    : database_(database), statement_(nullptr, &sqlite3_finalize) {
    sqlite3_stmt* statement = nullptr;
    check(sqlite3_prepare_v2(database_.connection_.get(), text.data(), static_cast<int>(text.size()), &statement,
                             nullptr));
    statement_.reset(statement);
}

void Database::Statement::check(int code) const {
    if (code != SQLITE_OK) throw DatabaseError(sqlite3_errmsg(database_.connection_.get()));
}

Database::Statement& Database::Statement::bind(std::int64_t number) {
    check(sqlite3_bind_int64(statement_.get(), ++bound_, number));
    return *this;
}

Database::Statement& Database::Statement::bind(std::string_view text) {
    check(sqlite3_bind_text64(statement_.get(), ++bound_, notNull(text), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
    return *this;
}

Database::Statement& Database::Statement::bindBytes(std::string_view bytes) {
    check(sqlite3_bind_blob64(statement_.get(), ++bound_, notNull(bytes), bytes.size(), SQLITE_TRANSIENT));
    return *this;
}

bool Database::Statement::step() {
    const int code = sqlite3_step(statement_.get());
    if (code == SQLITE_ROW) return true;
    if (code != SQLITE_DONE) throw DatabaseError(sqlite3_errmsg(database_.connection_.get()));
    return false;
}

void Database::Statement::run() {
    step();
    check(sqlite3_reset(statement_.get()));
    bound_ = 0;
}

std::int64_t Database::Statement::number(int column) const { return sqlite3_column_int64(statement_.get(), column); }

std::string Database::Statement::text(int column) const {
    const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement_.get(), column));
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement_.get(), column));
    return bytes == nullptr ? std::string() : std::string(bytes, size);
}

} // namespace tallyfoot::collector
