#include "session/Storage.h"

#include "accounts/Accounts.h"

#include <sys/stat.h>

#include <cerrno>
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

}  // namespace

Storage::Storage(std::string accountsFile, std::string catalogueFile)
    : accountsOnDisk(std::move(accountsFile)), catalogueOnDisk(std::move(catalogueFile)) {}

bool Storage::isNoRoom(const std::exception& failure) {
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

void Storage::moveToMemory() {
    auto made = std::make_unique<Copies>();
    made->accounts = nameInMemory();
    made->catalogue = nameInMemory();
    made->accountsOpen = copied(accountsOnDisk, made->accounts);
    made->catalogueOpen = copied(catalogueOnDisk, made->catalogue);
    // Makes the account that is there from the start, if there was no file.
    static_cast<void>(Accounts(made->accounts));
    copies = std::move(made);
}

}  // namespace sonolet::service
