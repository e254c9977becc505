#include "FakeBackend.h"

#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <mutex>
#include <utility>

namespace {

[[noreturn]] void stop(const char* who, const char* what) {
    fprintf(stderr, "FakeBackend: %s: %s\n", who, what);
    abort();
}

// The backend whose event is being handled on this thread.
thread_local const FakeBackend* sending = nullptr;

std::mutex& granting() {
    static auto* instance = new std::mutex;
    return *instance;
}

}  // namespace

std::atomic<int> FakeRequest::alive{0};

FakeRequest::FakeRequest(unsigned streamOffset, unsigned byteCount)
    : NeedDataEvent(streamOffset, byteCount), asked(byteCount) {
    ++alive;
}

FakeRequest::~FakeRequest() {
    --alive;
}

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
    FakeBackend& backend;
};

FakeBackend::~FakeBackend() {
    if (events.joinable()) {
        events.join();
    }
}

int FakeBackend::setSource(const char* url, SourceDescription** sources, int flags) {
    const Guard guard(*this, "setSource");
    const auto& reserved = sources[0]->reserved;
    if (std::any_of(std::begin(reserved), std::end(reserved), [](int word) { return word != 0; })) {
        stop("setSource", "reserved fields are not zero");
    }
    log += "source(\"" + std::string(url) + "\", " + std::to_string(sources[0]->kind) +
           (sources[1] == nullptr ? ", end, " : ", more, ") + std::to_string(flags) + ") ";
    return sourceResult;
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
    auto* request = static_cast<FakeRequest*>(event);
    if (size != request->size || size > request->asked) {
        stop("writeData", "size differs from the event's, or exceeds what was asked for");
    }
    writes.push_back(
        {request->offset, request->asked, size, status, {request->data, request->data + size}});
    delete[] request->data;
    delete request;
}

bool FakeBackend::send(unsigned type) {
    UVAEvent event(type);
    return client->handleEvent(&event);
}

bool FakeBackend::request(unsigned offset, unsigned size) {
    return client->handleEvent(new FakeRequest(offset, size));
}

void FakeBackend::start(std::function<UVAEvent*()> next) {
    events = std::thread([this, next = std::move(next)] {
        sending = this;
        while (!isReleased) {
            std::unique_ptr<UVAEvent> event(next());
            if (event == nullptr) {
                return;
            }
            if (event->type == 1) {
                client->handleEvent(event.release());
            } else {
                client->handleEvent(event.get());
            }
        }
    });
}

void FakeBackend::release() {
    if (callsUnderWay++ != 0) {
        stop("release", "overlaps a call");
    }
    if (isReleased.exchange(true)) {
        stop("release", "twice");
    }
    --callsUnderWay;
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
    whenRequested = nullptr;
    whenReleased = nullptr;
}

FakeBackend& FakeFactory::current() const {
    const std::lock_guard<std::mutex> lock(granting());
    if (backends.empty()) {
        stop("current", "none was granted");
    }
    return *backends.back();
}

int FakeFactory::held() const {
    const std::lock_guard<std::mutex> lock(granting());
    return static_cast<int>(
        std::count_if(backends.begin(), backends.end(),
                      [](const auto& backend) { return !backend->released(); }));
}

UVABackend* UVAFactory::requestBackend(UVABackend::UVABackendType type, UVAClient* client) {
    FakeFactory& factory = FakeFactory::get();
    if (type != UVABackend::UVA_BACKEND_MEDIA || client == nullptr) {
        stop("requestBackend", "wrong type or no client");
    }
    if (!factory.grants) {
        return nullptr;
    }
    FakeBackend* backend = nullptr;
    {
        const std::lock_guard<std::mutex> lock(granting());
        factory.backends.push_back(std::make_unique<FakeBackend>(client));
        backend = factory.backends.back().get();
    }
    backend->sourceResult = factory.sourceResult;
    if (factory.whenRequested) {
        factory.whenRequested(*backend);
    }
    return backend;
}

void UVAFactory::releaseBackend(UVABackend* backend) {
    auto& released = *static_cast<FakeBackend*>(backend);
    if (FakeFactory::get().whenReleased) {
        FakeFactory::get().whenReleased(released);
    }
    released.release();
}
