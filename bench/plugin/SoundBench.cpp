#include "CircularBuffer.h"
#include "Figures.h"
#include "Session.h"
#include "around/Backend.h"
#include "around/BareHost.h"
#include "around/Library.h"
#include "jspp/global_functions.h"
#include "main.h"
#include "plugin/PluginBench.h"

#include <jack/ringbuffer.h>
#include <sched.h>

#include <array>
#include <atomic>
#include <boost/lockfree/spsc_queue.hpp>
#include <cstring>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace figures;

namespace {

// Of a delivery and of a request, in bytes. Two requests are a delivery.
struct Sizes {
    const char* name;
    unsigned delivery;
    unsigned request;
};
constexpr Sizes inPlay{"8 KiB in, 4 KiB out", 8192, 4096};
// What a ring takes beside the copying.
constexpr Sizes bare{"8 bytes in, 4 bytes out", 8, 4};
using Bytes = std::array<char, inPlay.delivery>;

// Rings behind one shape: each takes a delivery whole or not at all, and gives a request likewise.
// Before the first there is the stream's header, as in play; it also keeps our ring, which never
// gives its last byte, from running dry.
constexpr std::array<char, 48> header{};

class Ours final {
public:
    explicit Ours(const Sizes& sizes) : size(sizes) { ring->write(header.data(), header.size()); }
    bool put(const char* bytes) {
        if (!ring->canWrite(size.delivery)) {
            return false;
        }
        ring->write(bytes, size.delivery);
        return true;
    }
    bool take(char* out) {
        if (!ring->canRead(0, size.request)) {
            return false;
        }
        ring->read(out, 0, size.request);
        return true;
    }

private:
    const Sizes size;
    std::unique_ptr<Buffer> ring = std::make_unique<CircularBuffer>();
};

class Jack final {
public:
    explicit Jack(const Sizes& sizes) : size(sizes) {
        jack_ringbuffer_write(ring.get(), header.data(), header.size());
    }
    bool put(const char* bytes) {
        return jack_ringbuffer_write_space(ring.get()) >= size.delivery &&
               jack_ringbuffer_write(ring.get(), bytes, size.delivery) == size.delivery;
    }
    bool take(char* out) {
        return jack_ringbuffer_read_space(ring.get()) >= size.request &&
               jack_ringbuffer_read(ring.get(), out, size.request) == size.request;
    }

private:
    const Sizes size;
    // It has sizes of powers of two; the next smaller one is kinder to the cache.
    std::unique_ptr<jack_ringbuffer_t, decltype(&jack_ringbuffer_free)> ring{
        jack_ringbuffer_create(std::size_t{512} * 1024), &jack_ringbuffer_free};
};

class Boost final {
public:
    explicit Boost(const Sizes& sizes) : size(sizes) { ring.push(header.data(), header.size()); }
    bool put(const char* bytes) {
        return ring.write_available() >= size.delivery &&
               ring.push(bytes, size.delivery) == size.delivery;
    }
    bool take(char* out) {
        return ring.read_available() >= size.request && ring.pop(out, size.request) == size.request;
    }

private:
    const Sizes size;
    boost::lockfree::spsc_queue<char> ring{CircularBuffer::capacity};
};

// The two copies alone, through storage of the same size, and a count of deliveries and requests
// each, without which two threads could not copy at all.
class Copies final {
public:
    explicit Copies(const Sizes& sizes) : size(sizes) {}
    bool put(const char* bytes) {
        const unsigned long turn = in.load(std::memory_order_relaxed);
        if (turn * 2 - out.load(std::memory_order_acquire) >= 2 * slots()) {
            return false;
        }
        std::memcpy(storage.get() + turn % slots() * size.delivery, bytes, size.delivery);
        in.store(turn + 1, std::memory_order_release);
        return true;
    }
    bool take(char* to) {
        const unsigned long turn = out.load(std::memory_order_relaxed);
        if (turn >= 2 * in.load(std::memory_order_acquire)) {
            return false;
        }
        std::memcpy(to, storage.get() + turn % (2 * slots()) * size.request, size.request);
        out.store(turn + 1, std::memory_order_release);
        return true;
    }

private:
    unsigned long slots() const { return CircularBuffer::capacity / size.delivery; }

