#ifndef SONOLET_SERVICE_OBJECTS_LIBRARY_H
#define SONOLET_SERVICE_OBJECTS_LIBRARY_H

#include "accounts/Accounts.h"
#include "catalogue/Catalogue.h"
#include "faults/Faults.h"
#include "objects/Shelf.h"
#include "source/Source.h"

#include "libspotify/api.h"

#include <memory>
#include <string>
#include <utility>

namespace sonolet::service {

// What the handles of a session look into: its catalogue, its accounts, and each other.
//
// Threads: the reference counting of handles is for any thread, the rest for the thread that uses
// the library. Handles may outlive the session: they keep this object, which after close() has
// nothing new to say.
class Library final : public std::enable_shared_from_this<Library> {
public:
    // Neither may be NULL. The source must live until close().
    Library(std::unique_ptr<Catalogue> catalogueToUse,
            std::unique_ptr<Accounts> accountsToUse,
            Source& musicSource);
    ~Library();

    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    // The handle of that id, whether the catalogue knows it or not: never an empty one. One that is
    // alive is shared; nothing is read before somebody asks the handle.
    Ref<sp_track> track(const Id& id);
    Ref<sp_album> album(const Id& id);
    Ref<sp_artist> artist(const Id& id);
    Ref<sp_user> user(const std::string& canonicalName);

    // NULL after close(). Borrowed until exchange() or close().
    Catalogue* catalogue() const { return openCatalogue.get(); }
    Accounts* accounts() const { return openAccounts.get(); }
    // Handles answer from here on what they have read already.
    void close();
    // Goes on with others; those before.
    std::pair<std::unique_ptr<Catalogue>, std::unique_ptr<Accounts>>
    exchange(std::unique_ptr<Catalogue> catalogueToUse, std::unique_ptr<Accounts> accountsToUse);

    // What a fault takes away for a while. Handles ask each time, since it comes back by itself.
    void setFaults(std::shared_ptr<const Faults> shown) { faults = std::move(shown); }
    bool isWithheld(const Id& track) const {
        return faults != nullptr && faults->isUnavailable(track);
    }

    // What a handle has read is good for one edition: it reads its row again when it is asked in
    // another one.
    unsigned edition() const { return currentEdition; }
    // True when something has changed since, here or in another process; begins a new edition.
    bool refreshCatalogue();
    // The same for users, plays and stars.
    bool refreshAccounts();

    // Why something that is not in the catalogue is not there: SP_ERROR_IS_LOADING while it may
    // still come.
    sp_error absence(sp_linktype kind, const Id& id) const {
        return source == nullptr ? SP_ERROR_OTHER_PERMANENT : source->absence(kind, id);
    }
    // Has the source look for it, if it can.
    void ask(sp_linktype kind, const Id& id) const { static_cast<void>(absence(kind, id)); }
    // More may come into the catalogue by itself.
    bool isSettling() const { return source != nullptr && source->isSettling(); }

private:
    friend class Track;
    friend class Album;
    friend class Artist;
    friend class User;

    std::unique_ptr<Catalogue> openCatalogue;
    std::unique_ptr<Accounts> openAccounts;
    std::shared_ptr<const Faults> faults;
    std::int64_t catalogueVersion = -1;
    std::int64_t accountsVersion = -1;
    unsigned currentEdition = 1;
    Source* source;  // borrowed; NULL after close()

    Shelf<Id, sp_track> tracks;
    Shelf<Id, sp_album> albums;
    Shelf<Id, sp_artist> artists;
    Shelf<std::string, sp_user> users;
};

}  // namespace sonolet::service

#endif
