#include "Factory.h"
#include "Figures.h"
#include "Track.h"
#include "around/BareHost.h"
#include "around/Library.h"
#include "plugin/PluginBench.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

using namespace figures;

namespace {

constexpr int sizes[] = {10, 1000, 100000};

// The plug-in with one page open and a session.
class Place final {
public:
    Place() {
        host.call(session, "create", {BareHost::native(host.readObject(root, "SessionConfig"))});
    }
    ~Place() { host.close(page); }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

    jsplugin_obj* addListener(jsplugin_obj* to, const char* event) {
        jsplugin_obj* const listener = host.pageFunction();
        host.call(to, "addEventListener", {BareHost::text(event), BareHost::page(listener)});
        return listener;
    }
    static void raise() { benchCallbacks()->end_of_track(benchHandle<sp_session>()); }

    BareHost host{&jsplugin_capabilities, 400000};
    jsplugin_obj* const page = host.open();
    jsplugin_obj* const root = host.global(page, "Spotify");
    jsplugin_obj* const session = host.readObject(root, "Session");
};

template <class Work>
double seconds(const Work& work) {
    const double start = threadSeconds();
    work();
    return threadSeconds() - start;
}

// `work` answers its seconds for so many things. Reports what each takes, and the slope between the
// last two sizes of the logarithm of the time over that of the size: 1 is linear, 2 square. Lookups
// (`single`: the time is that of one among so many) have 0 when they are constant.
void grow(const std::string& what, bool single, const std::function<double(int)>& work) {
    std::vector<double> times;
    work(sizes[0]);
    for (const int size : sizes) {
        std::vector<double> samples;
        for (int i = 0; i < (size > 10000 ? 3 : 15); ++i) {
            samples.push_back(work(size));
        }
        times.push_back(median(samples));
        report(plain(what + ", " + std::to_string(size), times.back() * 1e9 / (single ? 1 : size),
                     "ns each"));
    }
    const double slope =
        std::log(times[2] / times[1]) / std::log(static_cast<double>(sizes[2]) / sizes[1]);
    // Memory that the processor's caches do not hold adds some; a square or a line would add 1.
    report(within(what + ", slope", std::max(slope, 0.0), "", single ? 0.3 : 1.3));
}

double listeners(int count) {
    Place place;
    double time = 0;
    time += seconds([&] {
        for (int i = 0; i < count; ++i) {
            place.addListener(place.session, "EndOfTrack");
        }
        Place::raise();
        BareHost::tick(place.page);
    });
    if (place.host.called() != static_cast<unsigned long>(count)) {
        throw std::runtime_error("listeners were not called");
    }
    return time;
}

double queuedCalls(int count) {
    Place place;
    place.addListener(place.session, "EndOfTrack");
    return seconds([&] {
        for (int i = 0; i < count; ++i) {
            Place::raise();
        }
        BareHost::tick(place.page);
    });
}

double wrappers(int count) {
    Place place;
    jsplugin_obj* const tracks = place.host.readObject(place.root, "Track");
    std::vector<jsplugin_obj*> alive;
    alive.reserve(static_cast<std::size_t>(count));
    const double time = seconds([&] {
        for (int i = 0; i < count; ++i) {
            alive.push_back(
                place.host.call(tracks, "create", {BareHost::text("spotify:track:1")}).u.object);
        }
        for (jsplugin_obj* const track : alive) {
            place.host.collect(track);
        }
    });
    Factory::getInstance().clearObjects();
    return time;
}

// A call of a member of one wrapper of a hundred, which lie far apart among so many: each has to be
// found in the registry. Often enough for the processor to have them at hand.
double lookup(int count) {
    Place place;
    jsplugin_obj* const tracks = place.host.readObject(place.root, "Track");
    std::vector<jsplugin_obj*> alive;
    for (int i = 0; i < count; ++i) {
        alive.push_back(
            place.host.call(tracks, "create", {BareHost::text("spotify:track:1")}).u.object);
    }
    jsplugin_obj* const function = place.host.readObject(alive[0], "index");
    jsplugin_function* const call = BareHost::functionOf(function);
    std::vector<jsplugin_obj*> some;
    for (int i = 0; i < 100; ++i) {
        some.push_back(alive[static_cast<std::size_t>(i) * alive.size() / 100]);
    }
    constexpr int times = 100;
    const auto callAll = [&] {
        jsplugin_value result{};
        for (jsplugin_obj* const track : some) {
            call(track, function, 0, nullptr, &result);
        }
    };
    callAll();
    const double time = seconds([&] {
        for (int i = 0; i < times; ++i) {
            callAll();
        }
    });
    place.host.collect(function);
    for (jsplugin_obj* const track : alive) {
        place.host.collect(track);
    }
    Factory::getInstance().clearObjects();
    return time / (times * static_cast<double>(some.size()));
}

// The tracks of a playlist as its event brings them, and each of them read.
double playlistTracks(int count) {
    Place place;
    jsplugin_obj* const playlist = place.host
                                       .call(place.host.readObject(place.root, "Playlist"),
                                             "create", {BareHost::text("spotify:playlist:1")})
                                       .u.object;
    const std::vector<sp_track*> tracks(static_cast<std::size_t>(count), benchHandle<sp_track>());
    place.addListener(playlist, "TracksAddedEvent");
    const BenchPlaylistListener added = benchPlaylistListener();
    std::vector<jsplugin_obj*> read;
    read.reserve(static_cast<std::size_t>(count));
    const double time = seconds([&] {
        added.callbacks->tracks_added(benchHandle<sp_playlist>(), tracks.data(), count, 0,
                                      added.userdata);
        BareHost::tick(place.page);
        for (int i = 0; i < count; ++i) {
            read.push_back(place.host.call(playlist, "track", {BareHost::number(i)}).u.object);
        }
        for (jsplugin_obj* const track : read) {
            place.host.collect(track);
        }
    });
    place.host.collect(playlist);
    Factory::getInstance().clearObjects();
    return time;
}

// Each opens, reads the root, listens, and goes.
double documents(int count) {
    Place place;
    std::vector<jsplugin_obj*> open;
    open.reserve(static_cast<std::size_t>(count));
    return seconds([&] {
        for (int i = 0; i < count; ++i) {
            jsplugin_obj* const document = place.host.open();
            jsplugin_obj* const session =
                place.host.readObject(place.host.global(document, "Spotify"), "Session");
            place.addListener(session, "EndOfTrack");
            open.push_back(document);
        }
        for (jsplugin_obj* const document : open) {
            place.host.close(document);
        }
        Place::raise();  // drops the listeners
    });
}

}  // namespace

void benchGrowth() {
    const SecondThread second;
    grow("growth: listeners, added and called", false, listeners);
    grow("growth: calls, queued and made", false, queuedCalls);
    grow("growth: wrappers, made and collected", false, wrappers);
    grow("growth: lookup among wrappers", true, lookup);
    grow("growth: tracks of a playlist", false, playlistTracks);
    grow("growth: documents, opened and closed", false, documents);
}
