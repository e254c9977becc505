#include "objects/Library.h"

#include "objects/Album.h"
#include "objects/Artist.h"
#include "objects/Track.h"
#include "objects/User.h"

#include <utility>

namespace sonolet::service {

Library::Library(std::unique_ptr<Catalogue> catalogueToUse,
                 std::unique_ptr<Accounts> accountsToUse,
                 Source& musicSource)
    : openCatalogue(std::move(catalogueToUse)), openAccounts(std::move(accountsToUse)),
      catalogueVersion(openCatalogue->version()), accountsVersion(openAccounts->version()),
      source(&musicSource) {}

Library::~Library() = default;

Ref<sp_track> Library::track(const Id& id) {
    return tracks.get(id, [&] { return new sp_track(shared_from_this(), id); });
}

Ref<sp_album> Library::album(const Id& id) {
    return albums.get(id, [&] { return new sp_album(shared_from_this(), id); });
}

Ref<sp_artist> Library::artist(const Id& id) {
    return artists.get(id, [&] { return new sp_artist(shared_from_this(), id); });
}

Ref<sp_user> Library::user(const std::string& canonicalName) {
    return users.get(canonicalName, [&] { return new sp_user(shared_from_this(), canonicalName); });
}

void Library::close() {
    openCatalogue.reset();
    openAccounts.reset();
    source = nullptr;
}

std::pair<std::unique_ptr<Catalogue>, std::unique_ptr<Accounts>>
Library::exchange(std::unique_ptr<Catalogue> catalogueToUse,
                  std::unique_ptr<Accounts> accountsToUse) {
    openCatalogue.swap(catalogueToUse);
    openAccounts.swap(accountsToUse);
    catalogueVersion = openCatalogue->version();
    accountsVersion = openAccounts->version();
    ++currentEdition;
    return {std::move(catalogueToUse), std::move(accountsToUse)};
}

bool Library::refreshCatalogue() {
    if (openCatalogue == nullptr) {
        return false;
    }
    const std::int64_t version = openCatalogue->version();
    if (version == catalogueVersion) {
        return false;
    }
    catalogueVersion = version;
    ++currentEdition;
    return true;
}

bool Library::refreshAccounts() {
    if (openAccounts == nullptr) {
        return false;
    }
    const std::int64_t version = openAccounts->version();
    if (version == accountsVersion) {
        return false;
    }
    accountsVersion = version;
    ++currentEdition;
    return true;
}

}  // namespace sonolet::service
