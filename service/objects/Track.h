#ifndef SONOLET_SERVICE_OBJECTS_TRACK_H
#define SONOLET_SERVICE_OBJECTS_TRACK_H

#include "objects/Album.h"
#include "objects/Artist.h"
#include "objects/Library.h"

#include <memory>
#include <string>
#include <vector>

namespace sonolet::service {

// A track as the catalogue has it. Reads its row when it is asked, and again when the catalogue
// has changed; what was read stays when the row goes.
//
// Threads: as for Handle. Ownership: keeps its library, and the handles of album and artists that
// it has handed out; texts are good until the library's next edition. Errors: a catalogue that
// cannot be read is a DatabaseError, which the door turns into an empty answer.
class Track : public Handle {
public:
    Track(std::shared_ptr<Library> owner, const Id& trackId);
    ~Track() override;

    const Id& id() const { return link; }
    const Library& owner() const { return *library; }

    // It was in the catalogue at some time.
    bool isLoaded();
    // Why it is not loaded: SP_ERROR_IS_LOADING while the source may still find it, else
    // SP_ERROR_OTHER_PERMANENT.
    sp_error error();
    // Its file was there when it was last scanned, and no fault withholds it.
    bool isAvailable();
    // 0 to 100, by the plays of all users.
    int popularity();

    // Empty, 0 or NULL until it is loaded.
    const std::string& name();
    int durationMs();
    int disc();
    int number();
    sp_album* album();
    int artistCount();
    sp_artist* artist(int index);
    // By which the source knows it.
    const std::string& path();

private:
    const TrackRow& row();

    // Constant after construction.
    const std::shared_ptr<Library> library;
    const Id link;

    unsigned edition = 0;
    bool loaded = false;
    TrackRow known;
    Ref<sp_album> albumHandle;
    std::vector<Ref<sp_artist>> artistHandles;
};

}  // namespace sonolet::service

// The interface's name for it.
struct sp_track final : sonolet::service::Track {  // NOLINT(readability-identifier-naming)
    using Track::Track;
};

#endif
