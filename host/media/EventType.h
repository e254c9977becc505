#ifndef SONOLET_HOST_MEDIA_EVENTTYPE_H
#define SONOLET_HOST_MEDIA_EVENTTYPE_H

// The types of UVAEvent that this backend sends besides NeedDataEvent, all on its own thread.
enum class EventType : unsigned {
    ReleaseBackend = 0,    // the output is gone; the client should release the backend
    PlaybackFinished = 4,  // the last sample has been heard
    DecodeError = 7,       // what came is no WAV stream; nothing is asked for any more
    // Sound has run out: the stream stands still from the first to the second of these.
    BufferingStreamUnderrun = 22,
    BufferingStreamBuffered = 23,
};

#endif
