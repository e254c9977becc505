#include "session/Playback.h"

#include <utility>

namespace sonolet::service {

Playback::Playback(Callbacks& sessionCallbacks,
                   std::shared_ptr<Playlists> sessionLists,
                   std::shared_ptr<const Faults> shownFaults,
                   Source& musicSource)
    : callbacks(sessionCallbacks), lists(std::move(sessionLists)), faults(std::move(shownFaults)),
      source(musicSource), token(randomText(16)),
      player(std::make_unique<Player>(
          events(), [this](const std::string& path) { return source.openSound(path); })) {}

PlayerEvents Playback::events() {
    PlayerEvents events;
    events.deliver = [this](const AudioFormat& format, const void* frames, int count) {
        if (faults->isOffline() || Faults::Clock::now() < soundFrom.load()) {
            return 0;
        }
        const sp_audioformat delivered = {SP_SAMPLETYPE_INT16_NATIVE_ENDIAN, format.sampleRate,
                                          format.channels};
        return callbacks.deliver(delivered, frames, count);
    };
    events.endOfTrack = [this] {
        {
            const std::lock_guard<std::mutex> lock(loadedMutex);
            if (loaded) {
                ended.push_back(*loaded);
            }
        }
        callbacks.post([this] { countPlays(); });
        callbacks.endOfTrack();
    };
    events.streamingError = [this](sp_error error, const std::string& why) {
        callbacks.log(why);
        callbacks.post([this, error] {
            playing = false;
            callbacks.raise(&sp_session_callbacks::streaming_error, error);
        });
    };
    events.log = [this](std::string line) { callbacks.log(std::move(line)); };
    return events;
}

void Playback::countPlays() {
    std::vector<Id> plays;
    {
        const std::lock_guard<std::mutex> lock(loadedMutex);
        plays.swap(ended);
    }
    for (const Id& track : plays) {
        callbacks.orLog("A play is not counted", [&] {
            if (account()) {
                accounts().recordPlay(account()->id, track);
                source.played(track);
            }
        });
    }
}

void Playback::close() {
    player.reset();
    countPlays();
}

sp_error Playback::playable(Track& track) const {
    if (!account()) {
        return SP_ERROR_PERMISSION_DENIED;
    }
    if (!track.isLoaded() && track.error() == SP_ERROR_IS_LOADING) {
        return SP_ERROR_IS_LOADING;
    }
    return track.isAvailable() ? SP_ERROR_OK : SP_ERROR_TRACK_NOT_PLAYABLE;
}

sp_error Playback::load(Track& track) {
    if (const sp_error error = playable(track); error != SP_ERROR_OK) {
        return error;
    }
    stop();
    soundFrom = Faults::Clock::now() + faults->delay();
    const sp_error error = player->load(path(track));
    if (error == SP_ERROR_OK) {
        begun = false;
        loadedDurationMs = track.durationMs();
        const std::lock_guard<std::mutex> lock(loadedMutex);
        loaded = track.id();
    }
    return error;
}

sp_error Playback::play(bool on) {
    if (!loaded) {
        return SP_ERROR_NO_STREAM_AVAILABLE;
    }
    if (on && account()) {
        callbacks.orLog("Other sessions are not told who plays",
                        [this] { accounts().takePlayToken(account()->id, token); });
    }
    playing = on;
    if (on && !begun) {
        begun = true;
        source.playing(*loaded);
    }
    return player->play(on);
}

sp_error Playback::seek(int offsetMs) {
    if (!loaded) {
        return SP_ERROR_NO_STREAM_AVAILABLE;
    }
    if (offsetMs < 0 || offsetMs > loadedDurationMs) {
        return SP_ERROR_INVALID_INDATA;
    }
    soundFrom = Faults::Clock::now() + faults->delay();
    return player->seek(offsetMs);
}

sp_error Playback::prefetch(Track& track) {
    if (const sp_error error = playable(track); error != SP_ERROR_OK) {
        return error;
    }
    return player->prefetch(path(track));
}

void Playback::stop() {
    playing = false;
    // There is nothing to unload when nothing is loaded; the answer would say no more.
    static_cast<void>(player->unload());
    countPlays();
    const std::lock_guard<std::mutex> lock(loadedMutex);
    loaded.reset();
}

void Playback::loseToken() {
    playing = false;
    static_cast<void>(player->play(false));
    callbacks.log("Playback stopped: another session plays for " + account()->name);
    callbacks.post([this] { callbacks.raise(&sp_session_callbacks::play_token_lost); });
}

void Playback::checkToken() {
    if (playing && account() && accounts().playToken(account()->id) != token) {
        loseToken();
    }
}

}  // namespace sonolet::service
