#ifndef SONOLET_HOST_MEDIA_MEDIABACKEND_H
#define SONOLET_HOST_MEDIA_MEDIABACKEND_H

#include "EventType.h"
#include "Pipeline.h"
#include "Request.h"

#include "uva.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

// Plays one WAV stream that its client hands over in answers to NeedDataEvents.
//
// It pulls as a device would: small requests, so many that those unanswered and the sound that has
// come but is not played yet make 1.5 s together. The bytes of the answers, in the order of the
// answers, are the stream; a short answer is no gap. A request's offset is the byte that it starts
// at when all requests before it are answered in full. Sound starts, and after an underrun starts
// again, once a third of the 1.5 s is there or the stream has ended.
//
// Threads: the client's thread calls the UVABackend operations; events are sent from a thread of
// the backend's own. No lock is held while the client is called. Ownership: made shared, held by
// the factory until the release and by each request that is with the client. Errors: one line on
// standard error and an event, DecodeError for a stream that cannot be decoded and ReleaseBackend
// for an output that fails; nothing is asked for after either.
class MediaBackend final : public UVABackend,
                           public Request::Asker,
                           public std::enable_shared_from_this<MediaBackend>,
                           private Pipeline::Listener {
public:
    static constexpr unsigned requestSize = 4096;  // bytes

    explicit MediaBackend(UVAClient& owner);
    ~MediaBackend() override;

    // Two of them would answer to one client's requests.
    MediaBackend(const MediaBackend&) = delete;
    MediaBackend& operator=(const MediaBackend&) = delete;

    // Takes the empty url alone, and once; keeps nothing of `sources`. From its success on the
    // client is asked for data. 1 on success, else 0 and a log line.
    int setSource(const char* url, SourceDescription** sources, int flags) override;

    void play() override;
    void pause(int mode) override;  // every mode stops the sound where it is

    // Seconds of sound played; never less than before.
    void getPosition(double& position) override;

    // Also after the release, which then frees the event and nothing more.
    void writeData(NeedDataEvent* event, unsigned size, WriteDataStatus status) override;

    void requestDropped() noexcept override;

    // Ends playback; the client gets no event once this has returned. Once, from any thread, the
    // backend's own included.
    void close();

private:
    using Clock = std::chrono::steady_clock;

    // Pipeline::Listener, on GStreamer's threads.
    void consumed(std::size_t bytes) noexcept override;
    void drained() noexcept override;
    void finished() noexcept override;
    void failed(bool inStream, const std::string& reason) noexcept override;

    // The backend's own thread.
    void run();
    void ask(std::unique_lock<std::mutex>& lock);
    void tell(std::unique_lock<std::mutex>& lock, EventType type);

    void setWantPlay(bool play);
    void applyState();

    // The rest needs `mutex` held.
    std::uint64_t buffered() const { return pushed - taken; }
    bool shouldPlay() const { return wantPlay && filled && !stopped; }
    bool mayEnd() const { return ended && unanswered == 0 && !endSent && (pushed > 0 || wantPlay); }
    bool mayAsk() const;
    void requestBack(unsigned size, WriteDataStatus status);

    UVAClient& client;
    std::thread thread;  // started by setSource

    // Serialises what is done to the pipeline; taken before `mutex`, and never by GStreamer's
    // threads.
    std::mutex pipelineMutex;
    std::unique_ptr<Pipeline> pipeline;  // null before setSource and after close
    double lastPosition = 0.0;

    // State below is protected by mutex.
    std::mutex mutex;
    std::condition_variable wake;   // for `run`
    std::deque<EventType> notices;  // to be sent
    std::uint64_t pushed = 0;       // bytes that the client delivered
    std::uint64_t taken = 0;        // of these, the bytes that left for the sink
    std::size_t unanswered = 0;     // requests
    unsigned window;                // bytes wanted in requests and buffers together
    double speed = 1.0;
    Clock::time_point askAgain{};  // no request before this time
    bool wantPlay = false;         // what the client asked for last
    bool playing = false;          // what the pipeline was told last
    bool filled = false;           // enough sound is there to play
    bool starved = false;          // an underrun was told and not yet its end
    bool ended = false;            // the client said that nothing follows
    bool endSent = false;          // the pipeline, too, knows it
    bool stopped = false;          // played to the end, or failed
    bool closed = false;
};

#endif
