#include "objects/User.h"

#include <utility>

namespace sonolet::service {

User::User(std::shared_ptr<Library> owner, std::string canonicalName)
    : library(std::move(owner)), name(std::move(canonicalName)) {
    known.displayName = name;
}

User::~User() {
    library->users.forget(name, this);
}

const Account& User::account() {
    Accounts* accounts = library->accounts();
    if (accounts == nullptr || edition == library->edition()) {
        return known;
    }
    if (std::optional<Account> found = accounts->find(name)) {
        known = std::move(*found);
        loaded = true;
    } else {
        loaded = false;
    }
    edition = library->edition();
    return known;
}

bool User::isLoaded() {
    account();
    return loaded;
}

const std::string& User::displayName() {
    return account().displayName;
}

const std::string& User::fullName() {
    return account().fullName;
}

}  // namespace sonolet::service
