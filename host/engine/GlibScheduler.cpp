#include "engine/GlibScheduler.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace {

// In which others have the thread when tasks are late, in microseconds: sound is requested in less
// than a second.
constexpr gint64 longestRest = 100000;

}  // namespace

GlibScheduler::GlibScheduler(double speedFactor) : speed(speedFactor) {
    static GSourceFuncs functions = {nullptr, nullptr, &GlibScheduler::dispatch,
                                     nullptr, nullptr, nullptr};
    source = g_source_new(&functions, sizeof(GSource));
    g_source_set_callback(
        source,
        [](gpointer self) -> gboolean {
            static_cast<GlibScheduler*>(self)->runDue();
            return G_SOURCE_CONTINUE;
        },
        this, nullptr);
    g_source_attach(source, g_main_context_get_thread_default());
}

GlibScheduler::~GlibScheduler() {
    g_source_destroy(source);
    g_source_unref(source);
}

gboolean GlibScheduler::dispatch(GSource*, GSourceFunc callback, gpointer data) {
    return callback(data);
}

unsigned GlibScheduler::schedule(Delay delay, Task task) {
    // Thirty years are as good as never, and keep the arithmetic in range.
    const double milliseconds = std::min(std::max(delay.count(), 0.0), 1e12);
    const auto interval = static_cast<gint64>(std::llround(milliseconds * 1000.0 / speed));
    const unsigned id = ++lastId;
    const Place place(g_get_monotonic_time() + interval, ++lastTurn);
    entries.emplace(id, Entry{place, interval, std::move(task)});
    order.emplace(place, id);
    arm();
    return id;
}

void GlibScheduler::cancel(unsigned id) {
    if (const auto entry = entries.find(id); entry != entries.end()) {
        order.erase(entry->second.place);
        entries.erase(entry);
        arm();
    }
}

void GlibScheduler::runDue() {
    const gint64 now = g_get_monotonic_time();
    // Tasks scheduled from here on wait for the next round, so that other sources get theirs.
    const unsigned long roundEnd = lastTurn;
    std::vector<unsigned> late;
    auto next = order.begin();
    while (next != order.end() && next->first.first <= now) {
        if (next->first.second > roundEnd) {
            ++next;
            continue;
        }
        const unsigned id = next->second;
        order.erase(next);
        // A copy: the task may cancel itself while it runs.
        const Task task = entries.at(id).task;
        const bool again = task();
        if (const auto entry = entries.find(id); entry != entries.end()) {
            if (again) {
                Entry& repeated = entry->second;
                repeated.place = Place(repeated.place.first + repeated.interval, ++lastTurn);
                if (repeated.place.first > now) {
                    order.emplace(repeated.place, id);
                } else {
                    late.push_back(id);
                }
            } else {
                entries.erase(entry);
            }
        }
        next = order.begin();
    }
    // What is late keeps its beat, but never runs twice to catch up.
    const gint64 end = g_get_monotonic_time();
    for (const unsigned id : late) {
        if (const auto entry = entries.find(id); entry != entries.end()) {
            entry->second.place.first = end + std::min(end - now, longestRest);
            order.emplace(entry->second.place, id);
        }
    }
    arm();
}

void GlibScheduler::arm() {
    g_source_set_ready_time(source, order.empty() ? -1 : order.begin()->first.first);
}
