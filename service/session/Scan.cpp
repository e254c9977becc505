#include "session/Scan.h"

#include "accounts/PlaylistFiles.h"
#include "catalogue/Catalogue.h"

#include <utility>

namespace sonolet::service {

Scan::Scan(Callbacks& sessionCallbacks,
           const Storage& sessionStorage,
           std::string musicFolder,
           std::function<void()> over)
    : callbacks(sessionCallbacks), storage(sessionStorage), music(std::move(musicFolder)),
      catalogueFile(storage.catalogueFile()), tellOver(std::move(over)) {}

void Scan::start() {
    scanner.reset();
    ScanEvents events;
    events.log = [this](std::string line) { callbacks.log(std::move(line)); };
    if (storage.isKept()) {
        events.playlistFiles = [this, accounts = storage.accounts()](
                                   const std::vector<std::string>& files, const StopFlag& stop) {
            PlaylistFiles importer(
                music, catalogueFile, accounts,
                [this](std::string line) { callbacks.log(std::move(line)); }, stop);
            importer.update(files);
        };
    }
    events.finished = [this](bool) {
        callbacks.post([this] {
            rebuilding = false;
            tellOver();
        });
    };
    scanner = std::make_unique<Scanner>(music, storage.catalogue(), std::move(events));
}

void Scan::rebuild(const DatabaseError& error) {
    if (!error.damaged() || error.path() != catalogueFile || rebuilding.exchange(true)) {
        return;
    }
    callbacks.post([this, error] {
        stop();
        try {
            callbacks.log(setCatalogueAside(error));
        } catch (const std::exception& failure) {
            callbacks.log(failure.what());
        }
        start();
    });
}

}  // namespace sonolet::service
