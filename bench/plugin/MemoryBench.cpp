// sonolet-bench-memory: what the plug-in keeps on the heap, for any machine. The plug-in is linked
// in; every operator new of the process is counted, with what the allocator adds.

#include "Figures.h"
#include "Program.h"
#include "around/BareHost.h"

#include "jsplugin.h"

#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

namespace {

long inUse = 0;

long sizeOf(void* block) {
    return static_cast<long>(malloc_usable_size(block) + sizeof(std::size_t));
}

// The plug-in's own share of what lives, for each of many Tracks that script holds.
double bytesOfTrack(BareHost& host, jsplugin_obj* page) {
    constexpr int count = 10000;
    jsplugin_obj* const root = host.global(page, "Spotify");
    host.call(host.readObject(root, "Session"), "create",
              {BareHost::native(host.readObject(root, "SessionConfig"))});
    jsplugin_obj* const tracks = host.readObject(root, "Track");
    std::vector<jsplugin_obj*> alive;
    alive.reserve(count);
    const long before = inUse;
    for (int i = 0; i < count; ++i) {
        alive.push_back(host.call(tracks, "create", {BareHost::text("spotify:track:1")}).u.object);
    }
    return static_cast<double>(inUse - before) / count;
}

void run(const std::string& machine, double trackLimit) {
    const long atLoad = inUse;
    BareHost host(&jsplugin_capabilities, 20000);
    const long before = inUse;
    jsplugin_obj* const page = host.open();
    host.global(page, "Spotify");
    const double rest = static_cast<double>(atLoad + inUse - before) / 1024;
    const double limit = sizeof(void*) == 4 ? 96 : 0;
    figures::report(limit > 0
                        ? figures::within("heap at rest after load, " + machine, rest, "KiB", limit)
                        : figures::plain("heap at rest after load, " + machine, rest, "KiB"));
    figures::report(figures::within("memory of a live Track, native side, " + machine,
                                    bytesOfTrack(host, page), "bytes", trackLimit));
}

}  // namespace

void* operator new(std::size_t size) {
    void* const block = std::malloc(size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    inUse += sizeOf(block);
    return block;
}

void operator delete(void* block) noexcept {
    if (block != nullptr) {
        inUse -= sizeOf(block);
        std::free(block);
    }
}

void operator delete(void* block, std::size_t) noexcept {
    operator delete(block);
}

int main() {
    return figures::runProgram([] {
        if (sizeof(void*) == 4) {
            run("i686", 224);
        } else {
            run("x86-64", 320);
        }
    });
}
