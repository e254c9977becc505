#include "session/Callbacks.h"

#include <utility>

namespace sonolet::service {

Callbacks::Callbacks(const sp_session_callbacks& wantedOnes, sp_session* sessionHandle)
    : wanted(wantedOnes), handle(sessionHandle), queue([this] {
          if (wanted.notify_main_thread != nullptr) {
              wanted.notify_main_thread(handle);
          }
      }) {}

void Callbacks::log(std::string line) {
    if (wanted.log_message != nullptr) {
        post([this, line = std::move(line)] { wanted.log_message(handle, line.c_str()); });
    }
}

int Callbacks::deliver(const sp_audioformat& format, const void* frames, int count) const {
    return wanted.music_delivery == nullptr ? count
                                            : wanted.music_delivery(handle, &format, frames, count);
}

void Callbacks::endOfTrack() const {
    if (wanted.end_of_track != nullptr) {
        wanted.end_of_track(handle);
    }
}

void Callbacks::handleEvents() {
    for (std::size_t waiting = queue.size(); waiting > 0 && !closed; --waiting) {
        const EventQueue::Event event = queue.pop();
        try {
            event();
        } catch (const std::exception& error) {
            log(error.what());
        }
    }
}

}  // namespace sonolet::service
