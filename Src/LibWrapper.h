#ifndef SONOLET_LIB_WRAPPER_H
#define SONOLET_LIB_WRAPPER_H

#include "libspotify/api.h"

// Keeps the libspotify session alive for everything that refers to it. Held through
// orvo::shared_ptr; the last share to go logs out and releases the session.
class LibWrapper final {
public:
    // Throws std::runtime_error("Failed to initialize libspotify"). Creates the session: one in a
    // process at a time. Callbacks may come before this returns.
    explicit LibWrapper(const sp_session_config& config);
    // Script thread, like all of libspotify; at the process's exit the thread that exits.
    ~LibWrapper();

    LibWrapper(const LibWrapper&) = delete;
    LibWrapper& operator=(const LibWrapper&) = delete;

    // Borrowed, valid as long as a share. Never null.
    sp_session* getSession() const noexcept { return session; }

private:
    sp_session* session = nullptr;
};

#endif
