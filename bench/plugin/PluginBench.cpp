#include "plugin/PluginBench.h"

#include "Factory.h"
#include "Figures.h"
#include "Playlist.h"
#include "Program.h"
#include "Track.h"
#include "around/BareHost.h"
#include "around/Library.h"
#include "jspp/orvo/mutex.h"
#include "jspp/orvo/shared_ptr.h"

#include <array>
#include <memory>
#include <string>
#include <vector>

using namespace figures;

namespace {

constexpr int rounds = 15;

void ownPartOfCall() {
    constexpr int count = 100000;
    BareHost host(&jsplugin_capabilities);
    jsplugin_obj* const page = host.open();
    jsplugin_obj* const tracks = host.readObject(host.global(page, "Spotify"), "Track");
    host.call(host.readObject(host.global(page, "Spotify"), "Session"), "create",
              {BareHost::native(host.readObject(host.global(page, "Spotify"), "SessionConfig"))});
    jsplugin_obj* const track =
        host.call(tracks, "create", {BareHost::text("spotify:track:1")}).u.object;
    jsplugin_obj* const function = host.readObject(track, "index");
    jsplugin_function* const call = BareHost::functionOf(function);
    orvo::Mutex mutex;
    const Compared index = compare(
        rounds, count, threadSeconds,
        [&] {
            jsplugin_value result{};
            for (int i = 0; i < count; ++i) {
                call(track, function, 0, nullptr, &result);
                keep(result.u.number);
            }
        },
        [&] {
            for (int i = 0; i < count; ++i) {
                mutex.lock();
                keep(mutex);
                mutex.unlock();
            }
        });
    report(atMost("call with a number result, the plug-in's own part", index.subject, "ns",
                  "mutex locked and unlocked", index.peer, 2.5));
    host.collect(function);
    host.collect(track);
    host.close(page);
}

void nativeTrack() {
    constexpr int count = 10000;
    using Peer = std::array<char, sizeof(Track)>;
    Factory& factory = Factory::getInstance();
    double ofSubject = 0;
    std::vector<double> subject;
    std::vector<double> peer;
    for (int round = 0; round <= rounds; ++round) {
        double start = threadSeconds();
        for (int i = 0; i < count; ++i) {
            keep(factory.createTrack(benchHandle<sp_track>()).get());
        }
        ofSubject = threadSeconds() - start;
        // What the factory keeps of each until logout has its figure there.
        factory.clearTracks();
        start = threadSeconds();
        for (int i = 0; i < count; ++i) {
            keep(std::make_shared<Peer>().get());
        }
        if (round > 0) {
            subject.push_back(ofSubject * 1e9 / count);
            peer.push_back((threadSeconds() - start) * 1e9 / count);
        }
    }
    report(atMost("Track made and destroyed natively", median(subject), "ns",
                  "std::make_shared of its size", median(peer), 3));
}

template <class Pointer>
void copyAndDrop(const Pointer& pointer, int count) {
    for (int i = 0; i < count; ++i) {
        const Pointer copy = pointer;
        keep(copy);
    }
}

void sharedPointer() {
    constexpr int count = 200000;
    const auto ours = orvo::make_shared<int>(1);
    const auto theirs = std::make_shared<int>(1);
    const Compared copy = compare(
        rounds, count, threadSeconds, [&] { copyAndDrop(ours, count); },
        [&] { copyAndDrop(theirs, count); });
    report(atMost("orvo::shared_ptr copied and dropped", copy.subject, "ns", "std::shared_ptr",
                  copy.peer, 1));
}

template <class Make>
double logoutSeconds(int wrappers, const Make& make) {
    std::vector<decltype(make())> alive;
    alive.reserve(static_cast<std::size_t>(wrappers));
    for (int i = 0; i < wrappers; ++i) {
        alive.push_back(make());
    }
    const double start = threadSeconds();
    Factory::getInstance().clearObjects();
    return threadSeconds() - start;
}

template <class Make>
void loggingOut(const std::string& kind, const Make& make) {
    constexpr int wrappers = 100000;
    std::vector<double> samples;
    for (int round = 0; round < 5; ++round) {
        samples.push_back(logoutSeconds(wrappers, make) * 1e6 / wrappers);
    }
    report(
        within("logout with 100,000 live wrappers (" + kind + "), each", median(samples), "us", 1));
}

}  // namespace

void benchPlugin() {
    const SecondThread second;
    ownPartOfCall();
    nativeTrack();
    sharedPointer();
    loggingOut("Track", [] { return Factory::getInstance().createTrack(benchHandle<sp_track>()); });
    loggingOut("Playlist",
               [] { return Factory::getInstance().createPlaylist(benchHandle<sp_playlist>()); });
}

int main(int argc, char** argv) {
    return runGroups(argc, argv,
                     {{"plugin", benchPlugin},
                      {"sound", benchSound},
                      {"base64", benchBase64},
                      {"growth", benchGrowth}});
}
