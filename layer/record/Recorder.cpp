#include "record/Recorder.h"

#include "record/Scribe.h"

#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstring>
#include <ctime>
#include <utility>

namespace {

constexpr std::size_t usualCapacity = 1U << 20U;
constexpr std::size_t wholeCapacity = 16U << 20U;
constexpr std::chrono::milliseconds writeInterval{50};
constexpr std::chrono::seconds longestWait{1};

std::uint64_t clockNs() {
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<std::uint64_t>(time.tv_sec) * 1000000000U +
           static_cast<std::uint64_t>(time.tv_nsec);
}

std::uint32_t threadNumber() {
    thread_local const auto number = static_cast<std::uint32_t>(syscall(SYS_gettid));
    return number;
}

std::size_t bytesOf(const Value* values, unsigned count) {
    std::size_t bytes = count * sizeof(Value);
    for (unsigned i = 0; i < count; ++i) {
        bytes += padded(storedBytes(values[i]));
    }
    return bytes;
}

char* copyValues(char* to, const Value* values, unsigned count) {
    for (unsigned i = 0; i < count; ++i) {
        std::memcpy(to, &values[i], sizeof(Value));
        to += sizeof(Value);
        const std::size_t stored = storedBytes(values[i]);
        if (values[i].tag == Tag::Texts) {
            const auto* next = static_cast<char* const*>(values[i].u.pointer);
            for (char* text = to; text != to + stored; ++next) {
                const std::size_t size = std::strlen(*next) + 1;
                std::memcpy(text, *next, size);
                text += size;
            }
        } else if (stored > 0) {
            std::memcpy(to, values[i].u.pointer, stored);
        }
        to += padded(stored);
    }
    return to;
}

// Whether the call leads into the plug-in, or out of it. While the plug-in is loaded and in exit
// handlers it calls without having been called: nobody else is in it then.
bool goesIn(const Call& call) {
    return infoOf(call.function).caller != Party::Plugin;
}
bool comesOut(const Call& call) {
    return !goesIn(call) && call.outer != nullptr;
}

}  // namespace

Recorder::Recorder(const Settings& settings)
    : start(clockNs()), isReplayable(settings.isReplayable),
      capacity(isReplayable ? wholeCapacity : usualCapacity), file(settings) {
    if (isReplayable) {
        limits = Limits::none();
    }
    filling.bytes = std::make_unique<char[]>(capacity);
    // The browser's signals are the browser's.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    writer = std::thread([this] { run(); });
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

Recorder::~Recorder() {
    finish();
}

std::uint64_t Recorder::now() const noexcept {
    return clockNs() - start;
}

// ---- The threads that call ----

void Recorder::began(Call& call) noexcept {
    if (isReplayable && goesIn(call)) {
        baton.take();
    }
    call.beganAt = now();
    if (call.outer != nullptr && !call.outer->isWritten) {
        writeDown(*call.outer);
    }
    if (isReplayable && comesOut(call)) {
        baton.give();
    }
}

// Calls around it first, so that they nest in the trace as they do in life.
void Recorder::writeDown(Call& call) noexcept {
    if (call.outer != nullptr && !call.outer->isWritten) {
        writeDown(*call.outer);
    }
    call.isWritten = true;
    append({0, call.function, Phase::Begin, 0, call.count, 0, call.beganAt, call.beganAt},
           call.arguments, nullptr);
}

void Recorder::ended(Call& call, const Value* results, unsigned count) noexcept {
    if (isReplayable && comesOut(call)) {
        baton.take();
    }
    append({0, call.function, call.isWritten ? Phase::End : Phase::Whole,
            static_cast<std::uint8_t>(count), call.isWritten ? 0 : call.count, 0, call.beganAt,
            now()},
           call.arguments, results);
    if (isReplayable && goesIn(call)) {
        baton.give();
    }
}

void Recorder::mark(const std::string& text) noexcept {
    const Value value = Value::of(Tag::Text, text.c_str(), text.size());
    const std::uint64_t time = now();
    append({0, Fn::count, Phase::Mark, 0, 1, 0, time, time}, &value, nullptr);
}

void Recorder::append(Record head, const Value* arguments, const Value* results) noexcept {
    head.thread = threadNumber();
    const std::size_t bytes =
        sizeof head + bytesOf(arguments, head.argumentCount) + bytesOf(results, head.resultCount);
    head.bytes = static_cast<std::uint32_t>(bytes);
    std::unique_lock<std::mutex> lock(mutex);
    if (filling.size + bytes > capacity) {
        wake.notify_one();
        const bool fits = taken.wait_for(
            lock, longestWait, [&] { return ending || filling.size + bytes <= capacity; });
        if (!fits || ending) {
            ++lost;
            return;
        }
    }
    char* const to = filling.bytes.get() + filling.size;
    std::memcpy(to, &head, sizeof head);
    copyValues(copyValues(to + sizeof head, arguments, head.argumentCount), results,
               head.resultCount);
    const bool wasLow = filling.size < capacity / 2;
    filling.size += bytes;
    if (wasLow && filling.size >= capacity / 2) {
        wake.notify_one();
    }
}

// ---- The writing thread ----

void Recorder::run() {
    pthread_setname_np(pthread_self(), "sonolet-trace");
    Buffer writing;
    writing.bytes = std::make_unique<char[]>(capacity);
    Scribe scribe(file, isReplayable);
    bool isLast = false;
    std::size_t lostBefore = 0;
    while (!isLast) {
        std::size_t lostNow = 0;
        {
            std::unique_lock<std::mutex> lock(mutex);
            wake.wait_for(lock, writeInterval,
                          [this] { return ending || filling.size >= capacity / 2; });
            isLast = ending;
            std::swap(filling, writing);
            filling.size = 0;
            lostNow = lost;
            taken.notify_all();
        }
        scribe.write(writing.bytes.get(), writing.size);
        if (lostNow != lostBefore) {
            scribe.tellLost(lostNow - lostBefore);
            lostBefore = lostNow;
        }
        scribe.endOfBatch(now());
    }
    scribe.finish();
}

void Recorder::finish() {
    baton.retire();
    {
        const std::lock_guard<std::mutex> lock(mutex);
        ending = true;
        wake.notify_one();
        taken.notify_all();
    }
    if (writer.joinable()) {
        writer.join();
    }
}
