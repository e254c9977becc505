#include "FakeBackend.h"

#include "Faults.h"

#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <utility>

namespace {

[[noreturn]] void stop(const char* who, const char* what) {
    fprintf(stderr, "FakeBackend: %s: %s\n", who, what);
    abort();
}

// The backend whose event is being handled on this thread.
thread_local const FakeBackend* sending = nullptr;

}  // namespace

std::atomic<int> FakeRequest::alive{0};

class FakeBackend::Guard {
public:
    Guard(FakeBackend& guarded, const char* who) : backend(guarded) {
        if (backend.callsUnderWay++ != 0) {
            stop(who, "overlaps another call on the same backend");
        }
        if (backend.isReleased) {
            stop(who, "called after the release");
        }
    }
    ~Guard() { --backend.callsUnderWay; }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

private:
    const Outside outside;
    FakeBackend& backend;
};

FakeBackend::~FakeBackend() {
    if (events.joinable()) {
        events.join();
    }
}

int FakeBackend::setSource(const char* url, SourceDescription** sources, int flags) {
    const bool refused = Faults::get().strikes(Faults::Backend);
    const Guard guard(*this, "setSource");
    const auto& reserved = sources[0]->reserved;
    if (std::any_of(std::begin(reserved), std::end(reserved), [](int word) { return word != 0; })) {
        stop("setSource", "reserved fields are not zero");
    }
    log += "source(\"" + std::string(url) + "\", " + std::to_string(sources[0]->kind) +
           (sources[1] == nullptr ? ", end, " : ", more, ") + std::to_string(flags) + ") ";
    return refused ? 0 : FakeFactory::get().sourceResult;
}

void FakeBackend::play() {
    const Guard guard(*this, "play");
    log += "play ";
}

void FakeBackend::pause(int mode) {
    const Guard guard(*this, "pause");
    log += "pause(" + std::to_string(mode) + ") ";
}

void FakeBackend::getPosition(double& result) {
    const Guard guard(*this, "getPosition");
    result = position;
}

void FakeBackend::writeData(NeedDataEvent* event, unsigned size, WriteDataStatus status) {
    const Guard guard(*this, "writeData");
    const std::unique_ptr<FakeRequest> request(static_cast<FakeRequest*>(event));
    if (size != request->size || size > request->asked) {
        stop("writeData", "size differs from the event's, or exceeds what was asked for");
    }
    writes.push_back(
        {request->offset, request->asked, size, status, {request->data, request->data + size}});
    delete[] request->data;
    if (FakeFactory::get().whenWritten) {
        FakeFactory::get().whenWritten(*this);
    }
}

void FakeBackend::send(unsigned type) {
    VideoResizedEvent event(1, 2, 3.0);
    event.type = type;
    const InPlugin inside;
    client->handleEvent(&event);
}

void FakeBackend::request(unsigned offset, unsigned size) {
    auto* const event = new FakeRequest(offset, size);
    const InPlugin inside;
    client->handleEvent(event);
}

void FakeBackend::start(std::function<UVAEvent*()> next) {
    events = std::thread([this, next = std::move(next)] {
        sending = this;
        while (!isReleased) {
            std::unique_ptr<UVAEvent> event(next());
            if (event == nullptr) {
                return;
            }
            // Requests are the client's to free, other events the sender's.
            const InPlugin inside;
            client->handleEvent(event->type == 1 ? event.release() : event.get());
        }
    });
}

void FakeBackend::release() {
    {
        const Guard guard(*this, "release");
        isReleased = true;
    }
    if (sending != this && events.joinable()) {
        events.join();
    }
}

FakeFactory& FakeFactory::get() {
    static auto* instance = new FakeFactory;
    return *instance;
}

void FakeFactory::reset() {
    if (held() != 0) {
        stop("reset", "a backend was not released");
    }
    backends.clear();
    grants = true;
    sourceResult = 1;
    whenRequested = whenReleased = whenWritten = nullptr;
}

FakeBackend& FakeFactory::current() const {
    if (backends.empty()) {
        stop("current", "none was granted");
    }
    return *backends.back();
}

int FakeFactory::held() const {
    return static_cast<int>(
        std::count_if(backends.begin(), backends.end(),
                      [](const auto& backend) { return !backend->released(); }));
}

UVABackend* UVAFactory::requestBackend(UVABackend::UVABackendType type, UVAClient* client) {
    const bool refused = Faults::get().strikes(Faults::Backend);
    const Outside outside;
    FakeFactory& factory = FakeFactory::get();
    if (type != UVABackend::UVA_BACKEND_MEDIA || client == nullptr) {
        stop("requestBackend", "wrong type or no client");
    }
    if (refused || !factory.grants) {
        return nullptr;
    }
    factory.backends.push_back(std::make_unique<FakeBackend>(client));
    if (factory.whenRequested) {
        factory.whenRequested(factory.current());
    }
    return &factory.current();
}

void UVAFactory::releaseBackend(UVABackend* backend) {
    const Outside outside;
    auto& released = *static_cast<FakeBackend*>(backend);
    if (FakeFactory::get().whenReleased) {
        FakeFactory::get().whenReleased(released);
    }
    released.release();
}
