#include "store/Database.h"

#include "store/Files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <system_error>

namespace sonolet::service {

namespace {

constexpr int busyMilliseconds = 10000;

// SQLite gives its journal files the mode of the database, so the database comes first. A file that
// is there is not opened: closing it would end the locks of the process's other connections.
void makePrivateFile(const std::string& path) {
    const int flags = O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC;
    const int descriptor = open(path.c_str(), flags, S_IRUSR | S_IWUSR);
    if (descriptor >= 0) {
        close(descriptor);
    } else if (errno != EEXIST) {
        throw std::system_error(errno, std::generic_category(), "cannot make " + path);
    } else {
        // A file that someone else owns keeps its mode; SQLite will tell if it is of no use.
        static_cast<void>(chmod(path.c_str(), S_IRUSR | S_IWUSR));
    }
}

[[noreturn]] void failOn(const std::string& path) {
    throw std::system_error(errno, std::generic_category(), "cannot write " + path);
}

// The first name that is free, or that of the only copy.
std::string asideName(const std::string& path, Database::Aside keep) {
    std::string name = path + ".damaged";
    for (int number = 2; keep == Database::Aside::every && access(name.c_str(), F_OK) == 0;
         ++number) {
        name = path + ".damaged-" + std::to_string(number);
    }
    return name;
}

// Through the connection's own descriptor: closing another would end the process's locks.
void copyDatabase(sqlite3* connection, const std::string& to) {
    constexpr int chunk = 1 << 20;
    sqlite3_file* file = nullptr;
    sqlite3_int64 size = 0;
    sqlite3_file_control(connection, "main", SQLITE_FCNTL_FILE_POINTER, &file);
    const FileDescriptor copy(
        open(to.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (copy.get() < 0 || file->pMethods->xFileSize(file, &size) != SQLITE_OK) {
        failOn(to);
    }
    std::string bytes;
    for (sqlite3_int64 done = 0; done < size; done += chunk) {
        // What cannot be read is copied as zeros.
        bytes.assign(static_cast<std::size_t>(std::min<sqlite3_int64>(chunk, size - done)), '\0');
        static_cast<void>(
            file->pMethods->xRead(file, bytes.data(), static_cast<int>(bytes.size()), done));
        if (!writeFile(copy.get(), bytes)) {
            failOn(to);
        }
    }
    if (fsync(copy.get()) != 0) {
        failOn(to);
    }
}

// The log has changes that are not yet in the database. Nobody locks it.
void copyLog(const std::string& from, const std::string& to) {
    const FileDescriptor log(open(from.c_str(), O_RDONLY | O_CLOEXEC));
    const std::optional<std::string> bytes =
        log.get() < 0 ? std::nullopt : readFile(log.get(), UINT64_MAX);
    if (!bytes || bytes->empty()) {
        static_cast<void>(std::remove(to.c_str()));
        return;
    }
    const FileDescriptor copy(
        open(to.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (copy.get() < 0 || !writeFile(copy.get(), *bytes) || fsync(copy.get()) != 0) {
        failOn(to);
    }
}

}  // namespace

void Database::check() {
    const auto complaint = [this] {
        Statement query(*this, "PRAGMA quick_check(1)");
        Cursor row = query.run();
        return row.next() ? row.text(0) : "nothing to check";
    };
    if (complaint() == "ok") {
        return;
    }
    execute("REINDEX");
    if (const std::string remaining = complaint(); remaining != "ok") {
        throw DatabaseError(SQLITE_CORRUPT, file, "database is damaged: " + remaining);
    }
}

std::string Database::setAside(const DatabaseError& damage, Aside keep) {
    const std::string& path = damage.path();
    const std::string lockFile = path + ".lock";
    const FileDescriptor lock(
        open(lockFile.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (lock.get() < 0 || flock(lock.get(), LOCK_EX) != 0) {
        failOn(lockFile);
    }
    try {
        Database(path, Durability::power).check();
        if (!damage.insideIndex()) {
            return {};
        }
    } catch (const DatabaseError& error) {
        if (!error.damaged()) {
            throw;
        }
    }
    sqlite3* connection = nullptr;
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX;
    const int opened = sqlite3_open_v2(path.c_str(), &connection, flags, nullptr);
    const std::unique_ptr<sqlite3, int (*)(sqlite3*)> closing(connection, &sqlite3_close_v2);
    if (opened != SQLITE_OK) {
        throw DatabaseError(opened, path, "cannot be opened");
    }
    std::string aside = asideName(path, keep);
    try {
        copyDatabase(connection, aside);
        copyLog(path + "-wal", aside + "-wal");
    } catch (...) {
        static_cast<void>(std::remove(aside.c_str()));
        static_cast<void>(std::remove((aside + "-wal").c_str()));
        throw;
    }
    sqlite3_busy_timeout(connection, busyMilliseconds);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_RESET_DATABASE, 1, nullptr);
    const int emptied = sqlite3_exec(connection, "VACUUM", nullptr, nullptr, nullptr);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_RESET_DATABASE, 0, nullptr);
    if (emptied != SQLITE_OK) {
        throw DatabaseError(emptied, path,
                            std::string("cannot be begun anew: ") + sqlite3_errmsg(connection));
    }
    return aside;
}

Database::Database(const std::string& path, Durability durability)
    : file(path), inMemory(path.rfind("file:", 0) == 0) {
    int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
    if (inMemory) {
        flags |= SQLITE_OPEN_CREATE | SQLITE_OPEN_URI;
    } else {
        makePrivateFile(path);
    }
    const int result = sqlite3_open_v2(path.c_str(), &connection, flags, nullptr);
    try {
        if (result != SQLITE_OK) {
            fail("open");
        }
        sqlite3_busy_timeout(connection, busyMilliseconds);
        if (!inMemory) {
            useWriteAheadLog();
        }
        execute("PRAGMA foreign_keys = ON");
        execute("PRAGMA cache_size = -4000");
        execute("PRAGMA temp_store = MEMORY");
        execute(durability == Durability::power ? "PRAGMA synchronous = FULL"
                                                : "PRAGMA synchronous = NORMAL");
    } catch (...) {
        sqlite3_close_v2(connection);
        throw;
    }
}

// SQLite does not wait when two connections turn a new file into one with a log.
void Database::useWriteAheadLog() {
    constexpr char sql[] = "PRAGMA journal_mode = WAL";
    constexpr int pause = 5;
    int result = SQLITE_BUSY;
    for (int waited = 0; result == SQLITE_BUSY && waited < busyMilliseconds; waited += pause) {
        result = sqlite3_exec(connection, sql, nullptr, nullptr, nullptr) & 0xff;
        if (result == SQLITE_BUSY) {
            sqlite3_sleep(pause);
        }
    }
    if (result != SQLITE_OK) {
        fail(sql);
    }
}

Database::~Database() {
    sqlite3_finalize(versionQuery);
    sqlite3_close_v2(connection);
}

void Database::execute(const char* sql) {
    if (sqlite3_exec(connection, sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
        fail(sql);
    }
}

void Database::migrate(std::initializer_list<const char*> steps) {
    const auto version = [this] {
        Statement query(*this, "PRAGMA user_version");
        Cursor row = query.run();
        return row.next() ? row.integer(0) : 0;
    };
    const auto newest = static_cast<std::int64_t>(steps.size());
    if (version() == newest) {
        return;
    }
    Transaction transaction(*this);
    // Another process may have migrated while this one waited.
    const std::int64_t found = version();
    if (found > newest) {
        throw DatabaseError(SQLITE_ERROR, file,
                            "made by a newer version of the service (schema " +
                                std::to_string(found) + ", this one knows " +
                                std::to_string(newest) + ")");
    }
    for (std::int64_t step = found; step < newest; ++step) {
        execute(steps.begin()[step]);
    }
    execute(("PRAGMA user_version = " + std::to_string(newest)).c_str());
    transaction.commit();
}

fts5_api* Database::fullTextSearch() {
    constexpr char sql[] = "SELECT fts5(?1)";
    fts5_api* api = nullptr;
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(connection, sql, -1, &statement, nullptr) == SQLITE_OK) {
        sqlite3_bind_pointer(statement, 1, static_cast<void*>(&api), "fts5_api_ptr", nullptr);
        sqlite3_step(statement);
    }
    sqlite3_finalize(statement);
    if (api == nullptr) {
        fail(sql);
    }
    return api;
}

std::int64_t Database::dataVersion() {
    if (versionQuery == nullptr && sqlite3_prepare_v2(connection, "PRAGMA data_version", -1,
                                                      &versionQuery, nullptr) != SQLITE_OK) {
        fail("PRAGMA data_version");
    }
    std::int64_t version = 0;
    if (sqlite3_step(versionQuery) == SQLITE_ROW) {
        version = sqlite3_column_int64(versionQuery, 0);
    }
    sqlite3_reset(versionQuery);
    return version;
}

void Database::fail(std::string_view sql) const {
    int code = connection == nullptr ? SQLITE_NOMEM : sqlite3_extended_errcode(connection);
    std::string why = connection == nullptr ? "out of memory" : sqlite3_errmsg(connection);
    if (inMemory && (code & 0xff) == SQLITE_READONLY) {
        throw DatabaseError(SQLITE_FULL, "the disk is full", "this cannot be kept");
    }
    if ((code & 0xff) == SQLITE_IOERR || (code & 0xff) == SQLITE_CANTOPEN) {
        if (const int system = sqlite3_system_errno(connection); system != 0) {
            why += ": " + std::generic_category().message(system);
            code = system == ENOSPC || system == EDQUOT ? SQLITE_FULL : code;
        }
    }
    throw DatabaseError(code, file, why + " (" + std::string(sql) + ")");
}

Cursor::~Cursor() {
    if (statement != nullptr) {
        statement->rewind();
    }
}

bool Cursor::next() {
    const int result = sqlite3_step(statement->statement);
    if (result == SQLITE_ROW) {
        return true;
    }
    if (result != SQLITE_DONE) {
        statement->database.fail(statement->sql);
    }
    return false;
}

std::int64_t Cursor::integer(int column) const {
    return sqlite3_column_int64(statement->statement, column);
}

double Cursor::real(int column) const {
    return sqlite3_column_double(statement->statement, column);
}

std::string Cursor::text(int column) const {
    const void* bytes = sqlite3_column_blob(statement->statement, column);
    const int size = sqlite3_column_bytes(statement->statement, column);
    return bytes == nullptr ? std::string() : std::string(static_cast<const char*>(bytes), size);
}

std::optional<Id> Cursor::id(int column) const {
    return Id::fromBytes(text(column));
}

bool Cursor::isNull(int column) const {
    return sqlite3_column_type(statement->statement, column) == SQLITE_NULL;
}

Statement::Statement(Database& preparedFor, const char* statementSql)
    : database(preparedFor), sql(statementSql) {
    const int result = sqlite3_prepare_v3(database.handle(), sql, -1, SQLITE_PREPARE_PERSISTENT,
                                          &statement, nullptr);
    if (result != SQLITE_OK) {
        database.fail(sql);
    }
}

Statement::~Statement() {
    sqlite3_finalize(statement);
}

void Statement::rewind() {
    // The result repeats the failure of the last step, which has been told already.
    static_cast<void>(sqlite3_reset(statement));
    sqlite3_clear_bindings(statement);
}

void Statement::bind(int place, std::int64_t value) {
    check(sqlite3_bind_int64(statement, place, value));
}

void Statement::bind(int place, std::nullptr_t) {
    check(sqlite3_bind_null(statement, place));
}

void Statement::bind(int place, std::string_view value) {
    // A null data pointer would bind NULL.
    const char* bytes = value.data() == nullptr ? "" : value.data();
    check(
        sqlite3_bind_text64(statement, place, bytes, value.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
}

void Statement::bind(int place, const Id& value) {
    check(sqlite3_bind_blob(statement, place, value.bytes.data(),
                            static_cast<int>(value.bytes.size()), SQLITE_TRANSIENT));
}

void Statement::bind(int place, const Blob& value) {
    check(sqlite3_bind_blob64(statement, place, value.bytes.data(), value.bytes.size(),
                              SQLITE_TRANSIENT));
}

void Statement::check(int result) const {
    if (result != SQLITE_OK) {
        database.fail(sql);
    }
}

Transaction::Transaction(Database& changed) : database(changed) {
    database.execute("BEGIN IMMEDIATE");
}

Transaction::~Transaction() {
    if (open) {
        // SQLite may have rolled back by itself already; then this fails and nothing is open.
        sqlite3_exec(database.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
    }
}

void Transaction::commit() {
    database.execute("COMMIT");
    open = false;
}

Snapshot::Snapshot(Database& readDatabase) : database(readDatabase) {
    database.execute("BEGIN");
}

Snapshot::~Snapshot() {
    // Nothing was written, so nothing can be lost.
    sqlite3_exec(database.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
}

}  // namespace sonolet::service
