#ifndef SONOLET_SERVICE_PLAYER_HANDOVER_H
#define SONOLET_SERVICE_PLAYER_HANDOVER_H

#ifdef __SANITIZE_THREAD__
#include <sanitizer/tsan_interface.h>
#endif

namespace sonolet::service {

// An object that passes to GStreamer's threads and back does so under locks of GLib, which the
// thread sanitizer cannot see. A Handover says so to the sanitizer, from its construction to its
// end, in whatever thread has the object; in other builds it is nothing.
//
// It makes nothing safe: it tells of an order that is there. So it stands only where GLib's own
// lock has passed the object on, and says so to a tool that would otherwise report a race.
class Handover final {
public:
#ifdef __SANITIZE_THREAD__
    explicit Handover(void* passed) : object(passed) {
        __tsan_acquire(object);
    }
    ~Handover() {
        __tsan_release(object);
    }
#else
    explicit Handover(void*) {}
    // Not defaulted: a variable of this type is no unused one.
    ~Handover() {}  // NOLINT(modernize-use-equals-default)
#endif

    Handover(const Handover&) = delete;
    Handover& operator=(const Handover&) = delete;

private:
#ifdef __SANITIZE_THREAD__
    void* const object;
#endif
};

}  // namespace sonolet::service

#endif
