#include "Player.h"

#include "Logger.h"
#include "Session.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <new>
#include <stdexcept>

namespace TellusClientNamespace {

namespace {

const Logger logger SONOLET_AT_LOAD("Src/Player");

// What a backend sends. The numbers that are missing are not known.
enum EventType : unsigned {
    Release = 0,
    NeedData = 1,
    CancelDataRequests = 3,
    PlaybackFinished = 4,
    VideoResized = 6,
    DecodeError = 7,
    SeekCompleted = 8,
    Untold = 9,
    DRMRightsError = 10,
    ParentalRatingError = 11,
    ParentalRatingChange = 12,
    ChannelChangeError = 14,
    ChannelChangeSucceeded = 15,
    ProgrammesChanged = 16,
    RecordingError = 17,
    RecordingStateChange = 18,
    BufferingProgress = 19,
    BufferingNetworkError = 20,
    BufferingIdle = 21,
    BufferingStreamUnderrun = 22,
    BufferingStreamBuffered = 23,
    SubtitlesChanged = 24,
};

// The events that are only told in the log.
constexpr struct {
    EventType type;
    const char* line;
} told[] = {
    {CancelDataRequests, "CancelDataRequests event received"},
    {DecodeError, "Event: DecodeError"},
    {SeekCompleted, "Event: SeekCompleted"},
    {DRMRightsError, "Event: DRMRightsError"},
    {ParentalRatingError, "Event: ParentalRatingError"},
    {ParentalRatingChange, "Event: ParentalRatingChange"},
    {ChannelChangeError, "Event: ChannelChangeError"},
    {ChannelChangeSucceeded, "Event: ChannelChangeSucceeded"},
    {ProgrammesChanged, "Event: ProgrammesChanged"},
    {RecordingError, "Event: RecordingError"},
    {RecordingStateChange, "Event: RecordingStateChange"},
    {BufferingProgress, "Event: BufferingProgress"},
    {BufferingNetworkError, "Event: BufferingNetworkError"},
    {BufferingIdle, "Event: BufferingIdle"},
    {BufferingStreamUnderrun, "Event: BufferingStreamUnderrun"},
    {BufferingStreamBuffered, "Event: BufferingStreamBuffered"},
    {SubtitlesChanged, "Event: SubtitlesChanged"},
};

const char* lineOf(unsigned type) {
    const auto* const found = std::find_if(std::begin(told), std::end(told),
                                           [&](const auto& event) { return event.type == type; });
    return found == std::end(told) ? "Unhandled event received" : found->line;
}

constexpr char noBackend[] = "Could not initialize backend";

}  // namespace

Player::~Player() {
    releaseTrack();
    awaitReleases();
}

class Player::HostCall final {
public:
    HostCall() noexcept { ++depth; }
    ~HostCall() { --depth; }
    HostCall(const HostCall&) = delete;
    HostCall& operator=(const HostCall&) = delete;

