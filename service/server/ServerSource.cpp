#include "server/ServerSource.h"

#include "catalogue/Catalogue.h"
#include "server/ServerAnswers.h"
#include "store/StatePaths.h"

#include <glib.h>

#include <algorithm>
#include <utility>

namespace sonolet::service {

namespace {

constexpr std::chrono::milliseconds firstProbe{500};
constexpr std::chrono::milliseconds lastProbe{4000};
constexpr std::chrono::milliseconds firstPause{2000};  // of a server that has no time
constexpr std::chrono::milliseconds longestPause{60000};

// Whether the same question may have an answer at another time or after another login; the rest is
// refused.
bool mayAnswerLater(const ServerError& error) {
    const bool nobodyAsks = error.number() == SP_ERROR_PERMISSION_DENIED && error.code() < 0;
    return error.isLost() || nobodyAsks || error.number() == SP_ERROR_OTHER_TRANSIENT ||
           error.number() == SP_ERROR_BAD_USERNAME_OR_PASSWORD;
}

std::string environment(const char* name) {
    const char* value = g_getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

class ServerPictures final : public Pictures {
public:
    ServerPictures(Subsonic& server, const std::string& storeFile)
        : client(server), links(storeFile) {}

    std::optional<std::string> find(const std::string& digest, int longerSide) override {
        const std::optional<std::string> cover = links.cover(digest);
        if (!cover) {
            return std::nullopt;
        }
        try {
            return client.bytes("getCoverArt",
                                {{"id", *cover}, {"size", std::to_string(longerSide)}},
                                largestPicture);
        } catch (const ServerError& error) {
            if (error.isNotThere()) {
                return std::nullopt;
            }
            throw;
        }
    }

private:
    Subsonic& client;
    ServerStore links;
};

}  // namespace

ServerOptions ServerOptions::fromEnvironment() {
    ServerOptions options;
    options.address = serverAddress();
    options.plainAllowed = environment("SONOLET_SERVER_PLAIN") == "1";
    options.transcodes = environment("SONOLET_SERVER_TRANSCODE") == "1";
    const auto seconds = [](const char* name, double least, std::chrono::milliseconds& value) {
        const std::string text = environment(name);
        if (text.empty()) {
            return;
        }
        char* end = nullptr;
        const double number = g_ascii_strtod(text.c_str(), &end);
        constexpr double most = 600;
        constexpr double ms = 1000;
        if (*end != '\0' || !(number >= least && number <= most)) {
            throw std::runtime_error(std::string(name) + ": \"" + text +
                                     "\" is no number of seconds up to 600");
        }
        value = std::chrono::milliseconds(static_cast<int>(number * ms));
    };
    constexpr double shortestWait = 0.001;
    seconds("SONOLET_SERVER_PATIENCE", shortestWait, options.patience);
    seconds("SONOLET_SERVER_LOOK", 0, options.listPeriod);
    return options;
}

ServerSource::ServerSource(SourceEvents toSession, const ServerOptions& serverOptions)
    : events(std::move(toSession)), options(serverOptions), http(options.patience),
      client(http, ServerAddress(options.address), *this),
      lists(http, client.address(), *this, options.listPeriod, events.log, [this] {
          return isAway();
      }) {}

ServerSource::~ServerSource() {
    stop();
}

std::string ServerSource::fileOf(const StatePaths& paths) const {
    const std::string name = Id::digest({"server", client.address().base}).text();
    constexpr std::size_t length = 12;
    return paths.settings + "/server-" + name.substr(0, length);
}

Kept ServerSource::files(const StatePaths& paths) {
    storeFile = fileOf(paths) + ".db";
    sounds = std::make_unique<SoundStore>(http, client, paths.cache + "/music", events.log, *this);
    return {fileOf(paths) + "-lists.db", paths.catalogueFile(client.address().base)};
}

void ServerSource::start(const Kept& files) {
    sounds->setBitrate(320, options.transcodes);
    {
        const std::lock_guard<std::mutex> lock(mutex);
        kept = files;
    }
    ownLinks = std::make_unique<ServerStore>(storeFile);
    findSize.reset();
    sizes = std::make_unique<Database>(files.catalogue, Database::Durability::process);
    findSize = std::make_unique<Statement>(
        *sizes, "SELECT size FROM tracks WHERE folder_id = 1 AND name = ?1");
    if (fetcher == nullptr) {
        fetcher = std::make_unique<Worker>();
    }
    fetcher->post([this] { fetched.reset(); });
    lists.start(storeFile, files);
    if (user) {
        catchUp();  // with what could not be written before
    }
}

void ServerSource::stop() {
    stopping = true;
    http.stop();
    lists.stop();
    fetcher.reset();
    fetched.reset();
    findSize.reset();
    sizes.reset();
    ownLinks.reset();
}

void ServerSource::rebuild(const DatabaseError& error) {
    events.post([this, error] {
        if (stopping || !error.damaged() || error.path() != kept.catalogue) {
            return;
        }
        try {
            events.log(setCatalogueAside(error));
            start(kept);
        } catch (const std::exception& failure) {
            events.log(failure.what());
        }
    });
}

// ---- Whether it is there ----

void ServerSource::answered(Subsonic::Clock::time_point asked) {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        if (stopping || asked <= lostAt || !away.exchange(false)) {
            return;
        }
    }
    events.log("The connection to " + client.address().base + " is back");
    events.post([this] {
        catchUp();
        lists.look();
        events.connection(SP_ERROR_OK);
    });
}

void ServerSource::failed(const ServerError& error) {
    if (stopping) {
        return;
    }
    if (error.number() == SP_ERROR_BAD_USERNAME_OR_PASSWORD) {
        events.log(error.what());
        events.post([this, number = error.number()] { events.expelled(number); });
    } else if (error.isLost()) {
        {
            const std::lock_guard<std::mutex> lock(mutex);
            lostAt = Subsonic::Clock::now();
            if (away.exchange(true)) {
                return;
            }
        }
        events.log(std::string("The connection is lost: ") + error.what());
        events.post([this, number = error.number()] { events.connection(number); });
        probeLater(firstProbe);
    }
}

void ServerSource::probeLater(std::chrono::milliseconds pause) {
    http.after(pause, [this, pause] {
        // On the network's thread, which is joined before the worker.
        fetcher->post([this, pause] {
            try {
                if (away) {
                    client.call("ping");
                }
            } catch (const ServerError&) {
                probeLater(std::min(pause * 2, lastProbe));
            }
        });
    });
}

// ---- Who is logged in ----

void ServerSource::enter(const Account& account) {
    user = account;
    ServerLogin login;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        login = logins.at(account.name);
    }
    client.use(login);
    hopeless.clear();
    catchUp();
    lists.enter(account, login);
}

