#ifndef SONOLET_SERVICE_STORE_DATABASE_H
#define SONOLET_SERVICE_STORE_DATABASE_H

#include "store/Id.h"

#include <sqlite3.h>

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace sonolet::service {

// A failure of SQLite: what was asked, of which file, and what it answered.
//
// What went wrong decides what a session does about it: a file that is damaged is set aside, what
// passes is tried again by whoever wanted it, and everything else is told.
class DatabaseError final : public std::runtime_error {
public:
    DatabaseError(int resultCode, const std::string& databaseFile, const std::string& text)
        : std::runtime_error(databaseFile + ": " + text), code(resultCode), file(databaseFile) {}

    // The file holds something that is no usable database.
    bool damaged() const {
        return (code & 0xff) == SQLITE_CORRUPT || (code & 0xff) == SQLITE_NOTADB;
    }
    // The disk is full or another process writes for long: the same may work later.
    bool passing() const {
        return (code & 0xff) == SQLITE_FULL || (code & 0xff) == SQLITE_BUSY ||
               (code & 0xff) == SQLITE_IOERR;
    }
    // There is no room for a change, or for what SQLite keeps beside a database.
    bool noRoom() const { return (code & 0xff) == SQLITE_FULL || (code & 0xff) == SQLITE_IOERR; }
    // In what check() does not look at: the index of words.
    bool insideIndex() const { return code == SQLITE_CORRUPT_VTAB; }
    const std::string& path() const { return file; }

private:
    int code;
    std::string file;
};

// One connection to one SQLite file in WAL mode, with foreign keys on; or, for a name that begins
// with "file:", to a database in memory.
//
// Threads: a connection, its statements and cursors belong to one thread at a time. Other threads
// and processes open their own; a writer waits up to ten seconds for another. The file is made
// readable by its owner alone. Errors: DatabaseError.
class Database final {
public:
    enum class Durability {
        process,  // a killed process loses nothing, a power cut may lose the latest changes
        power,    // a power cut loses nothing that was committed
    };

    // Makes the file if there is none. Throws DatabaseError for one that is no database, or that
    // cannot be opened; the folder must be there.
    Database(const std::string& path, Durability durability);
    ~Database();

    // Statements point at the connection.
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    // One or more statements whose rows do not matter.
    void execute(const char* sql);

    // Reads the whole file, and mends what is mended without a loss. Throws DatabaseError, damaged,
    // when that is not enough.
    void check();

    // Which copies of damaged files stay.
    enum class Aside { newest, every };

    // Copies the damaged file to another name beside it and leaves an empty database in its place,
    // which the connections that are open go on with. Answers that name, or an empty text when
    // the file is whole: another process was faster. Throws DatabaseError or std::system_error and
    // leaves the file as it is when it cannot be copied.
    static std::string setAside(const DatabaseError& damage, Aside keep);

    // Brings the schema to the newest version, one step for each version, all or nothing. A file
    // of a newer program is refused.
    void migrate(std::initializer_list<const char*> steps);

    // Changes whenever another connection, of this process or another, has committed.
    std::int64_t dataVersion();

    // Borrowed, for what this class has no words for.
    sqlite3* handle() const { return connection; }
    // SQLite's full-text search, to be extended; of the connection.
    fts5_api* fullTextSearch();
    const std::string& path() const { return file; }

    // Throws what SQLite says of its last failure.
    [[noreturn]] void fail(std::string_view sql) const;

private:
    void useWriteAheadLog();

    const std::string file;
    const bool inMemory;
    sqlite3* connection = nullptr;         // owned
    sqlite3_stmt* versionQuery = nullptr;  // owned, made on first use
};

class Statement;

// The rows of one run of a statement. The statement is free for its next run once this is gone.
class Cursor final {
public:
    explicit Cursor(Statement& ranStatement) : statement(&ranStatement) {}
    Cursor(Cursor&& other) noexcept : statement(other.statement) { other.statement = nullptr; }
    ~Cursor();

    Cursor(const Cursor&) = delete;
    Cursor& operator=(const Cursor&) = delete;
    Cursor& operator=(Cursor&&) = delete;

    // Goes to the next row, first to the first one. False when there are no more.
    bool next();
    // What is in a column of the row, from 0.
    std::int64_t integer(int column) const;
    double real(int column) const;
    std::string text(int column) const;  // bytes of a text or a blob, empty for NULL
    std::optional<Id> id(int column) const;
    bool isNull(int column) const;

private:
    Statement* statement;  // borrowed
};

// A prepared statement, which is compiled once and run often. `database` must outlive it, and the
// text be a literal.
//
// One run at a time: a statement whose cursor still lives starts anew, and that cursor goes on with
// the new rows.
class Statement final {
public:
    Statement(Database& preparedFor, const char* statementSql);
    ~Statement();

    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    // Binds the values to ?1, ?2, ... and starts. Values are copied; a value that is not there
    // binds NULL, and so does a place without a value. Nothing is read before the first next().
    template <typename... Values>
    Cursor run(const Values&... values) {
        rewind();
        int place = 0;
        (bind(++place, values), ...);
        return Cursor(*this);
    }

    // run() for a statement whose rows, if any, do not matter.
    template <typename... Values>
    void execute(const Values&... values) {
        Cursor cursor = run(values...);
        while (cursor.next()) {
        }
    }

private:
    friend class Cursor;

    void rewind();
    void bind(int place, std::int64_t value);
    void bind(int place, int value) { bind(place, static_cast<std::int64_t>(value)); }
    void bind(int place, bool value) { bind(place, static_cast<std::int64_t>(value)); }
    void bind(int place, std::nullptr_t value);
    void bind(int place, const char* value) { bind(place, std::string_view(value)); }
    void bind(int place, const std::string& value) { bind(place, std::string_view(value)); }
    void bind(int place, std::string_view value);
    void bind(int place, const Id& value);
    void bind(int place, const Blob& value);
    template <typename Value>
    void bind(int place, const std::optional<Value>& value) {
        value ? bind(place, *value) : bind(place, nullptr);
    }
    void check(int result) const;

    Database& database;
    const char* const sql;              // a literal
    sqlite3_stmt* statement = nullptr;  // owned
};

// Takes the write lock now and undoes everything unless commit() was called. Others see all of the
// change or nothing.
class Transaction final {
public:
    explicit Transaction(Database& changed);
    ~Transaction();

    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    // Throws when the disk is full: everything is undone then. At most once.
    void commit();

private:
    Database& database;
    bool open = true;
};

// Shows all statements of a connection one state of the database while this lives.
class Snapshot final {
public:
    explicit Snapshot(Database& readDatabase);
    ~Snapshot();

    Snapshot(const Snapshot&) = delete;
    Snapshot& operator=(const Snapshot&) = delete;

private:
    Database& database;
};

}  // namespace sonolet::service

#endif
