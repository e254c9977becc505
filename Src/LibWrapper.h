#ifndef SONOLET_LIB_WRAPPER_H
#define SONOLET_LIB_WRAPPER_H

#include "libspotify/api.h"

// Keeps the libspotify session alive for everything that refers to it. Held through
// orvo::shared_ptr; the last share to go logs out and releases the session.
class LibWrapper final {
public:
    // Takes the session over.
    explicit LibWrapper(sp_session* owned) noexcept : session(owned) {}
    ~LibWrapper();

    LibWrapper(const LibWrapper&) = delete;
    LibWrapper& operator=(const LibWrapper&) = delete;

private:
    sp_session* const session;
};

#endif
