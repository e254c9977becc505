#ifndef SONOLET_HANDLE_H
#define SONOLET_HANDLE_H

#include "libspotify/api.h"

#include <memory>
#include <stdexcept>
#include <string>

// The add-ref and release functions of a kind of libspotify handle. Script thread, as all of
// libspotify.
template <class Kind>
struct HandleTraits;

#define SONOLET_COUNTED(kind)                                                                      \
    template <>                                                                                    \
    struct HandleTraits<kind> {                                                                    \
        static constexpr auto addRef = &kind##_add_ref;                                            \
        static constexpr auto release = &kind##_release;                                           \
    }
SONOLET_COUNTED(sp_album);
SONOLET_COUNTED(sp_albumbrowse);
SONOLET_COUNTED(sp_artist);
SONOLET_COUNTED(sp_artistbrowse);
SONOLET_COUNTED(sp_image);
SONOLET_COUNTED(sp_link);
SONOLET_COUNTED(sp_playlist);
SONOLET_COUNTED(sp_playlistcontainer);
SONOLET_COUNTED(sp_search);
SONOLET_COUNTED(sp_toplistbrowse);
SONOLET_COUNTED(sp_track);
SONOLET_COUNTED(sp_user);
#undef SONOLET_COUNTED

// What script hears when libspotify has nothing, or a wrapper has no handle any more.
[[noreturn]] inline void throwNotRetrieved() {
    throw std::runtime_error("Failed to retrieve object from Spotify");
}

// A handle that libspotify answered. Throws when it answered none. Borrowed, as it came.
template <class Kind>
Kind* retrieved(Kind* handle) {
    if (!handle) {
        throwNotRetrieved();
    }
    return handle;
}

// What the link in a text names, borrowed from the link. Throws when it names nothing of that kind.
// The link is deliberately never released, as libspotify knows it of this plug-in: what the link
// names is kept by the wrapper's own reference.
template <class Kind>
Kind* namedBy(const std::string& text, Kind* (*convert)(sp_link*)) {
    return retrieved(convert(retrieved(sp_link_create_from_string(text.c_str()))));
}

// One counted reference to a libspotify handle, or none. Script thread.
template <class Kind>
class Handle final {
public:
    Handle() noexcept = default;

    explicit Handle(Kind* borrowed) noexcept { hold(borrowed); }

    // The destructor gives back what is left. Not copied: each wrapper takes a reference of its
    // own.
    ~Handle() { release(); }

    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    // Adds a reference of its own; a null handle, or one that libspotify refuses, is none.
    // REQUIRES: holds nothing.
    void hold(Kind* borrowed) noexcept {
        if (borrowed && HandleTraits<Kind>::addRef(borrowed) == SP_ERROR_OK) {
            handle = borrowed;
        }
    }

    // The handle, borrowed. Throws when there is none: null is never passed to libspotify.
    Kind* get() const { return retrieved(handle); }

    // False: none was given, libspotify refused one, or it has been given back.
    explicit operator bool() const noexcept { return handle != nullptr; }

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

// Gives a reference back, for an owner that is no Handle. REQUIRES: `handle` is not null, as a
// unique_ptr sees to.
struct HandleRelease {
    template <class Kind>
    void operator()(Kind* handle) const noexcept {
        HandleTraits<Kind>::release(handle);
    }
};

// The reference that a create function of libspotify returned, or none. It goes back before the
// host is asked for a wrapper's script object: a host may run anything in there.
template <class Kind>
using Created = std::unique_ptr<Kind, HandleRelease>;

#endif
