#ifndef SONOLET_SERVICE_QUERIES_ARTISTBROWSE_H
#define SONOLET_SERVICE_QUERIES_ARTISTBROWSE_H

#include "queries/Query.h"

#include <optional>
#include <vector>

namespace sonolet::service {

// The albums and the most liked tracks of an artist; the type leaves one or the other out. Threads
// and ownership are as for Query.
class Artistbrowse : public QueryFor<sp_artistbrowse> {
public:
    // Under way once it is handed to Queries::ask(), as Albumbrowse.
    Artistbrowse(Ref<sp_artist> browsedArtist,
                 sp_artistbrowse_type browseType,
                 Callback* completion,
                 void* completionData);
    ~Artistbrowse() override;

    // SP_ERROR_INVALID_INDATA for a type that is none, SP_ERROR_OTHER_PERMANENT for an artist that
    // the catalogue does not have.
    sp_error find(Answers& answers) override;

    sp_artist* artist() const { return browsed.get(); }

    // 0 or NULL until it is loaded, for what the type leaves out, and for an index outside. Handles
    // are borrowed, for as long as this lives.
    int albumCount() const { return size(albums); }
    sp_album* album(int index) const { return at(albums, index); }
    int topTrackCount() const { return size(topTracks); }
    sp_track* topTrack(int index) const { return at(topTracks, index); }

protected:
    void take(Library& library) override;

private:
    // Constant after construction.
    const Ref<sp_artist> browsed;
    const Id link;
    const sp_artistbrowse_type type;

    // The worker's until it is taken.
    std::optional<ArtistContents> found;

    std::vector<Ref<sp_album>> albums;
    std::vector<Ref<sp_track>> topTracks;
};

}  // namespace sonolet::service

// The interface's name for it.
struct sp_artistbrowse final
    : sonolet::service::Artistbrowse {  // NOLINT(readability-identifier-naming)
    using Artistbrowse::Artistbrowse;
};

#endif
