#ifndef SONOLET_TOPLISTBROWSE_H
#define SONOLET_TOPLISTBROWSE_H

#include "Wrapper.h"

// What is played most, everywhere, in a country or by a user. Made by Factory. Script thread; empty
// until libspotify has answered.
class Toplistbrowse final : public Wrapper<sp_toplistbrowse> {
public:
    // The constructor object of the root.
    Toplistbrowse();
    Toplistbrowse(sp_session* librarySession,
                  sp_toplistbrowse* browse,
                  const orvo::shared_ptr<LibWrapper>& libraryShare);

    // Script: asks for a top list, and calls a function with it. (type, region, user or the empty
    // text, function): answers the list at once, not loaded yet.
    static void create(jspp::function_context& context);
};

#endif
