#ifndef SONOLET_HOST_ENGINE_GLIBSCHEDULER_H
#define SONOLET_HOST_ENGINE_GLIBSCHEDULER_H

#include "engine/Scheduler.h"

#include <glib.h>

#include <array>
#include <map>
#include <unordered_map>
#include <utility>

// Tasks on the thread's default GLib main context, `speed` times as fast as the clock.
//
// GLib runs sources that are due in the order of their making, tasks run in the order of their
// time: so one source serves them all. When those that repeat are late, because the processor is,
// whatever else the thread has to do comes first, for as long as they had the thread and at most a
// tenth of a second: a browser's own sources may rank below, and a second source, the last of all,
// serves tasks meanwhile. Threads: the one that made it, on which tasks run. Tasks may schedule and
// cancel, themselves included. Ownership: tasks that have not run go with it, unrun.
class GlibScheduler final : public Scheduler {
public:
    // REQUIRES: `speed` is above 0; 2 halves each delay.
    explicit GlibScheduler(double speed = 1.0);
    ~GlibScheduler() override;

    GlibScheduler(const GlibScheduler&) = delete;
    GlibScheduler& operator=(const GlibScheduler&) = delete;

    unsigned schedule(Delay delay, Task task) override;
    void cancel(unsigned id) override;

private:
    // When a task is due (monotonic time, microseconds), and its turn among those due together.
    using Place = std::pair<gint64, unsigned long>;
    struct Entry {
        Place place;
        gint64 interval;  // microseconds
        Task task;
    };

    // Only what was due when it began: a task of no delay that schedules itself lets others in.
    void runDue();
    // Sets the sources to the first task that waits; none does while others run.
    void arm();

    const double speed;
    std::array<GSource*, 2> sources{};  // owned
    gint64 restUntil = 0;               // when others need no longer come first
    bool isRunning = false;
    unsigned lastId = 0;
    unsigned long lastTurn = 0;
    std::unordered_map<unsigned, Entry> entries;
    std::map<Place, unsigned> order;  // to the id; without the running task
};

#endif
