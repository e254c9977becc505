#ifndef SONOLET_ANSWER_H
#define SONOLET_ANSWER_H

#include "Handle.h"
#include "jspp/interface.h"
#include "jspp/orvo/shared_ptr.h"
#include "jspp/result_context.h"

#include "libspotify/api.h"

#include <type_traits>

// What libspotify answered, as script gets it: an overload for each kind of result. Script thread.

// A new wrapper of a handle, made by the factory; of a null handle, too, but for a container, whose
// wrapper throws. It has taken a reference of its own when this returns; the handle stays the
// caller's. Throws when there is no memory, and without a session for a container.
orvo::shared_ptr<jspp::interface> wrapped(sp_album* handle);
orvo::shared_ptr<jspp::interface> wrapped(sp_albumbrowse* handle);
orvo::shared_ptr<jspp::interface> wrapped(sp_artist* handle);
orvo::shared_ptr<jspp::interface> wrapped(sp_artistbrowse* handle);
orvo::shared_ptr<jspp::interface> wrapped(sp_image* handle);
orvo::shared_ptr<jspp::interface> wrapped(sp_playlist* handle);
orvo::shared_ptr<jspp::interface> wrapped(sp_playlistcontainer* handle);
orvo::shared_ptr<jspp::interface> wrapped(sp_search* handle);
orvo::shared_ptr<jspp::interface> wrapped(sp_toplistbrowse* handle);
orvo::shared_ptr<jspp::interface> wrapped(sp_track* handle);
orvo::shared_ptr<jspp::interface> wrapped(sp_user* handle);

// Exactly one of the kinds: an enumeration is no number by itself.
template <class Result, class... Kinds>
constexpr bool isOneOf = (std::is_same_v<Result, Kinds> || ...);

// Numbers. Whoever answers an enumeration that is not among them decides what it is to script.
template <class Result>
void answer(Result result, jspp::result_context& context) {
    static_assert(isOneOf<Result, int, unsigned,
                          sp_uint64,  // a folder's id, of which a double holds 53 bits
                          sp_albumtype, sp_connectionstate, sp_error, sp_imageformat,
                          sp_playlist_type, sp_relation_type>,
                  "no answer() takes this kind of result");
    context.return_number(static_cast<double>(result));
}

// Each of these puts one value into the context, in place of an earlier one, and copies what it is
// handed: texts and ids are libspotify's until its next call.
void answer(bool flag, jspp::result_context& context);

// Narrowed to a boolean on purpose: whether there is any availability.
void answer(sp_track_availability availability, jspp::result_context& context);

// Null is the empty text.
void answer(const char* text, jspp::result_context& context);

// An image's id, in Base64. Throws when libspotify answered none.
void answer(const byte* imageId, jspp::result_context& context);

// A borrowed handle, as a new wrapper. Throws when libspotify answered none.
template <class Kind>
void answer(Kind* handle, jspp::result_context& context) {
    context.return_interface(wrapped(retrieved(handle)), false);
}

// The same for the reference that a create function returned. It goes back before the host is
// asked for the script object.
template <class Kind>
void answer(Created<Kind> created, jspp::result_context& context) {
    const orvo::shared_ptr<jspp::interface> wrapper = wrapped(retrieved(created.get()));
    created.reset();
    context.return_interface(wrapper, false);
}

#endif
