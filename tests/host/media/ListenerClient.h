#ifndef SONOLET_TESTS_HOST_MEDIA_LISTENERCLIENT_H
#define SONOLET_TESTS_HOST_MEDIA_LISTENERCLIENT_H

#include "uva.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <utility>
#include <vector>

// A stream that a client hands over piece by piece.
struct Feed {
    std::vector<unsigned char> bytes;
    std::size_t position = 0;
    std::size_t pieceLimit = 4096;  // the most that one answer carries

    std::size_t left() const { return bytes.size() - position; }
};

// A client as the plug-in is one: the backend's thread queues its requests, the test's thread
// answers them in order.
class ListenerClient final : public UVAClient {
public:
    ~ListenerClient() override { dropRequests(); }

    bool handleEvent(UVAEvent* event) override {
        if (onEvent) {
            onEvent(event->type);
        }
        const std::lock_guard<std::mutex> lock(mutex);
        ++eventCount;
        if (event->type == 1) {
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
               std::chrono::milliseconds limit = std::chrono::seconds(10)) {
        std::unique_lock<std::mutex> lock(mutex);
        return changed.wait_for(lock, limit, condition);
    }

    bool awaitRequests(std::size_t count) {
        return await([&] { return requests.size() >= count; });
    }

    bool awaitNotice(unsigned type) {
        return await([&] { return has(type); });
    }

    bool has(unsigned type) const {
        return std::find(notices.begin(), notices.end(), type) != notices.end();
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

    std::size_t offsetCount() {
        const std::lock_guard<std::mutex> lock(mutex);
        return offsets.size();
    }

    std::size_t eventCountNow() {
        const std::lock_guard<std::mutex> lock(mutex);
        return eventCount;
    }

    // Answers what is queued until the feed is used up, or its end, too.
    void answer(UVABackend& backend, Feed& feed, bool atEnd = true) {
        while (feed.left() > 0 || atEnd) {
            NeedDataEvent* const request = pop();
            if (request == nullptr) {
                return;
            }
            const std::size_t size =
                std::min({std::size_t{request->size}, feed.left(), feed.pieceLimit});
            std::copy_n(feed.bytes.begin() + static_cast<std::ptrdiff_t>(feed.position), size,
                        request->data);
            const bool last = feed.left() == 0;
            feed.position += size;
            request->size = static_cast<unsigned>(size);
            backend.writeData(request, static_cast<unsigned>(size),
                              last ? UVABackend::WRITE_DATA_END_OF_STREAM
                                   : UVABackend::WRITE_DATA_OK);
        }
    }

    // Answers as answer() does, again and again, until the backend says `type`.
    bool answerUntil(unsigned type, UVABackend& backend, Feed& feed, bool atEnd = true) {
        const auto hasWork = [&] { return !requests.empty() && (feed.left() > 0 || atEnd); };
        while (await([&] { return has(type) || hasWork(); })) {
            {
                const std::lock_guard<std::mutex> lock(mutex);
                if (has(type)) {
                    return true;
                }
            }
            answer(backend, feed, atEnd);
        }
        return false;
    }

    // Frees the requests as a client does that gives its track up.
    void dropRequests() {
        while (NeedDataEvent* const request = pop()) {
            delete[] request->data;
            delete request;
        }
    }

    // Set before the backend has a source; called first in handleEvent, without the lock.
    std::function<void(unsigned type)> onEvent;

    // State below is protected by mutex.
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<NeedDataEvent*> requests;
    std::vector<unsigned> offsets;  // of all requests
    std::vector<unsigned> notices;  // types of the other events
    std::size_t eventCount = 0;
};

#endif
