#ifndef SONOLET_SERVICE_SESSION_STORAGE_H
#define SONOLET_SERVICE_SESSION_STORAGE_H

#include "accounts/Accounts.h"
#include "catalogue/Catalogue.h"
#include "source/Source.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace sonolet::service {

// A session's two databases: in files or, while the disk has no room for what SQLite keeps beside
// them, in memory.
//
// In memory the accounts are as the file has them and cannot be changed, which is a DatabaseError
// that passes; the catalogue can be, and is forgotten with the session. A file that proves damaged
// is set aside and begun anew; of the accounts' file, which nothing can replace, standard error is
// told.
//
// Threads: the session's owner; others are handed the names by value. Errors: DatabaseError,
// std::system_error.
class Storage final {
public:
    using Log = std::function<void(std::string line)>;

    // The owner's connections.
    struct Opened {
        std::unique_ptr<Accounts> accounts;
        std::unique_ptr<Catalogue> catalogue;
        // What was in memory before; to live as long as anybody has it open.
        std::shared_ptr<const void> before;
    };

    Storage(Kept files, Accounts::First first, Log logLine);
    ~Storage();

    Storage(const Storage&) = delete;
    Storage& operator=(const Storage&) = delete;

    // From the files, else from memory, which is one line of the log.
    Opened begin();
    // While they are in memory, once a second: from the files, if there is room for them again.
    std::optional<Opened> keepAgain();
    bool isKept() const { return copies == nullptr; }

    // What Accounts, Catalogue and the like are opened with.
    Kept kept() const;

private:
    using Clock = std::chrono::steady_clock;
    struct Copies;

    Opened open();
    std::unique_ptr<Accounts> openAccounts();

    // Constant after construction.
    const Kept onDisk;
    const Accounts::First firstAccount;
    const Log log;

    std::shared_ptr<Copies> copies;
    Clock::time_point nextTry{};
};

}  // namespace sonolet::service

#endif
