#ifndef SONOLET_SERVICE_SOURCE_SOURCE_H
#define SONOLET_SERVICE_SOURCE_SOURCE_H

#include "accounts/Accounts.h"
#include "music/Sound.h"
#include "source/Answers.h"
#include "store/Database.h"
#include "store/Id.h"
#include "store/StatePaths.h"

#include "libspotify/api.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace sonolet::service {

// Where a session keeps what its source says: what Accounts and Catalogue are opened with.
struct Kept {
    std::string accounts;
    std::string catalogue;
    // False while the disk is full: in memory, and the accounts cannot be changed.
    bool onDisk = true;
};

// What a source tells its session. log and post are for any thread; the others are called in an
// event of post(), on the owner's.
struct SourceEvents {
    std::function<void(std::string line)> log;
    std::function<void(std::function<void()> event)> post;
    // What is not in the catalogue by now is nowhere.
    std::function<void()> settled;
    // The connection is lost, and why; SP_ERROR_OK: it is back.
    std::function<void(sp_error)> connection;
    // The one who is logged in is so no more.
    std::function<void(sp_error)> expelled;
};

// Whom a login lets in, or why not.
struct Admission {
    std::optional<Account> account;
    sp_error error = SP_ERROR_BAD_USERNAME_OR_PASSWORD;
    // What may stand for the password from here on; none: nothing but the password.
    std::string blob;
};

// What a picture's bytes are got by. Threads: belongs to one at a time, and may wait there.
class Pictures {
public:
    virtual ~Pictures() = default;

    // JPEG or PNG, or nothing when there is no such picture. `digest` is pictureDigestSize bytes.
    // It is wanted with that many pixels on the longer side, and may come larger. Throws
    // std::runtime_error when it is known and cannot be had.
    virtual std::optional<std::string> find(const std::string& digest, int longerSide) = 0;
};

// Where the music comes from.
//
// A source keeps the catalogue and the lists of the accounts, which are what handles show: what it
// has to say it writes there through connections of its own, and the session sees that they have
// changed. What a session changes is in the lists before the source hears of it, so nobody waits
// for a source but those who may: the workers that check logins, answer queries and get pictures,
// and the player's decoders.
//
// Threads: the session's owner, but for what says otherwise; nothing of that waits. Errors: what
// goes wrong in the background is a line of the log.
class Source {
public:
    virtual ~Source() = default;

    // How the log names it.
    virtual std::string description() const = 0;
    // Its catalogue's file and its accounts' among all others.
    virtual Kept files(const StatePaths& paths) = 0;
    // Whom new accounts have from the start.
    virtual Accounts::First firstAccount() const = 0;

    // Begins to keep them up to date; called once more, goes on with others.
    virtual void start(const Kept& kept) = 0;
    // Joins its threads, and ends all waits in it: what waits fails soon, and so does what comes
    // later. It tells nothing more.
    virtual void stop() = 0;
    // Makes the catalogue again, when the error is a sign that it is damaged. Any thread.
    virtual void rebuild(const DatabaseError& error) = 0;

    // Whether what is missing may still come by itself.
    virtual bool isSettling() const = 0;
    // What is not in the catalogue: SP_ERROR_IS_LOADING while it may come, having been asked for by
    // this very question, else SP_ERROR_OTHER_PERMANENT.
    virtual sp_error absence(sp_linktype kind, const Id& id) = 0;
    // It cannot be reached now.
    virtual bool isAway() const { return false; }

    // Logins, on the worker that checks them; `store` is open there. A name is as it was typed.
    virtual Admission admit(Accounts& store,
                            const std::string& name,
                            const Secret& secret,
                            bool isBlob,
                            bool remember) = 0;
    virtual Admission admitRemembered(Accounts& store) = 0;
    // Whom admitRemembered() would try. The owner's store.
    virtual std::optional<std::string> remembered(Accounts& store) = 0;
    virtual void forget(Accounts& store) = 0;
    // Who is logged in from here on, or that nobody is.
    virtual void enter(const Account&) {}
    virtual void leave() {}
    // The user has changed lists or stars.
    virtual void listsChanged() {}
    // For a program without a session, of the one who has entered: waits until what has changed
    // here is with the source, and the other way round. Throws SourceError, DatabaseError.
    virtual void agreeOnLists() {}

    // Of the worker that uses them.
    virtual std::unique_ptr<Answers> answers(const Kept& kept) = 0;
    virtual std::unique_ptr<Pictures> pictures(const std::string& catalogue,
                                               const StopFlag& stop) = 0;

    // What openSound() and log lines know a track by whose row has this path.
    virtual std::string soundPath(const std::string& path) const = 0;
    // Opens it without waiting for its bytes. Throws UnreadableFile.
    virtual std::shared_ptr<const Sound> openSound(const std::string& soundPath) = 0;
    // The user hears it from its start; has heard it to its end.
    virtual void playing(const Id&) {}
    virtual void played(const Id&) {}
    // What it is to ask for, in kbit/s, where it has the choice.
    virtual void setBitrate(int) {}
    // How many MiB may be kept of what was got; 0: as much as seems right.
    virtual void setCacheSize(std::uint64_t) {}
};

// The source that the environment names: a server (SONOLET_SERVER), else a folder of music. Throws
// std::runtime_error for a name that makes no sense.
std::unique_ptr<Source> makeSource(SourceEvents events);

}  // namespace sonolet::service

#endif