void ServerSource::catchUp() {
    for (const Item& item : wanted) {
        fetch(item);
    }
    fetcher->post([this] {
        reportPlays();
        meetUsers();
    });
}

void ServerSource::leave() {
    user.reset();
    lists.leave();
    client.use(std::nullopt);
}

void ServerSource::listsChanged() {
    lists.look();
}

void ServerSource::agreeOnLists() {
    lists.agree();
}

// ---- What handles want ----

sp_error ServerSource::absence(sp_linktype kind, const Id& id) {
    const Item item(kind, id);
    if (hopeless.count(item) > 0) {
        return SP_ERROR_OTHER_PERMANENT;
    }
    if (wanted.insert(item).second) {
        fetch(item);
    }
    return SP_ERROR_IS_LOADING;
}

// Nobody can be asked while nobody is logged in; the next login does.
void ServerSource::fetch(const Item& item) {
    if (user && !away && fetcher != nullptr) {
        fetcher->post([this, item] { find(item); });
    }
}

ServerSource::Fetching& ServerSource::fetching() {
    if (fetched == nullptr) {
        std::string catalogue;
        {
            const std::lock_guard<std::mutex> lock(mutex);
            catalogue = kept.catalogue;
        }
        fetched = std::make_unique<Fetching>(storeFile, catalogue);
    }
    return *fetched;
}

