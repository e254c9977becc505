#ifndef SONOLET_USER_H
#define SONOLET_USER_H

#include "Wrapper.h"

// A user of the service, as script sees it: a friend, the owner of a playlist, whoever added a
// track. Made by Factory; script has no way to create one. Script thread; each member asks
// libspotify anew.
class User final : public Wrapper<sp_user> {
public:
    User(sp_session* librarySession,
         sp_user* user,
         const orvo::shared_ptr<LibWrapper>& libraryShare);
};

#endif
