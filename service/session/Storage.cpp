#include "session/Storage.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <exception>
#include <system_error>
#include <utility>

namespace sonolet::service {

namespace {

std::string nameInMemory() {
    return "file:/sonolet-" + randomText(16) + "?vfs=memdb";
}

// A copy of the file in memory, or an empty database when there is nothing that can be read.
std::unique_ptr<Database> copied(const std::string& file, const std::string& name) {
    auto copy = std::make_unique<Database>(name, Database::Durability::process);
    struct stat status {};
    if (stat(file.c_str(), &status) != 0 || status.st_size == 0) {
        return copy;
    }
    sqlite3* connection = nullptr;
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_URI;
    sqlite3_open_v2(file.c_str(), &connection, flags, nullptr);
    const std::unique_ptr<sqlite3, int (*)(sqlite3*)> closing(connection, &sqlite3_close_v2);
    constexpr int busyMilliseconds = 1000;
    sqlite3_busy_timeout(connection, busyMilliseconds);
    // Whoever has it alone needs no file that is shared with others. A file that cannot be read is
    // as one that is not there.
    const std::string copying = "PRAGMA locking_mode = EXCLUSIVE; VACUUM INTO '" + name + "'";
    static_cast<void>(sqlite3_exec(connection, copying.c_str(), nullptr, nullptr, nullptr));
    return copy;
}

// Whether a failure to open them says that the disk is full.
bool isNoRoom(const std::exception& failure) {
    if (const auto* database = dynamic_cast<const DatabaseError*>(&failure)) {
        return database->noRoom();
    }
    const auto* system = dynamic_cast<const std::system_error*>(&failure);
    if (system == nullptr) {
        return false;
    }
    // ENOENT: there was no room for the folder.
    const int code = system->code().value();
    return code == ENOSPC || code == EDQUOT || code == ENOENT;
}

}  // namespace

// A database in memory lives as long as it is open.
struct Storage::Copies {
    Copies(const Kept& files, Accounts::First first)
        : accountsOpen(copied(files.accounts, accounts)),
          catalogueOpen(copied(files.catalogue, catalogue)) {
        // Makes the account that is there from the start, if there was no file.
        static_cast<void>(Accounts(accounts, first));
    }

    const std::string accounts = nameInMemory();
    const std::string catalogue = nameInMemory();
    const std::unique_ptr<Database> accountsOpen;
    const std::unique_ptr<Database> catalogueOpen;
};

Storage::Storage(Kept files, Accounts::First first, Log logLine)
    : onDisk(std::move(files)), firstAccount(first), log(std::move(logLine)) {}

Storage::~Storage() = default;

Kept Storage::kept() const {
    return isKept() ? onDisk : Kept{copies->accounts + "&mode=ro", copies->catalogue, false};
}

std::unique_ptr<Accounts> Storage::openAccounts() {
    try {
        auto opened = std::make_unique<Accounts>(kept().accounts, firstAccount);
        opened->connection().check();
        return opened;
    } catch (const DatabaseError& error) {
        if (!error.damaged()) {
            throw;
        }
        const std::string aside = Database::setAside(error, Database::Aside::every);
        std::string complaint = std::string(error.what()) + "; ";
        complaint += aside.empty() ? "it is whole again"
                                   : "it is kept as " + aside +
                                         " and new accounts are begun. To read what can still be "
                                         "read of it: sqlite3 " +
                                         aside + " .recover";
        // Whoever started the program is told even if nobody reads the log.
        std::fprintf(stderr, "libspotify: %s\n", complaint.c_str());
        log(complaint);
    }
    return std::make_unique<Accounts>(kept().accounts, firstAccount);
}

Storage::Opened Storage::open() {
    Opened opened;
    opened.accounts = openAccounts();
    opened.catalogue = Catalogue::openOrBegin(kept().catalogue, log);
    return opened;
}

Storage::Opened Storage::begin() {
    try {
        return open();
    } catch (const std::exception& error) {
        if (!isNoRoom(error)) {
            throw;
        }
        log(std::string("Nothing can be kept until there is room: ") + error.what());
    }
    copies = std::make_shared<Copies>(onDisk, firstAccount);
    return open();
}

std::optional<Storage::Opened> Storage::keepAgain() {
    constexpr std::chrono::seconds pause(1);
    const Clock::time_point now = Clock::now();
    if (isKept() || now < nextTry) {
        return std::nullopt;
    }
    nextTry = now + pause;
    std::shared_ptr<Copies> before = std::exchange(copies, nullptr);
    try {
        Opened opened = open();
        opened.before = std::move(before);
        log("There is room again: what changes is kept");
        return opened;
    } catch (const std::exception&) {
        copies = std::move(before);
        return std::nullopt;
    }
}

}  // namespace sonolet::service
