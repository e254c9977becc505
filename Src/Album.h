#ifndef SONOLET_ALBUM_H
#define SONOLET_ALBUM_H

#include "Wrapper.h"

// An album of the catalogue, as script sees it. Made by Factory. Script thread; each member asks
// libspotify anew.
class Album final : public Wrapper<sp_album> {
public:
    // The constructor object of the root.
    Album();
    Album(sp_session* librarySession,
          sp_album* album,
          const orvo::shared_ptr<LibWrapper>& libraryShare);
    ~Album() override;

    // Script: a new wrapper for the album that a link names. Throws when the text is no link of an
    // album.
    static void create(jspp::function_context& context);
};

#endif
