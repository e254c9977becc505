// Pages that do anything in any order: reads, writes and calls with any values on any object,
// callbacks that go on inside, events, garbage, reloads.

#include "../fakes/FakeBackend.h"
#include "../fakes/FakeHost.h"
#include "../fakes/FakeLog.h"
#include "../fakes/Faults.h"
#include "../fakes/Inspection.h"
#include "../fault/Visitor.h"
#include "Input.h"
#include "Spotify.h"
#include "jspp/_detail/object_manager.h"
#include "jspp/_detail/private_record.h"

#include <algorithm>
#include <limits>
#include <memory>

namespace {

using jspp::__detail::inspection;
using jspp::__detail::objects;

class Pages {
public:
    Pages(Samples& itsSamples, Input& itsInput)
        : samples(itsSamples), input(itsInput), pages{host.open(), host.open()} {
        start();
        // Inside the host's functions the garbage goes.
        host.duringCallbacks = [this] { collect(); };
        while (!input.empty()) {
            step();
        }
        host.duringCallbacks = nullptr;
    }

private:
    // The first page has a session from the start.
    void start() {
        Visitor visitor(host, samples, pages[0]);
        visitor.connect();
        held = {host.find(pages[0], "Spotify"),       host.find(pages[0], "Spotify.Session"),
                host.find(pages[0], "Spotify.Track"), host.find(pages[0], "Spotify.Playlist"),
                host.find(pages[1], "Spotify"),       host.foreignObject(pages[1])};
    }

    jsplugin_obj* object() {
        held.erase(std::remove_if(held.begin(), held.end(),
                                  [this](jsplugin_obj* object) { return !host.alive(object); }),
                   held.end());
        return held.empty() ? pages[0] : held[input.below(static_cast<unsigned>(held.size()))];
    }
    jsplugin_obj* page() { return pages[input.byte() % 2]; }

    std::string nameOf(jsplugin_obj* object) {
        static const char* const others[] = {"0", "1", "-1", "x", "4294967296", "", "length"};
        if (input.byte() % 8 == 0 || !objects().is_object(object)) {
            return others[input.byte() % 7];
        }
        const jspp::name_table names =
            inspection::names(*jspp::__detail::private_record::of(object).self);
        const auto& all = inspection::readables(names);
        if (all.empty()) {
            return "item";
        }
        return std::next(all.begin(), input.below(static_cast<unsigned>(all.size())))->first;
    }

    Value value() {
        using limits = std::numeric_limits<double>;
        constexpr double infinity = limits::infinity();
        constexpr double nan = limits::quiet_NaN();
        static const double numbers[] = {0, 1, -1, 0.5, 1e300, -1e9, 3e9, 20, infinity, nan};
        static const char* const texts[] = {"spotify:track",    "spotify:album", "spotify:artist",
                                            "spotify:playlist", "TrackProgress", "LogMessage",
                                            "MetadataUpdated",  "ImageLoaded",   "TracksAddedEvent",
                                            "AAAA====",         "PlaylistAdded", "LoggedIn"};
        switch ("-0nnbttsooff"[input.byte() % 12]) {
        case '-':
            return {};
        case '0':
            return Value::null();
        case 'n':
            return numbers[input.byte() % 10];
        case 'b':
            return input.byte() % 2 == 0;
        case 't':
            return texts[input.byte() % 12];
        case 's':
            return input.text(100);
        case 'o':
            return object();
        default:
            return function();
        }
    }
    // One of the page's that goes on inside.
    jsplugin_obj* function() {
        held.push_back(host.function(page(), [this](const FakeHost::Values& values) {
            for (const Value& argument : values) {
                keep(argument);
            }
            if (++depth <= 3) {
                step();
            }
            --depth;
        }));
        return held.back();
    }
    FakeHost::Values values() {
        FakeHost::Values all(input.byte() % 12 % 11);
        std::generate(all.begin(), all.end(), [this] { return value(); });
        return all;
    }

