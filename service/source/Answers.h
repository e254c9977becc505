#ifndef SONOLET_SERVICE_SOURCE_ANSWERS_H
#define SONOLET_SERVICE_SOURCE_ANSWERS_H

#include "search/Browser.h"
#include "search/SearchIndex.h"
#include "store/Id.h"

#include "libspotify/api.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace sonolet::service {

// Why a source does not answer, as a number of the interface and a line.
class SourceError : public std::runtime_error {
public:
    SourceError(sp_error errorCode, const std::string& text)
        : std::runtime_error(text), code(errorCode) {}
    sp_error number() const { return code; }

private:
    sp_error code;
};

// What a source says to queries. Whatever an answer names is in the catalogue when it is given.
//
// Threads: belongs to one at a time, and may wait there; the source ends such waits when it stops.
// Errors: SourceError for what the source has no answer to for now, DatabaseError.
class Answers {
public:
    virtual ~Answers() = default;

    virtual SearchAnswer search(const SearchRequest& request) = 0;

    // Nothing for what the source does not have.
    virtual std::optional<AlbumContents> album(const Id& id) = 0;
    virtual std::optional<ArtistContents>
    artist(const Id& id, bool withAlbums, bool withTracks) = 0;

    // Has the catalogue learn more of all tracks there are, from that one on: how many; 0: there
    // are no more that it does not have.
    virtual int learn(int offset) = 0;

    virtual bool hasUser(const std::string& canonicalName) = 0;
    // Up to a hundred links of that type, the most liked first.
    virtual std::vector<Id> top(sp_toplisttype type, const ToplistScope& scope) = 0;
};

}  // namespace sonolet::service

#endif
