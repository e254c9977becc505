#ifndef SONOLET_TESTS_HOST_MEDIA_PLAYER_H
#define SONOLET_TESTS_HOST_MEDIA_PLAYER_H

#include "../../fakes/Test.h"

#include "uva.h"

// Types of the backend's events, as the device's clients know them.
enum : unsigned {
    releaseAsked = 0,
    needData = 1,
    playbackFinished = 4,
    decodeError = 7,
    streamUnderrun = 22,
    streamBuffered = 23,
};

// A client as the plug-in is one, with its backend: the backend's thread queues its requests, the
// test's thread answers them in order out of `feed`.
class Player final : public UVAClient {
public:
    explicit Player(std::vector<unsigned char> stream = {}) : feed(std::move(stream)) {}
    ~Player() override {
        release();
        dropRequests();
    }

    int open() {
        UVABackend::SourceDescription description{2, {}};
        UVABackend::SourceDescription* list[] = {&description, nullptr};
        return backend->setSource("", list, 0);
    }

    bool start() {
        const bool opened = open() == 1;
        backend->play();
        return opened;
    }

    // Plays all of the feed.
    bool playOut() { return start() && answerUntil(playbackFinished); }

    void release() {
        if (!released.exchange(true)) {
            UVAFactory::releaseBackend(backend);
        }
    }

    UVABackend* operator->() const { return backend; }

    double position() const {
        double seconds = -1;
        backend->getPosition(seconds);
        return seconds;
    }

    bool handleEvent(UVAEvent* event) override {
        if (onEvent) {
            onEvent(event->type);
        }
        const std::lock_guard<std::mutex> lock(mutex);
        if (event->type == needData) {
            auto* const request = static_cast<NeedDataEvent*>(event);
            offsets.push_back(request->offset);
            requests.push_back(request);
        } else {
            notices.push_back(event->type);
        }
        changed.notify_all();
        return true;
    }

    UVABackend* getDRMBackend(const char*) override { return nullptr; }

    // Whether `condition` came true within the time; it is checked with the lock held.
    bool await(const std::function<bool()>& condition,
               std::chrono::milliseconds limit = std::chrono::minutes(10)) {
        std::unique_lock<std::mutex> lock(mutex);
        return changed.wait_for(lock, limit, condition);
    }

    bool awaitRequests(std::size_t count) {
        return await([&] { return requests.size() >= count; });
    }

    bool has(unsigned type) const {
        return std::find(notices.begin(), notices.end(), type) != notices.end();
    }

    std::size_t asked() {
        const std::lock_guard<std::mutex> lock(mutex);
        return offsets.size();
    }

    // Whether neither a notice nor a request comes for a moment.
    bool staysQuiet() {
        std::unique_lock<std::mutex> lock(mutex);
        const std::size_t askedBefore = offsets.size();
        const std::size_t told = notices.size();
        return !changed.wait_for(lock, std::chrono::milliseconds(20), [&] {
            return offsets.size() > askedBefore || notices.size() > told;
        });
    }

    NeedDataEvent* pop() {
        const std::lock_guard<std::mutex> lock(mutex);
        if (requests.empty()) {
            return nullptr;
        }
        NeedDataEvent* const request = requests.front();
        requests.pop_front();
        return request;
    }

    // Answers a request with so much of the feed.
    void give(NeedDataEvent* request, std::size_t size, UVABackend::WriteDataStatus status) {
        std::copy_n(feed.begin() + static_cast<std::ptrdiff_t>(given), size, request->data);
        given += size;
        request->size = static_cast<unsigned>(size);
        backend->writeData(request, static_cast<unsigned>(size), status);
    }

    // Answers what is queued until the feed is used up, or its end, too.
    void answer(bool atEnd = true) {
        while (left() > 0 || atEnd) {
            NeedDataEvent* const request = pop();
            if (request == nullptr) {
                return;
            }
            give(request, std::min({std::size_t{request->size}, left(), pieceLimit}),
                 left() == 0 ? UVABackend::WRITE_DATA_END_OF_STREAM : UVABackend::WRITE_DATA_OK);
        }
    }

    // Answers as answer() does, again and again, until the backend says `type`.
    bool answerUntil(unsigned type, bool atEnd = true) {
        const auto hasWork = [&] { return !requests.empty() && (left() > 0 || atEnd); };
        while (await([&] { return has(type) || hasWork(); })) {
            if (await([&] { return has(type); }, std::chrono::milliseconds(0))) {
                return true;
            }
            answer(atEnd);
        }
        return false;
    }

    // Answers until the backend has asked for `count` pieces in all.
    bool answerUntilAsked(std::size_t count) {
        while (asked() < count) {
            if (!awaitRequests(1)) {
                return false;
            }
            answer();
        }
        return true;
    }

    // Frees the requests as a client does that gives its track up.
    void dropRequests() {
        while (NeedDataEvent* const request = pop()) {
            delete[] request->data;
            delete request;
        }
    }

    std::size_t left() const { return feed.size() - given; }

    std::vector<unsigned char> feed;
    std::size_t given = 0;
    std::size_t pieceLimit = 4096;  // the most that one answer carries
    // Set before the start; called first in handleEvent, without the lock.
    std::function<void(unsigned type)> onEvent;

    // State below is protected by mutex.
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<NeedDataEvent*> requests;
    std::vector<unsigned> offsets;  // of all requests
    std::vector<unsigned> notices;  // types of the other events

private:
    std::atomic<bool> released = false;
    UVABackend* const backend = UVAFactory::requestBackend(UVABackend::UVA_BACKEND_MEDIA, this);
};

#endif
