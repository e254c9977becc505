#ifndef SONOLET_SERVICE_SERVER_LIST_SENDER_H
#define SONOLET_SERVICE_SERVER_LIST_SENDER_H

#include "server/ServerStore.h"
#include "subsonic/Items.h"
#include "subsonic/Subsonic.h"

#include <string>
#include <vector>

namespace sonolet::service {

// Makes a user's lists at the server what they are here: `from` is what the server has, `to` what
// it shall have, songs as links.
//
// Threads: belongs to one at a time; each function waits for the server. Errors: ServerError, after
// which a part may have been sent; DatabaseError.
class ListSender final {
public:
    using Ids = std::vector<Id>;

    // Borrows both.
    ListSender(Subsonic& client, ServerStore& serverIds) : server(client), links(serverIds) {}

    // Name, comment and who may see it, as far as `agreed` differs from what the server has.
    void about(const PlaylistItem& theirs, const ServerStore::Base& agreed);
    // Those of the playlist with the server's id. One that is only cut and added to keeps the rest
    // in its place.
    void songs(const std::string& id, const Ids& from, const Ids& to);
    // Their order does not matter.
    void stars(const Ids& from, const Ids& to);

private:
    // As many requests as it takes: addresses have a length that servers end at.
    void inParts(const char* method,
                 const Subsonic::Parameters& first,
                 const char* name,
                 const std::vector<std::string>& values);
    std::vector<std::string> idsOf(const Ids& tracks);

    Subsonic& server;
    ServerStore& links;
};

}  // namespace sonolet::service

#endif
