#ifndef SONOLET_HOST_MEDIA_EVENTTYPE_H
#define SONOLET_HOST_MEDIA_EVENTTYPE_H

// The types of UVAEvent that this backend sends besides NeedDataEvent.
enum class EventType : unsigned {
    ReleaseBackend = 0,  // the output is gone; the client should release the backend
    PlaybackFinished = 4,
    DecodeError = 7,
    BufferingStreamUnderrun = 22,
    BufferingStreamBuffered = 23,
};

#endif
