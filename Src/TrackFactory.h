#ifndef SONOLET_TRACK_FACTORY_H
#define SONOLET_TRACK_FACTORY_H

#include "AudioTrack.h"

#include "libspotify/api.h"

#include <memory>

namespace TellusClientNamespace {

// Makes the sound of a track. One instance, made on first use and never freed; script thread.
class TrackFactory final {
public:
    // The same at every call.
    static TrackFactory& getInstance();

    TrackFactory(const TrackFactory&) = delete;
    TrackFactory& operator=(const TrackFactory&) = delete;

    // REQUIRES: `track` is not null.
    // As long as libspotify says the track is; its format comes with its first delivery.
    std::unique_ptr<AudioTrack> createTrack(sp_track* track) const;

private:
    TrackFactory() = default;

    static TrackFactory* m_instance;
};

}  // namespace TellusClientNamespace

#endif
