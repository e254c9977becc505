#include "Request.h"

#include "MediaBackend.h"

#include <utility>

Request::Request(std::shared_ptr<MediaBackend> owner, unsigned streamOffset, unsigned byteCount)
    : NeedDataEvent(streamOffset, byteCount), backend(std::move(owner)) {}

Request::~Request() {
    if (backend) {
        backend->requestDropped();
    }
}
