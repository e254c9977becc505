#include "TrackFactory.h"

namespace TellusClientNamespace {

TrackFactory* TrackFactory::m_instance = nullptr;

TrackFactory& TrackFactory::getInstance() {
    static TrackFactory& instance = *(m_instance = new TrackFactory);
    return instance;
}

// NOLINTNEXTLINE(readability-convert-member-functions-to-static): one operation of the factory
std::unique_ptr<AudioTrack> TrackFactory::createTrack(sp_track* track) const {
    return std::make_unique<AudioTrack>(sp_track_duration(track));
}

}  // namespace TellusClientNamespace
