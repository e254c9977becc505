#ifndef SONOLET_PLAYER_H
#define SONOLET_PLAYER_H

#include "AudioTrack.h"
#include "EventQueue.h"
#include "jspp/orvo/mutex.h"
#include "jspp/orvo/shared_ptr.h"

#include "uva.h"

namespace TellusClientNamespace {

// Plays one track at a time through the device's media backend, which pulls: its requests are
// queued as they come and answered from the track's buffer on the script thread's tick.
//
// Threads: handleEvent() runs on the backend's thread, everything else on the script thread;
// releaseTrack() on both. The lock guards the fields alone and is never held while the backend or
// its factory is called. Whoever calls the backend holds a share of it meanwhile, so that it is
// released by the last one out, and never under a call. A backend may send events until its release
// has returned, wherever that runs: the next track and the player's end wait for it. A host may run
// script inside its backend and factory; what loads a track there is refused, for the wait would be
// for its own caller. Ownership: tracks belong to the session; the queue and the backend to the
// player, for as long as one track is attached.
class Player final : public UVAClient {
public:
    Player() = default;
    ~Player() override;

    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    // The order of the virtual operations is that of UVAClient.
    bool handleEvent(UVAEvent* event) noexcept override;
    // Null: no DRM backend is used.
    UVABackend* getDRMBackend(const char* system) override;

    // Throws std::runtime_error("Could not initialize backend") when this thread is inside a call
    // that a player makes to a backend or its factory. The track under such a call must stay.
    static void requireFree();

    // Replaces the track by this one and starts its backend. Throws what requireFree() throws, and
    // std::runtime_error("Could not initialize backend"); the track stays attached then.
    void playTrack(AudioTrack* newTrack) ORVO_EXCLUDES(mutex);

    // Gives queue and backend back. Does nothing without a track.
    void releaseTrack() ORVO_EXCLUDES(mutex);

    // Without a backend these do nothing; the position is 0 then.
    void pause() ORVO_EXCLUDES(mutex);
    void resume() ORVO_EXCLUDES(mutex);
    double getPosition() ORVO_EXCLUDES(mutex);  // seconds

    // Answers every queued request that can be served now. Once per tick.
    void handleEventQueue() ORVO_EXCLUDES(mutex);

private:
    using QueueShare = orvo::shared_ptr<EventQueue>;

    // This thread is inside a call to a backend or its factory.
    class HostCall;

    // A backend that the factory has granted, null until then.
    struct GrantedBackend {
        Player& player;
        UVABackend* backend;
    };
    using BackendShare = orvo::shared_ptr<GrantedBackend>;

    // The steps of playTrack(), in this order.
    void createEventQueue() ORVO_REQUIRES(mutex);
    void createBackend() ORVO_EXCLUDES(mutex);
    void startPlaying();
    // What the last share of each does.
    static void destroyEventQueue(EventQueue* queue);
    static void destroyBackend(GrantedBackend* granted);
    // Sleeps until every backend that was granted has been released; returns at once inside a call
    // of a backend, where the process must be exiting.
    void awaitReleases() ORVO_EXCLUDES(mutex);
    static void discard(UVAEvent* event);
    void queueRequest(UVAEvent* request) ORVO_EXCLUDES(mutex);
    BackendShare backendInUse() const ORVO_EXCLUDES(mutex);
    // Reads what was asked for, and hands the request back with it: the backend's from then on.
    static void handleNeedDataEvent(UVABackend& to,
                                    AudioTrack& from,
                                    NeedDataEvent* event,
                                    UVABackend::WriteDataStatus status);

    mutable orvo::Mutex mutex;
    AudioTrack* track ORVO_GUARDED_BY(mutex) = nullptr;  // not owned
    QueueShare queue ORVO_GUARDED_BY(mutex);
    BackendShare backend ORVO_GUARDED_BY(mutex);
    int unreleased ORVO_GUARDED_BY(mutex) = 0;  // backends granted whose release has not returned
    orvo::Condition released;
};

}  // namespace TellusClientNamespace

#endif
