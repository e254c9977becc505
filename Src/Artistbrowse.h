#ifndef SONOLET_ARTISTBROWSE_H
#define SONOLET_ARTISTBROWSE_H

#include "Wrapper.h"

// What is known of an artist: albums and most played tracks. Made by Factory. Script thread; empty
// until libspotify has answered.
class Artistbrowse final : public Wrapper<sp_artistbrowse> {
public:
    // The constructor object of the root.
    Artistbrowse();
    Artistbrowse(sp_session* librarySession,
                 sp_artistbrowse* browse,
                 const orvo::shared_ptr<LibWrapper>& libraryShare);

    // Script: browses an artist, and calls a function with the result. (Artist, type, function):
    // answers the browse at once, not loaded yet.
    static void create(jspp::function_context& context);
};

#endif
