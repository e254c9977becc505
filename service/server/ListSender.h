#ifndef SONOLET_SERVICE_SERVER_LIST_SENDER_H
#define SONOLET_SERVICE_SERVER_LIST_SENDER_H

#include "server/ServerStore.h"
#include "subsonic/Items.h"
#include "subsonic/Subsonic.h"

#include <string>
#include <vector>

namespace sonolet::service {

// Makes a user's lists at the server what they are here, in as few requests as it takes.
//
// Threads: belongs to one at a time; each function waits for the server. Errors: ServerError, after
// which a part may have been sent; DatabaseError.
class ListSender final {
public:
    using Ids = std::vector<Id>;

    // Borrows both.
    ListSender(Subsonic& client, ServerStore& serverIds) : server(client), links(serverIds) {}

    // Name, comment and who may see it, as far as they differ.
    void about(const PlaylistItem& theirs, const ServerStore::Base& agreed);
    // Songs as links. A list that is only cut and added to keeps the rest in its place.
    void songs(const std::string& id, const Ids& from, const Ids& to);
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
