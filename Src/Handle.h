#ifndef SONOLET_HANDLE_H
#define SONOLET_HANDLE_H

#include "libspotify/api.h"

#include <memory>
#include <stdexcept>
#include <string>

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
template <>
struct HandleTraits<sp_search> {
    static constexpr auto addRef = &sp_search_add_ref;
    static constexpr auto release = &sp_search_release;
};
template <>
struct HandleTraits<sp_albumbrowse> {
    static constexpr auto addRef = &sp_albumbrowse_add_ref;
    static constexpr auto release = &sp_albumbrowse_release;
};
template <>
struct HandleTraits<sp_artistbrowse> {
    static constexpr auto addRef = &sp_artistbrowse_add_ref;
    static constexpr auto release = &sp_artistbrowse_release;
};
template <>
struct HandleTraits<sp_toplistbrowse> {
    static constexpr auto addRef = &sp_toplistbrowse_add_ref;
    static constexpr auto release = &sp_toplistbrowse_release;
};
template <>
struct HandleTraits<sp_image> {
    static constexpr auto addRef = &sp_image_add_ref;
    static constexpr auto release = &sp_image_release;
};
template <>
struct HandleTraits<sp_playlist> {
    static constexpr auto addRef = &sp_playlist_add_ref;
    static constexpr auto release = &sp_playlist_release;
};
template <>
struct HandleTraits<sp_playlistcontainer> {
    static constexpr auto addRef = &sp_playlistcontainer_add_ref;
    static constexpr auto release = &sp_playlistcontainer_release;
};
template <>
struct HandleTraits<sp_link> {
    static constexpr auto addRef = &sp_link_add_ref;
    static constexpr auto release = &sp_link_release;
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

// What the link in a text names, borrowed from the link. Throws when it names nothing of that kind.
// The link is deliberately never released: nothing but its borrower's own reference counts on it.
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
