#include "server/ServerLists.h"

#include <exception>
#include <future>
#include <utility>

namespace sonolet::service {

ServerLists::ServerLists(Http& network,
                         const ServerAddress& address,
                         Subsonic::Watch& connection,
                         std::chrono::milliseconds lookPeriod,
                         Log logLine,
                         std::function<bool()> away)
    : http(network), period(lookPeriod), log(std::move(logLine)), isAway(std::move(away)),
      server(network, address, connection) {}

void ServerLists::start(const std::string& storeFile, const Kept& kept) {
    if (worker == nullptr) {
        worker = std::make_unique<Worker>();
    }
    worker->post([this, storeFile, kept] {
        sync.reset();
        store = storeFile;
        files = kept;
    });
}

void ServerLists::stop() {
    stopping = true;
    worker.reset();
}

void ServerLists::enter(const Account& account, const ServerLogin& login) {
    leave();
    worker->post([this, account, login, number = visit.load()] {
        if (number == visit) {
            user = account;
            server.use(login);
            pass(number, Why::period);
        }
    });
}

void ServerLists::leave() {
    ++visit;
    server.use(std::nullopt);
    worker->post([this] {
        user = {};
        sync.reset();
    });
}

void ServerLists::look() {
    if (worker != nullptr && !isAsked.exchange(true)) {
        worker->post([this, number = visit.load()] { pass(number, Why::change); });
    }
}

void ServerLists::agree() {
    std::promise<void> done;
    worker->post([&] {
        try {
            syncing().run(FileLock::Wait::yes);
            done.set_value();
        } catch (const std::exception&) {
            done.set_exception(std::current_exception());
        }
    });
    done.get_future().get();
}

ListSync& ServerLists::syncing() {
    if (sync == nullptr) {
        sync = std::make_unique<ListSync>(server, store, files, user, log, stopping);
    }
    return *sync;
}

void ServerLists::pass(unsigned ofVisit, Why why) {
    if (why == Why::change) {
        isAsked = false;
    }
    if (ofVisit != visit || user.name.empty() || !files.onDisk || period.count() == 0) {
        return;
    }
    try {
        if (!isAway() && (why == Why::period || syncing().hasChanges())) {
            syncing().run(FileLock::Wait::no);
            lastLine.clear();
        }
    } catch (const ServerError& error) {
        // While it goes on, it is told once. What is lost is told already.
        if (!error.isLost() && !stopping && lastLine != error.what()) {
            log(lastLine = error.what());
        }
    } catch (const std::exception& error) {
        log(error.what());
        sync.reset();
    }
    if (why == Why::period) {
        http.after(period, [this, ofVisit] {
            // On the network's thread, which is joined before the worker.
            worker->post([this, ofVisit] { pass(ofVisit, Why::period); });
        });
    }
}

}  // namespace sonolet::service
