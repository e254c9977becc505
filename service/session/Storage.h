#ifndef SONOLET_SERVICE_SESSION_STORAGE_H
#define SONOLET_SERVICE_SESSION_STORAGE_H

#include "store/Database.h"

#include <exception>
#include <memory>
#include <string>

namespace sonolet::service {

// Where a session's two databases are: in files or, while the disk has no room for what SQLite
// keeps beside them, in memory.
//
// In memory the accounts are as the file has them and cannot be changed, which is a DatabaseError
// that passes; the catalogue can be, and is forgotten with the session.
//
// Threads: belongs to one; others are handed the names by value. Errors: DatabaseError.
class Storage final {
public:
    Storage(std::string accountsFile, std::string catalogueFile);

    // What Accounts, Catalogue and the like are opened with.
    std::string accounts() const { return copies ? copies->accounts + "&mode=ro" : accountsOnDisk; }
    std::string catalogue() const { return copies ? copies->catalogue : catalogueOnDisk; }
    bool isKept() const { return copies == nullptr; }

    // Whether a failure to open them says that the disk is full.
    static bool isNoRoom(const std::exception& failure);
    void moveToMemory();
    // What was opened in memory must be closed before.
    void moveToDisk() { copies.reset(); }

private:
    // A database in memory lives as long as it is open.
    struct Copies {
        std::string accounts;
        std::string catalogue;
        std::unique_ptr<Database> accountsOpen;
        std::unique_ptr<Database> catalogueOpen;
    };

    const std::string accountsOnDisk;
    const std::string catalogueOnDisk;
    std::unique_ptr<Copies> copies;
};

}  // namespace sonolet::service

#endif
