#include "engine/GlibScheduler.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

// In microseconds: sound is requested in less than a second.
constexpr gint64 longestRest = 100000;
// Below all that a browser does.
constexpr int lastOfAll = 1000;

}  // namespace

GlibScheduler::GlibScheduler(double speedFactor) : speed(speedFactor) {
    static GSourceFuncs functions = {};
    functions.dispatch = [](GSource*, GSourceFunc callback, gpointer data) {
        return callback(data);
    };
    for (GSource*& source : sources) {
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
    g_source_set_priority(sources[1], lastOfAll);
}

GlibScheduler::~GlibScheduler() {
    for (GSource* source : sources) {
        g_source_destroy(source);
        g_source_unref(source);
    }
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
    isRunning = true;
    arm();
    const gint64 now = g_get_monotonic_time();
    // Tasks scheduled from here on wait for the next round, so that other sources get theirs.
    const unsigned long roundEnd = lastTurn;
    bool isLate = false;
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
                // A late task keeps its beat, but never runs twice to catch up.
                Entry& repeated = entry->second;
                const gint64 due = repeated.place.first + repeated.interval;
                isLate = isLate || due < now;
                repeated.place = Place(std::max(due, now), ++lastTurn);
                order.emplace(repeated.place, id);
            } else {
                entries.erase(entry);
            }
        }
        next = order.begin();
    }
    if (isLate) {
        const gint64 end = g_get_monotonic_time();
        restUntil = end + std::min(end - now, longestRest);
    }
    isRunning = false;
    arm();
}

void GlibScheduler::arm() {
    const bool waits = !order.empty() && !isRunning;
    const gint64 due = waits ? order.begin()->first.first : -1;
    g_source_set_ready_time(sources[0], waits ? std::max(due, restUntil) : -1);
    g_source_set_ready_time(sources[1], due);
}
