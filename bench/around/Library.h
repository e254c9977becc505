#ifndef SONOLET_BENCH_AROUND_LIBRARY_H
#define SONOLET_BENCH_AROUND_LIBRARY_H

#include "libspotify/api.h"

// A client library that costs next to nothing: every handle is one and the same, counting does
// nothing, and answers are constants.

constexpr char benchText[] = "Twelve bytes";

// What the plug-in gave with its session; null before.
extern "C" __attribute__((visibility("default"))) const sp_session_callbacks* benchCallbacks();

// A playlist's callbacks as the plug-in added them last, and their userdata.
struct BenchPlaylistListener {
    const sp_playlist_callbacks* callbacks;
    void* userdata;
};
extern "C" __attribute__((visibility("default"))) BenchPlaylistListener benchPlaylistListener();

// What getters answer with a handle of a kind.
template <class Kind>
Kind* benchHandle() {
    static double handle;
    return reinterpret_cast<Kind*>(&handle);
}

#endif
