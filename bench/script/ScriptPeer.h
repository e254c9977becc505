#ifndef SONOLET_BENCH_SCRIPT_SCRIPTPEER_H
#define SONOLET_BENCH_SCRIPT_SCRIPTPEER_H

#include <JavaScriptCore/JavaScript.h>

// What a person writes for this engine alone, over the same library.
namespace peer {

// Classes with static functions, a private record each, and a finalizer that frees it: a playlist
// with `track` and `numTracks`, a track with `name`, `duration`, `index`, `isLoaded`, `album` and
// `artist`, an album with `name` and `year`, an artist with `name`, a session with `setCacheSize`.
JSObjectRef session(JSContextRef context);
JSObjectRef playlist(JSContextRef context);
JSObjectRef track(JSContextRef context);

// A class with a property callback that compares the name in place: `length`.
JSObjectRef list(JSContextRef context);

}  // namespace peer

#endif
