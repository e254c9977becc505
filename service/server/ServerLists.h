#ifndef SONOLET_SERVICE_SERVER_SERVER_LISTS_H
#define SONOLET_SERVICE_SERVER_SERVER_LISTS_H

#include "server/ListSync.h"
#include "source/Source.h"
#include "subsonic/Subsonic.h"
#include "threads/Worker.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace sonolet::service {

// Keeps the lists of the one who is logged in the same here and at the server: looks there every
// few seconds, and at once when something has changed here.
//
// Threads: the owner's. Owns the thread that waits for the server, and asks it as the user whose
// lists it has at hand, whoever is logged in by then. Errors: lines of the log.
class ServerLists final {
public:
    using Log = std::function<void(std::string line)>;

    // `lookPeriod` is how often the server is looked at; 0: lists stay as they are but for agree().
    // The functions are for any thread.
    ServerLists(Http& network,
                const ServerAddress& address,
                Subsonic::Watch& connection,
                std::chrono::milliseconds lookPeriod,
                Log logLine,
                std::function<bool()> away);

    // The server's store and the accounts that are kept the same; once more, goes on with others.
    void start(const std::string& storeFile, const Kept& kept);
    // Once the network is stopped, which ends its waits.
    void stop();

    // Whose lists from here on. What is under way for another one ends by itself, with an error.
    void enter(const Account& account, const ServerLogin& login);
    void leave();
    // Something has changed here, or the server is back.
    void look();
    // Waits until they are the same. Throws ServerError, DatabaseError.
    void agree();

private:
    enum class Why { period, change };

    // The worker's. One that belongs to a visit that is over does nothing.
    void pass(unsigned ofVisit, Why why);
    ListSync& syncing();

    // Constant after construction.
    Http& http;
    const std::chrono::milliseconds period;
    const Log log;
    const std::function<bool()> isAway;

    Subsonic server;
    std::atomic<unsigned> visit{0};  // grows when somebody comes or goes
    std::atomic<bool> isAsked{false};
    StopFlag stopping{false};

    // The worker's.
    std::string store;
    Kept files;
    Account user;
    std::unique_ptr<ListSync> sync;
    std::string lastLine;

    std::unique_ptr<Worker> worker;  // last: its tasks use the above
};

}  // namespace sonolet::service

#endif
