#ifndef SONOLET_ALBUMBROWSE_H
#define SONOLET_ALBUMBROWSE_H

#include "Wrapper.h"

// What is known of an album: its tracks and copyrights. Made by Factory. Script thread; empty until
// libspotify has answered.
class Albumbrowse final : public Wrapper<sp_albumbrowse> {
public:
    // The constructor object of the root.
    Albumbrowse();
    Albumbrowse(sp_session* librarySession,
                sp_albumbrowse* browse,
                const orvo::shared_ptr<LibWrapper>& libraryShare);

    // Script: browses an album, and calls a function with the result. (Album, function): answers
    // the browse at once, not loaded yet.
    static void create(jspp::function_context& context);
};

#endif
