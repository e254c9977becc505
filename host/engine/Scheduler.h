#ifndef SONOLET_HOST_ENGINE_SCHEDULER_H
#define SONOLET_HOST_ENGINE_SCHEDULER_H

#include <chrono>
#include <functional>

// Runs tasks later on the script thread, never from inside schedule(). Times are page time.
class Scheduler {
public:
    using Delay = std::chrono::duration<double, std::milli>;
    // Answers whether it is to run again after the same delay. It may schedule and cancel tasks,
    // itself included; it throws nothing.
    using Task = std::function<bool()>;

    virtual ~Scheduler() = default;

    // Tasks run in the order in which they fall due. Answers an id above 0, never used twice.
    virtual unsigned schedule(Delay delay, Task task) = 0;

    // Unknown ids are ignored.
    virtual void cancel(unsigned id) = 0;
};

#endif
