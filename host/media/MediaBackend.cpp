#include "MediaBackend.h"

#include "AudioOptions.h"
#include "LogLine.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace {

constexpr double windowSeconds = 1.5;
constexpr std::chrono::milliseconds askAgainDelay{50};  // after an empty answer, at speed 1

unsigned windowOf(unsigned byteRate) {
    return std::max(static_cast<unsigned>(windowSeconds * byteRate), 4 * MediaBackend::requestSize);
}

}  // namespace

MediaBackend::MediaBackend(UVAClient& owner)
    : client(owner), window(windowOf(WavFormat().byteRate())) {}

MediaBackend::~MediaBackend() = default;

int MediaBackend::setSource(const char* url, SourceDescription** sources, int /*flags*/) {
    if (url == nullptr || *url != '\0' || sources == nullptr || *sources == nullptr) {
        logLine("a source must be an empty url and a list of at least one description");
        return 0;
    }
    const std::lock_guard<std::mutex> pipelineLock(pipelineMutex);
    if (pipeline || thread.joinable()) {
        logLine("a backend plays one source and has it already");
        return 0;
    }
    try {
        Pipeline::Listener& listener = *this;
        pipeline = std::make_unique<Pipeline>(listener, audioOptions());
        {
            const std::lock_guard<std::mutex> lock(mutex);
            speed = pipeline->speed();
        }
        thread = std::thread([self = shared_from_this()] { self->run(); });
    } catch (const std::exception& error) {
        pipeline.reset();
        logLine(error.what());
        return 0;
    }
    return 1;
}

void MediaBackend::play() {
    setWantPlay(true);
}

void MediaBackend::pause(int /*mode*/) {
    setWantPlay(false);
}

void MediaBackend::getPosition(double& position) {
    const std::lock_guard<std::mutex> lock(pipelineMutex);
    if (pipeline) {
        lastPosition = std::max(lastPosition, pipeline->position().value_or(0.0));
    }
    position = lastPosition;
}

void MediaBackend::writeData(NeedDataEvent* event, unsigned size, WriteDataStatus status) {
    const std::unique_ptr<NeedDataEvent> owned(event);
    if (!owned) {
        return;
    }
    std::unique_ptr<unsigned char[]> data(owned->data);
    auto* const request = dynamic_cast<Request*>(event);
    const std::shared_ptr<Request::Asker> asker =
        request != nullptr ? request->answered() : nullptr;
    if (asker.get() != this) {
        logLine("an answer to a request of another backend is dropped");
        if (asker) {
            asker->requestDropped();
        }
        return;
    }
    if (size > requestSize) {
        logLine("an answer of " + std::to_string(size) + " bytes to a request of " +
                std::to_string(requestSize) + " is cut");
        size = requestSize;
    }
    // Holding the pipeline keeps its end, which the answer may make due, behind the bytes.
    const std::lock_guard<std::mutex> pipelineLock(pipelineMutex);
    {
        const std::lock_guard<std::mutex> lock(mutex);
        requestBack(size, status);
    }
    if (!pipeline || size == 0) {
        return;
    }
    pipeline->push(std::move(data), size);
    if (const std::optional<unsigned> byteRate = pipeline->byteRate()) {
        const std::lock_guard<std::mutex> lock(mutex);
        window = windowOf(*byteRate);
    }
}

void MediaBackend::requestDropped() noexcept {
    const std::lock_guard<std::mutex> lock(mutex);
    requestBack(0, WRITE_DATA_OK);
}

void MediaBackend::close() {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        closed = true;
    }
    wake.notify_all();
    {
        const std::lock_guard<std::mutex> lock(pipelineMutex);
        pipeline.reset();
    }
    if (!thread.joinable()) {
        return;
    }
    if (thread.get_id() == std::this_thread::get_id()) {
        // Inside the client's handleEvent: the thread ends by itself when that returns, and keeps
        // this object until then.
        thread.detach();
    } else {
        thread.join();
    }
}

void MediaBackend::consumed(std::size_t bytes) noexcept {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        taken += bytes;
    }
    wake.notify_one();
}

void MediaBackend::drained() noexcept {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        if (!filled || ended || stopped || buffered() > 0) {
            return;
        }
        filled = false;
        starved = true;
        notices.push_back(EventType::BufferingStreamUnderrun);
    }
    wake.notify_one();
}

void MediaBackend::finished() noexcept {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        if (stopped) {
            return;
        }
        stopped = true;
        notices.push_back(EventType::PlaybackFinished);
    }
    wake.notify_one();
}

void MediaBackend::failed(bool inStream, const std::string& reason) noexcept {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        if (stopped) {
            return;
        }
        stopped = true;
        notices.push_back(inStream ? EventType::DecodeError : EventType::ReleaseBackend);
    }
    logLine((inStream ? "the stream cannot be decoded: " : "the output failed: ") + reason);
    wake.notify_one();
}

void MediaBackend::run() {
    std::unique_lock<std::mutex> lock(mutex);
    while (!closed) {
        if (shouldPlay() != playing || mayEnd()) {
            lock.unlock();
            applyState();
            lock.lock();
        } else if (!notices.empty()) {
            const EventType type = notices.front();
            notices.pop_front();
            tell(lock, type);
        } else if (mayAsk() && Clock::now() >= askAgain) {
            ask(lock);
        } else if (mayAsk()) {
            wake.wait_until(lock, askAgain);
        } else {
            wake.wait(lock);
        }
    }
}

void MediaBackend::ask(std::unique_lock<std::mutex>& lock) {
    const std::uint64_t offset = pushed + std::uint64_t{unanswered} * requestSize;
    ++unanswered;
    lock.unlock();
    // The client's from now on.
    client.handleEvent(new Request(shared_from_this(), static_cast<unsigned>(offset), requestSize));
    lock.lock();
}

void MediaBackend::tell(std::unique_lock<std::mutex>& lock, EventType type) {
    lock.unlock();
    UVAEvent event(static_cast<unsigned>(type));
    client.handleEvent(&event);
    lock.lock();
}

void MediaBackend::setWantPlay(bool play) {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        wantPlay = play;
    }
    applyState();
    wake.notify_one();
}

// Brings the pipeline to what the state asks for; whoever comes last applies the newest.
void MediaBackend::applyState() {
    const std::lock_guard<std::mutex> pipelineLock(pipelineMutex);
    if (!pipeline) {
        return;
    }
    std::unique_lock<std::mutex> lock(mutex);
    const bool end = mayEnd();
    const bool empty = pushed == 0;
    const bool change = shouldPlay() != playing;
    playing = shouldPlay();
    const bool play = playing;
    endSent = endSent || end;
    lock.unlock();
    if (end && empty) {
        finished();
    } else if (end) {
        pipeline->end();
    }
    if (change) {
        pipeline->setPlaying(play);
    }
}

bool MediaBackend::mayAsk() const {
    return !ended && !stopped && (unanswered + 1) * requestSize + buffered() <= window;
}

void MediaBackend::requestBack(unsigned size, WriteDataStatus status) {
    --unanswered;
    pushed += size;
    if (status == WRITE_DATA_END_OF_STREAM) {
        ended = true;
    } else if (size == 0) {
        askAgain =
            Clock::now() + std::chrono::duration_cast<Clock::duration>(askAgainDelay / speed);
    }
    if (!filled && (ended || buffered() >= window / 3)) {
        filled = true;
        if (starved && buffered() > 0) {
            notices.push_back(EventType::BufferingStreamBuffered);
        }
        starved = false;
    }
    wake.notify_one();
}
