// The media backend and the log.

#include "tap/Call.h"
#include "tap/Taps.h"

#include "kellog.h"
#include "uva.h"

#include <atomic>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <deque>
#include <memory>
#include <mutex>
#include <vector>

namespace {

Value pointerOf(const void* pointer) {
    return Value::of(Tag::Pointer, pointer);
}

// What the backend sees of its client.
class WatchedClient final : public UVAClient {
public:
    explicit WatchedClient(UVAClient* client) : real(client) {}

    bool handleEvent(UVAEvent* event) override {
        Value values[6] = {pointerOf(this), pointerOf(event)};
        unsigned count = 2;
        if (event != nullptr) {
            values[count++] = integerValue(event->type);
            if (event->type == 1) {
                const auto* const request = static_cast<const NeedDataEvent*>(event);
                values[count++] = integerValue(request->offset);
                values[count++] = integerValue(request->size);
                values[count++] = pointerOf(request->data);
            } else if (event->type == 6) {
                const auto* const resized = static_cast<const VideoResizedEvent*>(event);
                values[count++] = integerValue(resized->width);
                values[count++] = integerValue(resized->height);
                values[count++] = numberValue(resized->pixelAspectRatio);
            }
        }
        Call call(Fn::handleEvent, values, count);
        const bool answer = real->handleEvent(event);
        call.end(booleanValue(answer));
        return answer;
    }

    UVABackend* getDRMBackend(const char* system) override {
        const Value values[] = {pointerOf(this), textValue(Tag::Text, system)};
        Call call(Fn::getDRMBackend, values, 2);
        UVABackend* const answer = real->getDRMBackend(system);
        call.end(pointerOf(answer));
        return answer;
    }

private:
    UVAClient* const real;
};

// What the plug-in sees of its backend, together with the backend's view of the plug-in.
class WatchedBackend final : public UVABackend {
public:
    explicit WatchedBackend(UVAClient* itsClient) : client(itsClient) {}

    int setSource(const char* url, SourceDescription** sources, int flags) override {
        const bool hasSource = sources != nullptr && *sources != nullptr;
        const Value values[] = {pointerOf(&client), textValue(Tag::Text, url),
                                integerValue(hasSource ? (*sources)->kind : -1),
                                integerValue(flags)};
        Call call(Fn::setSource, values, 4);
        const int answer = real->setSource(url, sources, flags);
        call.end(integerValue(answer));
        return answer;
    }
    void play() override {
        const Value value = pointerOf(&client);
        Call call(Fn::play, &value, 1);
        real->play();
        call.end();
    }
    void pause(int mode) override {
        const Value values[] = {pointerOf(&client), integerValue(mode)};
        Call call(Fn::pause, values, 2);
        real->pause(mode);
        call.end();
    }
    void getPosition(double& position) override {
        const Value value = pointerOf(&client);
        Call call(Fn::getPosition, &value, 1);
        real->getPosition(position);
        call.end(numberValue(position));
    }
    void writeData(NeedDataEvent* event, unsigned size, WriteDataStatus status) override {
        const Value values[] = {pointerOf(&client), pointerOf(event), integerValue(size),
                                integerValue(status)};
        Call call(Fn::writeData, values, 4);
        real->writeData(event, size, status);
        call.end();
    }

