#ifndef SONOLET_HOST_MEDIA_REQUEST_H
#define SONOLET_HOST_MEDIA_REQUEST_H

#include "uva.h"

#include <memory>

class MediaBackend;

// A NeedDataEvent that knows its backend, keeps it in memory until the request is answered or
// deleted, and tells it when the client deletes it without an answer. So an answer that comes
// after the release still finds the object it is given to.
class Request final : public NeedDataEvent {
public:
    Request(std::shared_ptr<MediaBackend> owner, unsigned streamOffset, unsigned byteCount);

    // Any thread. As with every NeedDataEvent, whoever deletes it has released `data` before.
    ~Request() override;

    // From now on the request is answered; its backend, which the caller keeps as long as needed.
    std::shared_ptr<MediaBackend> answered() { return std::move(backend); }

private:
    std::shared_ptr<MediaBackend> backend;  // null once answered
};

#endif
