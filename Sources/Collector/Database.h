#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace tallyfoot::collector {

struct DatabaseError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// One connection to SQLite. Not for several threads at once. Failures throw DatabaseError.
class Database {
public:
    // ":memory:" for one that is gone with the process.
    explicit Database(const std::string& file);

    void execute(const char* statements);
    std::int64_t lastRowId() const;

    // Undone when it goes out of scope without `commit`.
    class Transaction {
    public:
        explicit Transaction(Database& database);
        ~Transaction();
        Transaction(const Transaction&) = delete;
        Transaction& operator=(const Transaction&) = delete;
        void commit();

    private:
        Database& database_;
        bool committed_ = false;
    };

    // A prepared statement; parameters are bound in their order.
    class Statement {
    public:
        Statement(Database& database, std::string_view text);
        Statement& bind(std::int64_t number);
        Statement& bind(std::string_view text);
        Statement& bindBytes(std::string_view bytes);
        bool step(); // whether there is a row
        void run();  // once, for its effect; then it can be bound again

        std::int64_t number(int column) const;
        std::string text(int column) const;

    private:
        void check(int code) const;

        Database& database_;
        std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement_;
        int bound_ = 0;
    };

private:
    std::unique_ptr<sqlite3, int (*)(sqlite3*)> connection_;
};

} // namespace tallyfoot::collector
