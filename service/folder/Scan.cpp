#include "folder/Scan.h"

#include "accounts/PlaylistFiles.h"
#include "catalogue/Catalogue.h"

#include <glib.h>

#include <utility>

namespace sonolet::service {

Scan::Scan(const SourceEvents& toSession, std::string musicFolder, std::function<void(Pass)> over)
    : events(toSession), music(std::move(musicFolder)), tellOver(std::move(over)) {}

void Scan::start(const Kept& kept, Pass pass) {
    scanner.reset();
    where = kept;
    running = true;
    isWanted = false;
    constexpr std::int64_t nanoseconds = 1000;
    beginning = g_get_real_time() * nanoseconds;
    ScanEvents said;
    said.log = events.log;
    if (kept.onDisk) {
        said.playlistFiles = [this, kept](const std::vector<std::string>& files,
                                          const StopFlag& stop) {
            PlaylistFiles importer(music, kept.catalogue, kept.accounts, events.log, stop);
            importer.update(files);
        };
    }
    said.finished = [this, pass](bool) {
        events.post([this, pass] {
            rebuilding = false;
            running = false;
            tellOver(pass);
            if (isWanted) {
                again();
            }
        });
    };
    scanner = std::make_unique<Scanner>(music, kept.catalogue, std::move(said), pass);
}

void Scan::again() {
    if (running) {
        isWanted = true;
    } else {
        start(Kept(where), Pass::again);
    }
}

void Scan::rebuild(const DatabaseError& error) {
    if (!error.damaged() || rebuilding.exchange(true)) {
        return;
    }
    events.post([this, error] {
        if (error.path() != where.catalogue) {
            rebuilding = false;
            return;
        }
        stop();
        try {
            events.log(setCatalogueAside(error));
        } catch (const std::exception& failure) {
            events.log(failure.what());
        }
        start(where);
    });
}

}  // namespace sonolet::service