void ServerSource::find(const Item& item) {
    bool isThere = true;
    try {
        Fetching& with = fetching();
        const std::string id = with.links.serverId(item.first, item.second);
        const auto ask = [&](const char* method, const char* part) {
            return client.call(method, {{"id", id}})[part];
        };
        Seen seen;
        try {
            if (item.first == SP_LINKTYPE_TRACK) {
                seen.songs = readSongs(ask("getSong", "song"));
                isThere = !seen.songs.empty();
            } else if (item.first == SP_LINKTYPE_ALBUM) {
                const Reply album = ask("getAlbum", "album");
                seen.albums = readAlbums(album);
                seen.songs = readSongs(album["song"]);
                isThere = !seen.albums.empty();
            } else {
                const Reply artist = ask("getArtist", "artist");
                seen.artists = readArtists(artist);
                seen.albums = readAlbums(artist["album"]);
                isThere = !seen.artists.empty();
            }
        } catch (const ServerError& error) {
            isThere = false;
            if (!error.isNotThere()) {
                events.log(error.what());
                if (mayAnswerLater(error)) {
                    askLater(item, error);
                    return;
                }
            }
        }
        busyPause = {};
        with.writer.write(seen);
    } catch (const std::exception& error) {
        events.log(error.what());
        fetched.reset();
        return;
    }
    events.post([this, item, isThere] {
        wanted.erase(item);
        if (!isThere) {
            hopeless.insert(item);
            events.settled();
        }
    });
}

// What is lost is asked for when it is back, and who is refused logs in again.
void ServerSource::askLater(const Item& item, const ServerError& error) {
    if (error.isLost() || error.number() != SP_ERROR_OTHER_TRANSIENT) {
        return;
    }
    busyPause = busyPause.count() == 0 ? firstPause : std::min(busyPause * 2, longestPause);
    http.after(busyPause, [this, item] {
        events.post([this, item] {
            if (wanted.count(item) > 0) {
                fetch(item);
            }
        });
    });
}

// ---- Plays ----

void ServerSource::playing(const Id& track) {
    fetcher->post([this, track] {
        try {
            const std::string id = fetching().links.serverId(SP_LINKTYPE_TRACK, track);
            client.call("scrobble", {{"id", id}, {"submission", "false"}});
        } catch (const std::exception&) {
            // Who plays now is of no interest later.
        }
    });
}

void ServerSource::played(const Id& track) {
    ownLinks->addPlay(track, g_get_real_time() / 1000);
    fetcher->post([this] { reportPlays(); });
}

void ServerSource::reportPlays() {
    try {
        ServerStore& links = fetching().links;
        while (const std::optional<ServerStore::Play> play = links.oldestPlay()) {
            try {
                client.call("scrobble", {{"id", links.serverId(SP_LINKTYPE_TRACK, play->track)},
                                         {"time", std::to_string(play->timeMs)},
                                         {"submission", "true"}});
            } catch (const ServerError& error) {
                if (error.code() < 0) {
                    return;  // it has not heard of it; later
                }
                events.log(std::string("A play is not counted: ") + error.what());
            }
            links.removePlay(play->number);
        }
    } catch (const std::exception& error) {
        events.log(error.what());
        fetched.reset();
    }
}

// ---- What the session uses ----

std::unique_ptr<Answers> ServerSource::answers(const Kept& files) {
    return std::make_unique<ServerAnswers>(client, files, storeFile, [this] { return isAway(); });
}

std::unique_ptr<Pictures> ServerSource::pictures(const std::string&, const StopFlag&) {
    return std::make_unique<ServerPictures>(client, storeFile);
}

std::shared_ptr<const Sound> ServerSource::openSound(const std::string& path) {
    std::int64_t size = -1;
    if (Cursor row = findSize->run(path); row.next()) {
        size = row.integer(0);
    }
    return sounds->open(path, path, size);
}

void ServerSource::setBitrate(int kilobits) {
    sounds->setBitrate(kilobits, options.transcodes);
}

void ServerSource::setCacheSize(std::uint64_t megabytes) {
    sounds->setLimit(megabytes);
}

}  // namespace sonolet::service
