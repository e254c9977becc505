#ifndef SONOLET_SERVICE_OBJECTS_USER_H
#define SONOLET_SERVICE_OBJECTS_USER_H

#include "objects/Library.h"

#include <memory>
#include <string>

namespace sonolet::service {

// A user of the service, who need not exist: a playlist may say who added a track long after that
// account has gone. It reads the account as a Track does its row, and threads, ownership and errors
// are as there.
class User : public Handle {
public:
    // For Library::user() alone, which has one handle for each name.
    User(std::shared_ptr<Library> owner, std::string canonicalName);
    ~User() override;

    // The account is there: false again once it has been removed.
    bool isLoaded();
    const std::string& canonicalName() const { return name; }
    // The canonical name, for an account that is not there.
    const std::string& displayName();
    // Empty for an account that this has never seen.
    const std::string& fullName();

private:
    const Account& account();

    // Constant after construction.
    const std::shared_ptr<Library> library;
    const std::string name;

    unsigned edition = 0;
    bool loaded = false;
    Account known;
};

}  // namespace sonolet::service

// The interface's name for it.
struct sp_user final : sonolet::service::User {  // NOLINT(readability-identifier-naming)
    using User::User;
};

#endif