    const Sizes size;
    std::unique_ptr<char[]> storage{new char[CircularBuffer::capacity]};
    std::atomic<unsigned long> in{0};
    std::atomic<unsigned long> out{0};
};

constexpr int deliveries = 4000;

template <class Ring>
std::function<void()> onOneThread(Ring& ring, Bytes& from, Bytes& to) {
    return [&] {
        for (int i = 0; i < deliveries; ++i) {
            ring.put(from.data());
            ring.take(to.data());
            ring.take(to.data());
            keep(to.data());
        }
    };
}

// Seconds by the clock on the wall.
template <class Ring>
std::function<void()> onTwoThreads(Ring& ring, Bytes& from, Bytes& to) {
    return [&] {
        std::thread writer([&] {
            for (int i = 0; i < deliveries; ++i) {
                while (!ring.put(from.data())) {
                    sched_yield();
                }
            }
        });
        for (int i = 0; i < 2 * deliveries; ++i) {
            while (!ring.take(to.data())) {
                sched_yield();
            }
        }
        writer.join();
    };
}

// Medians of several rings each, for where their memory lies decides more than their code: all of
// them stay, so that each lies elsewhere.
template <class Ring>
Compared inSeveralPlaces(const Sizes& sizes, double count, bool twoThreads) {
    constexpr int places = 9;
    Bytes from{};
    Bytes to{};
    std::vector<std::unique_ptr<Ours>> ours;
    std::vector<std::unique_ptr<Ring>> theirs;
    std::vector<double> subjects;
    std::vector<double> peers;
    for (int i = 0; i < places; ++i) {
        Ours& subject = *ours.emplace_back(std::make_unique<Ours>(sizes));
        Ring& peer = *theirs.emplace_back(std::make_unique<Ring>(sizes));
        const Compared here = twoThreads
                                  ? compare(5, count, wallSeconds, onTwoThreads(subject, from, to),
                                            onTwoThreads(peer, from, to))
                                  : compare(5, count, threadSeconds, onOneThread(subject, from, to),
                                            onOneThread(peer, from, to));
        subjects.push_back(here.subject);
        peers.push_back(here.peer);
    }
    return {median(subjects), median(peers)};
}

template <class Ring>
void throughput(const char* name, double least, bool twoThreads) {
    const double bytes = static_cast<double>(deliveries) * inPlay.delivery;
    const Compared moved = inSeveralPlaces<Ring>(inPlay, bytes, twoThreads);
    report(atLeast(std::string("ring, ") + inPlay.name + ", on " +
                       (twoThreads ? "two threads" : "one thread"),
                   1 / moved.subject, "GB/s", name, 1 / moved.peer, least));
}

void ownPart() {
    const Compared taken = inSeveralPlaces<Jack>(bare, deliveries, false);
    report(atMost(std::string("ring, ") + bare.name + ", on one thread", taken.subject, "ns",
                  "JACK's ring buffer", taken.peer, 1));
}

// The player from delivery to backend: what the plug-in itself takes, with everything around it
// bare. Deliveries of 2,048 frames, requests of 4 KiB, the polls in their time.
void playing() {
    constexpr int seconds = 300;
    constexpr unsigned bytesASecond = 44100 * 4;
    BareHost host(&jsplugin_capabilities);
    jsplugin_obj* const page = host.open();
    jsplugin_obj* const root = host.global(page, "Spotify");
    jsplugin_obj* const session = host.readObject(root, "Session");
    host.call(session, "create", {BareHost::native(host.readObject(root, "SessionConfig"))});
    jsplugin_obj* const track =
        host.call(host.readObject(root, "Track"), "create", {BareHost::text("spotify:track:1")})
            .u.object;
    jsplugin_obj* const listener = host.pageFunction();
    host.call(host.readObject(root, "Sonolet"), "addEventListener",
              {BareHost::text("TrackProgress"), BareHost::page(listener)});
    host.call(session, "playerLoad", {BareHost::native(track)});
    jsplugin_value play{};
    play.type = JSP_TYPE_BOOLEAN;
    play.u.boolean = 1;
    host.call(session, "playerPlay", {play});

    BenchBackend& backend = BenchBackend::get();
    const auto* const library = benchCallbacks();
    const std::vector<char> frames(inPlay.delivery);
    const sp_audioformat format{SP_SAMPLETYPE_INT16_NATIVE_ENDIAN, 44100, 2};
    std::vector<double> samples;
    const unsigned long before = backend.received;
    unsigned long delivered = 0;
    unsigned long asked = 0;
    for (int second = 0; second < seconds; ++second) {
        const double start = threadSeconds();
        for (int tick = 1; tick <= 20; ++tick) {  // of 50 ms
            const unsigned long due = (second * 20UL + tick) * bytesASecond / 20;
            for (; delivered < due; delivered += inPlay.delivery) {
                library->music_delivery(benchHandle<sp_session>(), &format, frames.data(),
                                        inPlay.delivery / 4);
            }
            for (; asked < due; asked += inPlay.request) {
                backend.request(inPlay.request);
            }
            if (tick % 5 == 0) {
                document_interval(page);
            }
            if (tick % 2 == 0) {
                _js_global_functions::js_document_interval(page);
            }
        }
        samples.push_back((threadSeconds() - start) * 1e3);
    }
    if (backend.received - before < static_cast<unsigned long>(seconds - 2) * bytesASecond) {
        throw std::runtime_error("the sound did not come through");
    }
    report(within("processor time for a second of playing sound", median(samples), "ms", 0.5));
    host.call(session, "playerUnload");
    host.collect(track);
    host.close(page);
}

}  // namespace

void benchSound() {
    {
        const SecondThread second;
        ownPart();
        // All copy with memcpy: what differs is within what a run differs from the next.
        throughput<Copies>("two memcpy", 0.9, false);
        throughput<Jack>("JACK's ring buffer", 0.9, false);
        throughput<Boost>("boost::lockfree::spsc_queue", 0.9, false);
    }
    throughput<Copies>("two memcpy", 0.9, true);
    throughput<Jack>("JACK's ring buffer", 0.9, true);
    throughput<Boost>("boost::lockfree::spsc_queue", 0.9, true);
    playing();
}
