#ifndef SONOLET_SERVICE_SERVER_SERVER_SOURCE_H
#define SONOLET_SERVICE_SERVER_SERVER_SOURCE_H

#include "server/SeenWriter.h"
#include "server/ServerLists.h"
#include "server/SoundStore.h"
#include "source/Source.h"
#include "subsonic/Subsonic.h"
#include "threads/Worker.h"

#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace sonolet::service {

// What of a server can be chosen.
struct ServerOptions {
    std::string address;
    // Passwords may go over the network as they are to a server that knows nothing better.
    bool plainAllowed = false;
    // How long nothing may come before the connection counts as lost.
    std::chrono::milliseconds patience{10000};
    // How often it is looked at whether lists have changed there; 0: they are let alone.
    std::chrono::milliseconds listPeriod{5000};
    // Asks for what the server makes of all music, at the preferred bitrate.
    bool transcodes = false;

    // What SONOLET_SERVER and its kin say. Throws std::runtime_error for what makes no sense.
    static ServerOptions fromEnvironment();
};

// Music of a server on the network. What it shows is written into the catalogue, which handles
// read; a handle that has no row there has the server asked for it. Whether the server is there is
// learnt from every answer; while it is away, it is asked every few seconds whether it is back.
//
// Threads: as Source's. Beside the network's thread one fetches what handles want, one keeps the
// lists the same. Errors: as Source's; what the server does not answer is a line of the log, and
// asked again: once it is back, or soon where it is there and has no time. What it refuses is not
// there until somebody logs in anew.
class ServerSource final : public Source, public Subsonic::Watch {
public:
    ServerSource(SourceEvents toSession, const ServerOptions& serverOptions);
    ~ServerSource() override;

    std::string description() const override { return client.address().base; }
    Kept files(const StatePaths& paths) override;
    Accounts::First firstAccount() const override { return Accounts::First::nobody; }

    void start(const Kept& files) override;
    void stop() override;
    void rebuild(const DatabaseError& error) override;

    bool isSettling() const override { return false; }
    sp_error absence(sp_linktype kind, const Id& id) override;
    bool isAway() const override { return away; }

    Admission admit(Accounts& store,
                    const std::string& name,
                    const Secret& secret,
                    bool isBlob,
                    bool remember) override;
    Admission admitRemembered(Accounts& store) override;
    std::optional<std::string> remembered(Accounts& store) override;
    void forget(Accounts& store) override;
    void enter(const Account& account) override;
    void leave() override;
    void listsChanged() override;
    void agreeOnLists() override;

    std::unique_ptr<Answers> answers(const Kept& files) override;
    std::unique_ptr<Pictures> pictures(const std::string& catalogue, const StopFlag& stop) override;

    std::string soundPath(const std::string& path) const override { return path; }
    std::shared_ptr<const Sound> openSound(const std::string& path) override;
    void playing(const Id& track) override;
    void played(const Id& track) override;
    void setBitrate(int kilobits) override;
    void setCacheSize(std::uint64_t megabytes) override;

private:
    using Item = std::pair<sp_linktype, Id>;
    // Of the thread that fetches.
    struct Fetching {
        explicit Fetching(const std::string& storeFile, const std::string& catalogue)
            : links(storeFile), writer(catalogue, links) {}
        ServerStore links;
        SeenWriter writer;
    };

    // Any thread. An answer that was asked for before the connection was lost does
    // not bring it back.
    void answered(Subsonic::Clock::time_point asked) override;
    void failed(const ServerError& error) override;
    // Asks after the pause whether it is back, and then after twice as long, up to four seconds.
    void probeLater(std::chrono::milliseconds pause);
    ServerLogin proven(const std::string& name, const std::string& password);
    std::optional<ServerLogin>
    loginOfBlob(Accounts& store, const std::string& name, const std::string& blob);
    // Lets in whom the server, or what is kept of it, has proven.
    Admission let(Accounts& store, const ServerLogin& login, bool remember);
    std::string fileOf(const StatePaths& paths) const;
    // The owner's.
    void fetch(const Item& item);
    // With what had to wait for a server that answers.
    void catchUp();
    // The fetching thread's.
    // An answer is in the catalogue when the owner hears that there is one.
    void find(const Item& item);
    void askLater(const Item& item, const ServerError& error);
    void meetUsers();
    void reportPlays();
    Fetching& fetching();

    // Constant after construction.
    const SourceEvents events;
    const ServerOptions options;

    // Constant from files() on.
    std::string storeFile;
    std::unique_ptr<SoundStore> sounds;

    std::atomic<bool> away{false};
    std::atomic<bool> stopping{false};

    std::mutex mutex;
    // State below is protected by mutex.
    std::map<std::string, ServerLogin> logins;  // by account, of this process
    std::map<std::string, ServerLogin> blobs;   // of servers that know no tokens
    std::optional<std::string> rememberedHere;  // an account; until the program ends
    Subsonic::Clock::time_point lostAt;         // seen last
    Kept kept;

    // State below is the owner's.
    std::optional<Account> user;
    std::set<Item> wanted;    // asked for, or to be
    std::set<Item> hopeless;  // the server does not have them, or refuses them
    std::unique_ptr<ServerStore> ownLinks;
    std::unique_ptr<Database> sizes;
    std::unique_ptr<Statement> findSize;

    // State below is the fetching thread's.
    std::unique_ptr<Fetching> fetched;
    std::chrono::milliseconds busyPause{0};  // 0: the server has time

    Http http;
    Subsonic client;
    ServerLists lists;
    std::unique_ptr<Worker> fetcher;  // last: its tasks use the above
};

}  // namespace sonolet::service

#endif
