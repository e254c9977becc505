#include "player/Player.h"

#include "player/Decoder.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace sonolet::service {

namespace {

constexpr std::size_t blockFrames = 2048;

// A refused block is offered again after the first pause, then after twice as long each time: the
// listener's buffer of some seconds is emptied in bursts, and the first offer after one should not
// come late, while a paused one should cost nothing.
constexpr std::chrono::milliseconds firstPause{1};
constexpr std::chrono::milliseconds longestPause{20};

constexpr AudioFormat format{Decoder::sampleRate, Decoder::channels};

using File = std::shared_ptr<const Sound>;

}  // namespace

// The thread and what it shares with the callers. Callers leave orders and raise `epoch`; the
// thread takes them before it does anything else and then shows `seen`.
class Player::Engine final {
public:
    Engine(PlayerEvents toOwner, OpenSound opener)
        : events(std::move(toOwner)), openSound(std::move(opener)), thread([this] { run(); }) {}
    ~Engine();

    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    sp_error load(const std::string& path);
    sp_error play(bool on);
    sp_error seek(int offsetMs);
    sp_error unload();
    sp_error prefetch(const std::string& path);

private:
    using Lock = std::unique_lock<std::mutex>;

    struct Orders {
        std::optional<File> track;  // null: none
        File prefetch;
        std::optional<int> seekMs;
    };

    File openFile(const std::string& path, std::string& line) const;
    void submit(Lock& lock);

    void run();
    void takeOrders(Lock& lock);
    void step(Lock& lock);
    bool fillBlock(Lock& lock);
    void offerBlock(Lock& lock);
    void sayLines(Lock& lock);
    template <typename Event>
    void call(Lock& lock, Event event);
    std::unique_ptr<Decoder> open(const File& file);

    const PlayerEvents events;
    const OpenSound openSound;

    std::mutex mutex;
    std::condition_variable wake;  // for the thread: orders, decoded sound, the end
    std::condition_variable idle;  // for callers: an event returned, or orders were taken
    // State below is protected by mutex.
    Orders orders;
    std::vector<std::string> lines;  // for events.log
    std::uint64_t epoch = 0;
    std::uint64_t seen = 0;
    bool loaded = false;
    bool playing = false;
    bool calling = false;
    bool decoded = false;  // a decoder has called since the last read
    bool stopping = false;

    // The thread's alone.
    std::unique_ptr<Decoder> current;
    std::unique_ptr<Decoder> next;
    std::array<std::int16_t, blockFrames * Decoder::channels> block{};
    std::size_t filled = 0;
    std::size_t taken = 0;
    Decoder::Status source = Decoder::Status::NotYet;
    bool over = false;  // the end or the failure was told
    std::chrono::milliseconds pause = firstPause;

    // Last: it runs on all of the above.
    std::thread thread;
};

Player::Engine::~Engine() {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        stopping = true;
    }
    wake.notify_all();
    thread.join();
}

// A file that cannot be read is none, and a line that says why.
File Player::Engine::openFile(const std::string& path, std::string& line) const {
    try {
        return openSound(path);
    } catch (const UnreadableFile& error) {
        line = path + ": " + error.what();
        return nullptr;
    }
}

// Hands the orders over and waits until no event of the time before them is in flight.
void Player::Engine::submit(Lock& lock) {
    const std::uint64_t mine = ++epoch;
    wake.notify_all();
    idle.wait(lock, [&] { return !calling || seen >= mine; });
}

sp_error Player::Engine::load(const std::string& path) {
    std::string why;
    File file = openFile(path, why);
    Lock lock(mutex);
    loaded = file != nullptr;
    playing = false;
    orders.track = std::move(file);
    orders.seekMs.reset();
    if (!loaded) {
        lines.push_back(std::move(why));
    }
    submit(lock);
    return loaded ? SP_ERROR_OK : SP_ERROR_NO_STREAM_AVAILABLE;
}

sp_error Player::Engine::play(bool on) {
    Lock lock(mutex);
    if (!loaded) {
        return on ? SP_ERROR_NO_STREAM_AVAILABLE : SP_ERROR_OK;
    }
    playing = on;
    submit(lock);
    return SP_ERROR_OK;
}

sp_error Player::Engine::seek(int offsetMs) {
    if (offsetMs < 0) {
        return SP_ERROR_INVALID_INDATA;
    }
    Lock lock(mutex);
    if (!loaded) {
        return SP_ERROR_NO_STREAM_AVAILABLE;
    }
    orders.seekMs = offsetMs;
    submit(lock);
    return SP_ERROR_OK;
}

sp_error Player::Engine::unload() {
    Lock lock(mutex);
    loaded = false;
    playing = false;
    orders.track = File();
    orders.seekMs.reset();
    submit(lock);
    return SP_ERROR_OK;
}

sp_error Player::Engine::prefetch(const std::string& path) {
    std::string why;
    File file = openFile(path, why);
    const bool readable = file != nullptr;
    const std::lock_guard<std::mutex> lock(mutex);
    if (readable) {
        orders.prefetch = std::move(file);
    } else {
        lines.push_back(std::move(why));
    }
    ++epoch;
    wake.notify_all();
    return readable ? SP_ERROR_OK : SP_ERROR_NO_STREAM_AVAILABLE;
}