    void keep(const Value& value) {
        if (value.object != nullptr && host.alive(value.object) &&
            std::find(held.begin(), held.end(), value.object) == held.end()) {
            held.push_back(value.object);
            if (held.size() > 64) {
                garbage.push_back(held[6]);  // the first ones stay
                held.erase(held.begin() + 6);
            }
        }
    }
    // What script cannot reach any more.
    void collect() {
        for (jsplugin_obj* object : std::exchange(garbage, {})) {
            if (objects().is_object(object) && host.alive(object)) {
                host.collect(object);
            }
        }
    }

    void step() {
        jsplugin_obj* const target = object();
        const bool isNative = objects().is_object(target);
        switch ("gggssccccciaevrl"[input.byte() % 16]) {
        case 'g':
            if (isNative) {
                keep(host.get(target, nameOf(target)).value);
            }
            break;
        case 's':
            if (isNative) {
                host.set(target, nameOf(target), value());
            }
            break;
        case 'c':
            if (isNative) {
                const std::string name = nameOf(target);
                keep(host.call(target, name, values()).value);
            }
            break;
        case 'i':
            invoke(target, object());
            break;
        case 'e':
            samples.raiseAll();
            break;
        case 'v':
            sound();
            break;
        case 'r':
            host.refusesObjects = input.byte() % 8 == 0;
            host.refusesFunctions = input.byte() % 8 == 0;
            break;
        case 'a':
            if (depth == 0) {
                host.advance(100 * (input.byte() % 4));
            }
            break;
        default:
            if (depth == 0) {
                reload();
            }
        }
        host.calls.clear();
    }

    // A function on another object, or on nothing.
    void invoke(jsplugin_obj* owner, jsplugin_obj* other) {
        if (objects().is_object(owner)) {
            const Answer read = host.get(owner, nameOf(owner));
            if (read.code == JSP_GET_VALUE_CACHE && read.value.object != nullptr &&
                !objects().is_object(read.value.object)) {
                jsplugin_obj* const self = input.byte() % 4 == 0 ? nullptr : other;
                host.invoke(self, read.value.object, values());
            }
        }
    }

    void sound() {
        static const std::string frames(1 << 16, 'f');
        FakeFactory& factory = FakeFactory::get();
        const unsigned what = input.byte() % 4;
        if (what == 0) {
            samples.spotify.deliver(frames.data(), static_cast<int>(input.below(1 << 14)));
        } else if (factory.held() == 0) {
            return;
        } else if (what == 1) {
            factory.current().request(input.below(65536), input.below(65536));
        } else {
            const unsigned type = input.byte() % 30;
            if (type != 1) {
                factory.current().send(type);
            }
        }
    }

    void reload() {
        jsplugin_obj* const again = page();
        if (input.byte() % 4 == 0) {
            host.collectGarbage(again);  // may take page functions
        }
        if (input.byte() % 4 == 0) {
            host.close(again);
            host.reopen(again);
        }
        collect();
        const Answer root = host.global(again, "Spotify");
        if (root.value.object != nullptr) {
            held.insert(held.begin(), root.value.object);
        }
    }

    Samples& samples;
    Input& input;
    FakeHost host;
    jsplugin_obj* const pages[2];
    std::vector<jsplugin_obj*> held;
    std::vector<jsplugin_obj*> garbage;
    int depth = 0;
};

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FakeSpotify& spotify = FakeSpotify::get();
    FakeFactory& factory = FakeFactory::get();
    FakeLog::get().threshold = 9;
    FakeLog::get().keepsLines = false;
    static Samples samples;
    spotify.keepsCalls = false;
    g_spotify_instance_Spotify.reset();
    g_spotify_instance_Spotify = orvo::shared_ptr<Spotify>(new Spotify);
    Input input(data, size);
    { const Pages pages(samples, input); }
    g_spotify_instance_Spotify.reset();
    samples.link->references = 0;  // of texts, kept on purpose
    require(spotify.imbalance().empty(), spotify.imbalance().c_str());
    require(spotify.sessionsReleased == spotify.sessionsCreated, "a session is left");
    require(factory.held() == 0, "a backend is left");
    require(FakeRequest::alive == 0, "a request is left");
    require(inspection::size() == 0, "something is left in the registry");
    samples.search->listeners.clear();
    samples.albumbrowse->listeners.clear();
    samples.artistbrowse->listeners.clear();
    samples.toplistbrowse->listeners.clear();
    factory.backends.clear();
    return 0;
}
