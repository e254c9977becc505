#ifndef SONOLET_HOST_MEDIA_REQUEST_H
#define SONOLET_HOST_MEDIA_REQUEST_H

#include "uva.h"

#include <memory>
#include <utility>

// A NeedDataEvent that knows who asked, keeps the asker in memory until it is answered or deleted,
// and tells it when the client deletes it without an answer. So an answer that comes after the
// asker's release still finds the object it is given to.
//
// Threads: one has it at a time, the asker's first and then the client's. Ownership: the client's
// once it was sent, the asker's again with the answer.
class Request final : public NeedDataEvent {
public:
    // Who waits for the answer.
    class Asker {
    public:
        // The request is deleted and will not be answered. Any thread.
        virtual void requestDropped() noexcept = 0;

    protected:
        ~Asker() = default;
    };

    // Offset and count are bytes of the stream.
    Request(std::shared_ptr<Asker> whoAsks, unsigned streamOffset, unsigned byteCount);

    // As with every NeedDataEvent, whoever deletes it has released `data` before.
    ~Request() override;

    // From now on the request is answered. Returns its asker, null the second time.
    std::shared_ptr<Asker> answered() { return std::move(asker); }

private:
    std::shared_ptr<Asker> asker;  // null once answered
};

#endif
