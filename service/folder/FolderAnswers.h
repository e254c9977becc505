#ifndef SONOLET_SERVICE_FOLDER_FOLDER_ANSWERS_H
#define SONOLET_SERVICE_FOLDER_FOLDER_ANSWERS_H

#include "search/QueryStore.h"
#include "source/Source.h"

#include <optional>
#include <string>
#include <vector>

namespace sonolet::service {

// Answers out of the catalogue, which has all there is in a folder: nothing waits but for the disk,
// and there is never more to learn than the scan has written. While it scans, answers are about
// what it has found so far.
//
// Threads and ownership are as for Answers; connections of its own. Errors: DatabaseError.
class FolderAnswers final : public Answers {
public:
    explicit FolderAnswers(const Kept& kept) : store(kept.catalogue, kept.accounts) {}

    SearchAnswer search(const SearchRequest& request) override {
        return store.index.search(request);
    }
    std::optional<AlbumContents> album(const Id& id) override { return store.browser.album(id); }
    std::optional<ArtistContents> artist(const Id& id, bool withAlbums, bool withTracks) override {
        return store.browser.artist(id, withAlbums, withTracks);
    }
    // The scan learns.
    int learn(int) override { return 0; }
    bool hasUser(const std::string& canonicalName) override {
        return store.browser.hasUser(canonicalName);
    }
    std::vector<Id> top(sp_toplisttype type, const ToplistScope& scope) override {
        return store.browser.top(type, scope);
    }

private:
    QueryStore store;
};

}  // namespace sonolet::service

#endif
