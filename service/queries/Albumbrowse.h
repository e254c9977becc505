#ifndef SONOLET_SERVICE_QUERIES_ALBUMBROWSE_H
#define SONOLET_SERVICE_QUERIES_ALBUMBROWSE_H

#include "queries/Query.h"

#include <optional>
#include <string>
#include <vector>

namespace sonolet::service {

// What is on an album: its tracks by disc and number, and each copyright text once. Threads and
// ownership are as for Query.
class Albumbrowse : public QueryFor<sp_albumbrowse> {
public:
    // Under way once it is handed to Queries::ask(); until then nobody looks.
    Albumbrowse(Ref<sp_album> browsedAlbum, Callback* completion, void* completionData);
    ~Albumbrowse() override;

    // SP_ERROR_OTHER_PERMANENT for an album that the catalogue does not have.
    sp_error find(Answers& answers) override;

    sp_album* album() const { return browsed.get(); }

    // Empty, 0 or NULL until it is loaded, and NULL for an index outside. Handles and texts are
    // borrowed, for as long as this lives.
    sp_artist* artist() const { return artistHandle.get(); }
    int trackCount() const { return size(tracks); }
    sp_track* track(int index) const { return at(tracks, index); }
    int copyrightCount() const { return size(copyrights); }
    const char* copyright(int index) const;

protected:
    void take(Library& library) override;

private:
    // Constant after construction.
    const Ref<sp_album> browsed;
    const Id link;

    // The worker's until it is taken.
    std::optional<AlbumContents> found;

    Ref<sp_artist> artistHandle;
    std::vector<Ref<sp_track>> tracks;
    std::vector<std::string> copyrights;
};

}  // namespace sonolet::service

// The interface's name for it.
struct sp_albumbrowse final
    : sonolet::service::Albumbrowse {  // NOLINT(readability-identifier-naming)
    using Albumbrowse::Albumbrowse;
};

#endif
