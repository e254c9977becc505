#include "objects/Track.h"

#include <utility>

namespace sonolet::service {

Track::Track(std::shared_ptr<Library> owner, const Id& trackId)
    : library(std::move(owner)), link(trackId) {}

Track::~Track() {
    library->tracks.forget(link, this);
}

const TrackRow& Track::row() {
    Catalogue* catalogue = library->catalogue();
    if (catalogue == nullptr || edition == library->edition()) {
        return known;
    }
    if (std::optional<TrackRow> found = catalogue->track(link)) {
        known = std::move(*found);
        albumHandle = library->album(known.album);
        std::vector<Ref<sp_artist>> artists;
        for (const Id& artist : known.artists) {
            artists.push_back(library->artist(artist));
        }
        artistHandles = std::move(artists);
        loaded = true;
    } else {
        known.available = false;
        library->ask(SP_LINKTYPE_TRACK, link);
    }
    edition = library->edition();
    return known;
}

bool Track::isLoaded() {
    row();
    return loaded;
}

sp_error Track::error() {
    return isLoaded() ? SP_ERROR_OK : library->absence(SP_LINKTYPE_TRACK, link);
}

bool Track::isAvailable() {
    return row().available && !library->isWithheld(link);
}

int Track::popularity() {
    Accounts* accounts = library->accounts();
    return accounts == nullptr || !isLoaded() ? 0 : accounts->popularity(link);
}

const std::string& Track::name() {
    return row().title;
}

int Track::durationMs() {
    return row().durationMs;
}

int Track::disc() {
    return row().disc;
}

int Track::number() {
    return row().number;
}

sp_album* Track::album() {
    row();
    return albumHandle.get();
}

int Track::artistCount() {
    row();
    return static_cast<int>(artistHandles.size());
}

sp_artist* Track::artist(int index) {
    return index < 0 || index >= artistCount() ? nullptr : artistHandles[index].get();
}

const std::string& Track::path() {
    return row().path;
}

}  // namespace sonolet::service
