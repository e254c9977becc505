#ifndef SONOLET_OBJECT_H
#define SONOLET_OBJECT_H

#include "LibWrapper.h"
#include "jspp/event_dispatcher.h"
#include "jspp/interface.h"
#include "jspp/orvo/shared_ptr.h"

#include "libspotify/api.h"

// Base of every wrapper of a libspotify handle.
//
// A wrapper reads libspotify's current value at each call and caches nothing. Script thread.
// Ownership: a wrapper holds one reference to its handle, and a share of the session, which
// therefore outlives it.
class Object : public jspp::event_dispatcher<jspp::interface> {
public:
    ~Object() override = default;

    // What happens to a wrapper at logout: the handle goes back to libspotify, then the names leave
    // the script object if the class wants that; the object stays valid.
    void clear();

protected:
    // A constructor object: no session, no handle, and "create" for its own.
    Object();
    // Both may be null and empty: the wrapper answers nothing then but that it has no handle.
    Object(sp_session* librarySession, const orvo::shared_ptr<LibWrapper>& libraryShare);

    // Script: does nothing. Script's objects go when script lets them go.
    void release(jspp::function_context& context) const;

    // Gives the handle back, and whatever libspotify was told about this wrapper.
    virtual void releaseHandle() noexcept = 0;

    // Makes clear() take the class's names from this wrapper; the listener functions stay.
    void loseNamesAtLogout() noexcept { losesNames = true; }

    sp_session* const session;  // borrowed from the library share; null in a constructor object

private:
    const orvo::shared_ptr<LibWrapper> library;
    bool losesNames = false;
};

#endif