    static bool isUnderWay() noexcept { return depth != 0; }

private:
    static thread_local int depth;
};
thread_local int Player::HostCall::depth = 0;

void Player::requireFree() {
    if (HostCall::isUnderWay()) {
        throw std::runtime_error(noBackend);
    }
}

void Player::awaitReleases() {
    if (HostCall::isUnderWay()) {
        return;  // the process exits in there, and nobody returns
    }
    const orvo::scoped_lock lock(mutex);
    while (unreleased != 0) {
        released.wait(mutex);
    }
}

// ---- The backend's thread ----

bool Player::handleEvent(UVAEvent* event) noexcept {
    static constexpr char function[] = "Player::handleEvent";
    switch (event->type) {
    case Release:
        // Once that has begun, another thread may end the player: nothing is touched afterwards.
        releaseTrack();
        break;
    case NeedData:
        queueRequest(event);
        break;
    case PlaybackFinished:
        logger.trace(function, "PlaybackFinished event received");
        Session::withInstance([](Session& session) { session.triggerTrackCompleteEvent(); });
        break;
    case VideoResized: {
        const auto* const resized = static_cast<const VideoResizedEvent*>(event);
        logger.trace(function, "Event: VideoResized to ", resized->width, "x", resized->height,
                     " PAR=", resized->pixelAspectRatio);
        break;
    }
    case Untold:
        break;
    default:
        logger.trace(function, lineOf(event->type));
    }
    return true;
}

void Player::queueRequest(UVAEvent* request) {
    try {
        QueueShare waiting;
        {
            const orvo::scoped_lock lock(mutex);
            waiting = queue;
        }
        if (waiting) {
            waiting->push(request);
            return;
        }
    } catch (const std::bad_alloc&) {
        logger.error("Player::handleEvent", "out of memory, a request is dropped");
    }
    discard(request);
}

UVABackend* Player::getDRMBackend(const char* /*system*/) {
    return nullptr;
}

// ---- Track, queue and backend ----

void Player::playTrack(AudioTrack* newTrack) {
    requireFree();
    releaseTrack();
    // A late event of the old backend must not meet the new queue.
    awaitReleases();
    {
        const orvo::scoped_lock lock(mutex);
        track = newTrack;
        createEventQueue();
    }
    createBackend();
    startPlaying();
}

void Player::releaseTrack() {
    // In this order both go after the lock: the queue first, and each when nobody uses it any more.
    BackendShare oldBackend;
    QueueShare oldQueue;
    const orvo::scoped_lock lock(mutex);
    if (!track) {
        return;
    }
    track = nullptr;
    oldQueue.swap(queue);
    oldBackend.swap(backend);
}

void Player::createEventQueue() {
    queue = QueueShare(new EventQueue, &destroyEventQueue);
}

void Player::destroyEventQueue(EventQueue* queue) {
    while (UVAEvent* const event = queue->pop()) {
        if (event->type == NeedData) {
            logger.trace("Player::destroyEventQueue", "Release unhandled the events in the QUEUE");
            discard(event);
        }
    }
    delete queue;
}

// Frees a request that nobody will answer.
void Player::discard(UVAEvent* event) {
    delete[] static_cast<NeedDataEvent*>(event)->data;
    delete event;
}

void Player::createBackend() {
    // Made before there is anything to be released.
    const BackendShare share(new GrantedBackend{*this, nullptr}, &destroyBackend);
    const HostCall call;
    share->backend = UVAFactory::requestBackend(UVABackend::UVA_BACKEND_MEDIA, this);
    if (!share->backend) {
        throw std::runtime_error(noBackend);
    }
    {
        const orvo::scoped_lock lock(mutex);
        ++unreleased;
        if (!track) {
            // The backend has asked for its release before it was handed over.
            return;
        }
        backend = share;
    }
    UVABackend::SourceDescription source{};
    source.kind = 2;
    UVABackend::SourceDescription* sources[] = {&source, nullptr};
    // No URL: the data comes through the backend's requests.
    if (share->backend->setSource("", sources, 0) != 1) {
        throw std::runtime_error(noBackend);
    }
}

void Player::destroyBackend(GrantedBackend* granted) {
    const std::unique_ptr<GrantedBackend> leaving(granted);
    if (!leaving->backend) {
        return;
    }
    {
        const HostCall call;
        UVAFactory::releaseBackend(leaving->backend);
    }
    Player& player = leaving->player;
    const orvo::scoped_lock lock(player.mutex);
    --player.unreleased;
    player.released.notify_all();
}

Player::BackendShare Player::backendInUse() const {
    const orvo::scoped_lock lock(mutex);
    return backend;
}

void Player::startPlaying() {
    resume();
}

void Player::resume() {
    if (const BackendShare inUse = backendInUse()) {
        const HostCall call;
        inUse->backend->play();
    }
}

void Player::pause() {
    if (const BackendShare inUse = backendInUse()) {
        const HostCall call;
        inUse->backend->pause(0);
    }
}

double Player::getPosition() {
    double position = 0.0;
    if (const BackendShare inUse = backendInUse()) {
        const HostCall call;
        inUse->backend->getPosition(position);
    }
    return position;
}

// ---- Requests ----

void Player::handleEventQueue() {
    BackendShare to;
    QueueShare requests;
    AudioTrack* from = nullptr;
    {
        const orvo::scoped_lock lock(mutex);
        to = backend;
        requests = queue;
        from = track;
    }
    // The queue exists before the backend does, and requests may come in between.
    if (!requests || !to) {
        return;
    }
    UVABackend::WriteDataStatus status = UVABackend::WRITE_DATA_OK;
    while (UVAEvent* const front = requests->peek()) {
        if (front->type != NeedData) {
            requests->pop();
            continue;
        }
        auto* const request = static_cast<NeedDataEvent*>(front);
        if (!from->canRead(request->offset, request->size)) {
            if (!from->isLoaded()) {
                return;
            }
            // The last delivery and the end of the track may have come since the check.
            if (!from->canRead(request->offset, request->size)) {
                status = UVABackend::WRITE_DATA_END_OF_STREAM;
            }
        }
        requests->pop();
        handleNeedDataEvent(*to->backend, *from, request, status);
    }
}

void Player::handleNeedDataEvent(UVABackend& to,
                                 AudioTrack& from,
                                 NeedDataEvent* event,
                                 UVABackend::WriteDataStatus status) {
    const unsigned wanted = event->size;
    unsigned delivered = from.read(event->data, event->offset, wanted);
    if (delivered > wanted) {
        logger.error("Player::handleNeedDataEvent",
                     "Error to many bytes delivered, some data is lost");
        delivered = wanted;
    }
    event->size = delivered;
    const HostCall call;
    to.writeData(event, delivered, status);
}

}  // namespace TellusClientNamespace
