#ifndef SONOLET_SERVICE_QUERIES_TOPLISTBROWSE_H
#define SONOLET_SERVICE_QUERIES_TOPLISTBROWSE_H

#include "queries/Query.h"

#include <string>
#include <vector>

namespace sonolet::service {

// What is played and starred most, everywhere, in a country or by a user. Threads and ownership are
// as for Query.
class Toplistbrowse : public QueryFor<sp_toplistbrowse> {
public:
    // `listRegion` is an sp_toplistregion or a country as two letters in one number. `listUser`
    // names one, or is empty for none. `homeCountry` is that of accounts that name none.
    Toplistbrowse(sp_toplisttype listType,
                  int listRegion,
                  std::string listUser,
                  std::string homeCountry,
                  Callback* completion,
                  void* completionData);
    ~Toplistbrowse() override;

    // SP_ERROR_PERMISSION_DENIED for a user's list while nobody is logged in, SP_ERROR_NO_SUCH_USER
    // for one whom nobody knows, SP_ERROR_INVALID_INDATA for a region or type that is none.
    sp_error find(Answers& answers) override;

    // 0 or NULL until it is loaded, for everything that is not of the list's type, and for an index
    // outside. A hundred at most.
    int artistCount() const { return size(artists); }
    int albumCount() const { return size(albums); }
    int trackCount() const { return size(tracks); }
    sp_artist* artist(int index) const { return at(artists, index); }
    sp_album* album(int index) const { return at(albums, index); }
    sp_track* track(int index) const { return at(tracks, index); }

protected:
    void take(Library& library) override;

private:
    // Constant after construction.
    const sp_toplisttype type;
    const int region;
    const std::string user;
    const std::string home;

    // The worker's until it is taken.
    std::vector<Id> found;  // of the list's type, the most liked first

    std::vector<Ref<sp_artist>> artists;
    std::vector<Ref<sp_album>> albums;
    std::vector<Ref<sp_track>> tracks;
};

}  // namespace sonolet::service

// The interface's name for it.
struct sp_toplistbrowse final
    : sonolet::service::Toplistbrowse {  // NOLINT(readability-identifier-naming)
    using Toplistbrowse::Toplistbrowse;
};

#endif
