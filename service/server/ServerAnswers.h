#ifndef SONOLET_SERVICE_SERVER_SERVER_ANSWERS_H
#define SONOLET_SERVICE_SERVER_SERVER_ANSWERS_H

#include "search/QueryStore.h"
#include "server/SeenWriter.h"
#include "source/Source.h"
#include "subsonic/Subsonic.h"

#include <functional>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

namespace sonolet::service {

// Answers of a server, which are written into the catalogue before they are given. While it is away
// they come from what was seen of it.
//
// A server finds the text of a query in names; what else a query may say, and how good an answer
// is, only the catalogue's index knows. So a search shows what the server finds, in its order, and
// behind that what the index finds among all that was seen.
//
// Threads: as Answers'; connections of its own. Ownership: the client is borrowed. Errors: as
// Answers', ServerError for SourceError; what was written before one stays.
class ServerAnswers final : public Answers {
public:
    ServerAnswers(Subsonic& client,
                  const Kept& kept,
                  const std::string& storeFile,
                  std::function<bool()> away);  // any thread; asked before each question

    SearchAnswer search(const SearchRequest& request) override;
    std::optional<AlbumContents> album(const Id& id) override;
    std::optional<ArtistContents> artist(const Id& id, bool withAlbums, bool withTracks) override;
    int learn(int offset) override;
    bool hasUser(const std::string& canonicalName) override;
    std::vector<Id> top(sp_toplisttype type, const ToplistScope& scope) override;

private:
    // What one kind has found so far: a page is cut from it, whichever was asked for first.
    struct Found {
        std::vector<Id> ids;
        std::unordered_set<Id> known;
        bool isAll = false;     // the server has no more
        bool hasLocal = false;  // and what the index finds is behind it

        void add(const Id& id);
        FoundPage page(const Page& wanted) const;
    };

    // Asks on until the pages and one more are there, or all: so one knows whether there is more.
    void fetchMore(const std::string& text, const Page (&wanted)[3]);
    // Fetches what the artists and albums that were found have, for the index to find.
    void widen();
    // Puts what the index finds behind what the server has found, once and for all of this query.
    void addLocal(const SearchRequest& request);
    // Written by then, with its songs; nothing when the server does not have it.
    std::optional<AlbumItem> fetchAlbum(const std::string& id);
    std::vector<Id> topTracks(const ToplistScope& scope);

    Subsonic& server;
    const std::function<bool()> isAway;
    ServerStore links;
    SeenWriter writer;
    QueryStore store;

    // Of the query that was asked last: its next page goes on with it.
    std::string lastText;
    Found found[3];  // artists, albums, tracks
};

}  // namespace sonolet::service

#endif