    WatchedClient client;
    UVABackend* real = nullptr;
};

// The plug-in's backends. The last few that were released are kept, for whoever calls them late.
class Backends final {
public:
    void add(std::unique_ptr<WatchedBackend> backend) {
        const std::lock_guard<std::mutex> lock(mutex);
        living.push_back(std::move(backend));
    }
    WatchedBackend* find(const UVABackend* backend) {
        const std::lock_guard<std::mutex> lock(mutex);
        for (const auto& each : living) {
            if (each.get() == backend) {
                return each.get();
            }
        }
        return nullptr;
    }
    void release(const WatchedBackend* backend) {
        const std::lock_guard<std::mutex> lock(mutex);
        for (auto each = living.begin(); each != living.end(); ++each) {
            if (each->get() == backend) {
                gone.push_back(std::move(*each));
                living.erase(each);
                break;
            }
        }
        if (gone.size() > mostGone) {
            gone.pop_front();
        }
    }

private:
    static constexpr std::size_t mostGone = 32;
    std::mutex mutex;
    std::vector<std::unique_ptr<WatchedBackend>> living;
    std::deque<std::unique_ptr<WatchedBackend>> gone;
};

Backends& backends() {
    static Backends& all = *new Backends;  // never freed: a backend's thread may outlive exit
    return all;
}

// The factory's functions are static members: plain functions with longer symbols.
UVABackend* (*requestOriginal)(UVABackend::UVABackendType, UVAClient*) = nullptr;
void (*releaseOriginal)(UVABackend*) = nullptr;

UVABackend* request(UVABackend::UVABackendType type, UVAClient* client) {
    auto watched = std::make_unique<WatchedBackend>(client);
    const Value values[] = {integerValue(type), pointerOf(&watched->client),
                            booleanValue(client != nullptr)};
    Call call(Fn::requestBackend, values, 3);
    watched->real = requestOriginal(type, client != nullptr ? &watched->client : nullptr);
    WatchedBackend* const answer = watched->real != nullptr ? watched.get() : nullptr;
    // A client that the backend has seen stays, whatever came of it.
    backends().add(std::move(watched));
    call.end(booleanValue(answer != nullptr));
    return answer;
}

void release(UVABackend* backend) {
    WatchedBackend* const watched = backends().find(backend);
    const Value value = pointerOf(watched != nullptr ? static_cast<void*>(&watched->client)
                                                     : static_cast<void*>(backend));
    Call call(Fn::releaseBackend, &value, 1);
    releaseOriginal(watched != nullptr ? watched->real : backend);
    if (watched != nullptr) {
        backends().release(watched);
    }
    call.end();
}

// ---- The log ----

using LogFunction = void (*)(KlogContext*, int, const char*, int, const char*, ...);
LogFunction logOriginal = nullptr;

__attribute__((format(printf, 5, 6))) void
logLine(KlogContext* context, int level, const char* file, int line, const char* format, ...) {
    char text[1024];
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    const Value values[] = {integerValue(level), textValue(Tag::Text, file), integerValue(line),
                            textValue(Tag::Text, text)};
    Call call(Fn::KlogPrintf, values, 4);
    if (std::strlen(text) < sizeof text - 1) {
        logOriginal(context, level, file, line, "%s", text);
    } else {
        // A line that does not fit is the log library's to write whole.
        std::vector<char> whole(sizeof text * 64);
        va_start(arguments, format);
        std::vsnprintf(whole.data(), whole.size(), format, arguments);
        va_end(arguments);
        logOriginal(context, level, file, line, "%s", whole.data());
    }
    call.end();
}

// Asked before each line that may be written; told when the answer is another than before.
int (*thresholdOriginal)(const KlogContext*) = nullptr;
std::atomic<int> lastThreshold{INT_MIN};

int threshold(const KlogContext* context) {
    const int answer = thresholdOriginal(context);
    if (lastThreshold.load(std::memory_order_relaxed) != answer &&
        lastThreshold.exchange(answer, std::memory_order_relaxed) != answer) {
        Call call(Fn::threshold, nullptr, 0);
        call.end(integerValue(answer));
    }
    return answer;
}

}  // namespace

void* backendTap(const std::string& symbol, void* function) {
    if (symbol == "_ZN10UVAFactory14requestBackendEN10UVABackend14UVABackendTypeEP9UVAClient") {
        return take(requestOriginal, function, &request);
    }
    if (symbol == "_ZN10UVAFactory14releaseBackendEP10UVABackend") {
        return take(releaseOriginal, function, &release);
    }
    if (symbol == "KlogPrintf") {
        return take(logOriginal, function, &logLine);
    }
    if (symbol == "_ZNK11KlogContext9thresholdEv") {
        return take(thresholdOriginal, function, &threshold);
    }
    return nullptr;
}