void Player::Engine::run() {
    Lock lock(mutex);
    while (!stopping) {
        if (seen != epoch) {
            takeOrders(lock);
        } else {
            step(lock);
        }
    }
    lock.unlock();
    // A decoder waits for its own threads, and they may wait for the mutex.
    current.reset();
    next.reset();
}

void Player::Engine::takeOrders(Lock& lock) {
    const Orders taking = std::exchange(orders, {});
    seen = epoch;
    idle.notify_all();
    if (!lines.empty()) {
        sayLines(lock);
    }
    lock.unlock();
    if (taking.track) {
        current.reset();
        const File& wanted = *taking.track;
        if (wanted != nullptr) {
            const bool fetched = next != nullptr && next->path() == wanted->path();
            current = fetched ? std::move(next) : open(wanted);
        }
    }
    if (current != nullptr && taking.seekMs) {
        current->seek(*taking.seekMs);
    }
    if (taking.track || taking.seekMs) {
        filled = 0;
        taken = 0;
        source = Decoder::Status::NotYet;
        over = false;
        pause = firstPause;
    }
    const File& ahead = taking.prefetch;
    if (ahead != nullptr && (next == nullptr || next->path() != ahead->path())) {
        next = open(ahead);
    }
    lock.lock();
    // The new decoder, or the one that was sought in, is asked at once.
    decoded = true;
}

std::unique_ptr<Decoder> Player::Engine::open(const File& file) {
    return std::make_unique<Decoder>(file, [this] {
        {
            const std::lock_guard<std::mutex> lock(mutex);
            decoded = true;
        }
        wake.notify_all();
    });
}

// Does the one thing that is due, or waits.
void Player::Engine::step(Lock& lock) {
    using Status = Decoder::Status;
    bool hungry = false;
    if (current != nullptr && !over) {
        const bool complete = source == Status::End || source == Status::Failed;
        hungry = filled < blockFrames && !complete;
        if (hungry && fillBlock(lock)) {
            return;
        }
        if (taken == filled && source == Status::Failed) {
            over = true;
            call(lock, [this] {
                if (events.streamingError) {
                    events.streamingError(SP_ERROR_TRACK_NOT_PLAYABLE, current->failure());
                }
            });
            return;
        }
        if (playing && taken == filled && source == Status::End) {
            over = true;
            call(lock, [this] {
                if (events.endOfTrack) {
                    events.endOfTrack();
                }
            });
            return;
        }
        if (playing && taken < filled && (filled == blockFrames || complete)) {
            offerBlock(lock);
            return;
        }
    }
    wake.wait(lock, [&] { return stopping || seen != epoch || (hungry && decoded); });
}

// Answers false when the decoder has nothing for now.
bool Player::Engine::fillBlock(Lock& lock) {
    decoded = false;
    lock.unlock();
    const Decoder::Outcome outcome =
        current->read(block.data() + filled * Decoder::channels, blockFrames - filled);
    lock.lock();
    source = outcome.status;
    filled += outcome.frames;
    return outcome.status != Decoder::Status::NotYet;
}

void Player::Engine::offerBlock(Lock& lock) {
    const std::size_t offered = filled - taken;
    std::size_t accepted = 0;
    call(lock, [&] {
        if (events.deliver) {
            const int answer = events.deliver(format, block.data() + taken * Decoder::channels,
                                              static_cast<int>(offered));
            accepted = std::min(static_cast<std::size_t>(std::max(answer, 0)), offered);
        }
    });
    if (accepted == 0) {
        wake.wait_for(lock, pause, [this] { return stopping || seen != epoch; });
        pause = std::min(pause * 2, longestPause);
        return;
    }
    pause = firstPause;
    taken += accepted;
    if (taken == filled) {
        taken = 0;
        filled = 0;
    }
}

void Player::Engine::sayLines(Lock& lock) {
    const std::vector<std::string> saying = std::exchange(lines, {});
    call(lock, [&] {
        for (const std::string& line : saying) {
            if (events.log) {
                events.log(line);
            }
        }
    });
}

template <typename Event>
void Player::Engine::call(Lock& lock, Event event) {
    calling = true;
    lock.unlock();
    event();
    lock.lock();
    calling = false;
    idle.notify_all();
}

Player::Player(PlayerEvents events, OpenSound openSound)
    : engine(std::make_unique<Engine>(std::move(events), std::move(openSound))) {}

Player::~Player() = default;

sp_error Player::load(const std::string& path) {
    return engine->load(path);
}

sp_error Player::play(bool on) {
    return engine->play(on);
}

sp_error Player::seek(int offsetMs) {
    return engine->seek(offsetMs);
}

sp_error Player::unload() {
    return engine->unload();
}

sp_error Player::prefetch(const std::string& path) {
    return engine->prefetch(path);
}

}  // namespace sonolet::service
