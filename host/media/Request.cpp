#include "Request.h"

#include <utility>

Request::Request(std::shared_ptr<Asker> whoAsks, unsigned streamOffset, unsigned byteCount)
    : NeedDataEvent(streamOffset, byteCount), asker(std::move(whoAsks)) {}

Request::~Request() {
    if (asker) {
        asker->requestDropped();
    }
}
