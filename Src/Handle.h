#ifndef SONOLET_HANDLE_H
#define SONOLET_HANDLE_H

#include "libspotify/api.h"

#include <stdexcept>

// The add-ref and release functions of a kind of libspotify handle.
template <class Kind>
struct HandleTraits;

template <>
struct HandleTraits<sp_track> {
    static constexpr auto addRef = &sp_track_add_ref;
    static constexpr auto release = &sp_track_release;
};
template <>
struct HandleTraits<sp_album> {
    static constexpr auto addRef = &sp_album_add_ref;
    static constexpr auto release = &sp_album_release;
};
template <>
struct HandleTraits<sp_artist> {
    static constexpr auto addRef = &sp_artist_add_ref;
    static constexpr auto release = &sp_artist_release;
};
template <>
struct HandleTraits<sp_user> {
    static constexpr auto addRef = &sp_user_add_ref;
    static constexpr auto release = &sp_user_release;
};

[[noreturn]] inline void throwNotRetrieved() {
    throw std::runtime_error("Failed to retrieve object from Spotify");
}

// A handle that libspotify answered. Throws when it answered none.
template <class Kind>
Kind* retrieved(Kind* handle) {
    if (!handle) {
        throwNotRetrieved();
    }
    return handle;
}

// One counted reference to a libspotify handle, or none. Script thread.
template <class Kind>
class Handle final {
public:
    Handle() noexcept = default;

    // Adds a reference of its own; a null handle stays null.
    explicit Handle(Kind* borrowed) noexcept : handle(borrowed) {
        if (handle) {
            HandleTraits<Kind>::addRef(handle);
        }
    }

    ~Handle() { release(); }

    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    // The handle, borrowed. Throws when there is none: null is never passed to libspotify.
    Kind* get() const { return retrieved(handle); }

    // Gives the reference back; nothing is left.
    void release() noexcept {
        if (handle) {
            HandleTraits<Kind>::release(handle);
            handle = nullptr;
        }
    }

private:
    Kind* handle = nullptr;
};

#endif
