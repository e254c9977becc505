#ifndef SONOLET_PLATFORM_UVA_H
#define SONOLET_PLATFORM_UVA_H

// The device's media backend. The two functions of UVAFactory are symbols of the host process;
// everything else here is inline or virtual, so that a plug-in needs no library for it.
//
// The classes cross the border between host and plug-in as they stand: the order of members and of
// virtual operations is part of the interface.

#define SONOLET_UVA_CLASS __attribute__((visibility("default")))

// Something that a backend tells its client. Types 1 and 6 have classes of their own; type 0 asks
// the client to release the backend, type 4 tells that the stream has been played to its end.
class SONOLET_UVA_CLASS UVAEvent {
public:
    explicit UVAEvent(unsigned eventType) : type(eventType) {}
    virtual ~UVAEvent() = default;

    UVAEvent(const UVAEvent&) = delete;
    UVAEvent& operator=(const UVAEvent&) = delete;

    unsigned type;
};

// A request for `size` bytes of the stream from byte `offset` on, answered with
// UVABackend::writeData. Whoever gives up an unanswered request releases `data` with delete[] and
// then deletes the event.
class SONOLET_UVA_CLASS NeedDataEvent : public UVAEvent {
public:
    NeedDataEvent(unsigned streamOffset, unsigned byteCount)
        : UVAEvent(1), offset(streamOffset), size(byteCount), data(new unsigned char[byteCount]) {}

    // Leaves `data` alone.
    ~NeedDataEvent() override = default;

    unsigned offset;      // bytes
    unsigned size;        // bytes; the client stores the number delivered
    unsigned char* data;  // new[]
};

// The picture's size has changed; sound alone has none.
class SONOLET_UVA_CLASS VideoResizedEvent : public UVAEvent {
public:
    VideoResizedEvent(int newWidth, int newHeight, double newPixelAspectRatio)
        : UVAEvent(6), width(newWidth), height(newHeight), pixelAspectRatio(newPixelAspectRatio) {}

    int width;   // pixels
    int height;  // pixels
    double pixelAspectRatio;
};

class UVABackend;

// Receives a backend's events, on whichever thread the backend uses, until
// UVAFactory::releaseBackend returns.
class SONOLET_UVA_CLASS UVAClient {
public:
    // Any thread. True: the event has been seen to. A NeedDataEvent is the client's until it
    // answers with writeData; any other event stays the backend's and is valid during the call.
    virtual bool handleEvent(UVAEvent* event) = 0;
    // Null: the stream is not protected. Another backend stays the client's.
    virtual UVABackend* getDRMBackend(const char* system) = 0;
    virtual ~UVAClient() = default;
};

// One stream on its way to the device's output. Called from the client's thread only.
class SONOLET_UVA_CLASS UVABackend {
public:
    enum UVABackendType { UVA_BACKEND_MEDIA = 1 };
    enum WriteDataStatus { WRITE_DATA_OK = 0, WRITE_DATA_END_OF_STREAM = 1 };

    // `kind` 2: a stream that comes through requests. The rest is 0.
    struct SourceDescription {
        int kind;
        int reserved[7];
    };

    // `sources` is null-terminated; the backend copies it before it returns, and the caller frees
    // its own. An empty url: the data comes through NeedDataEvents. 1 on success; any
    // other answer refuses the stream, and nothing will be asked for.
    virtual int setSource(const char* url, SourceDescription** sources, int flags) = 0;
    // Begins or goes on with what was asked for; requests come as long as there is room.
    virtual void play() = 0;
    // Holds the output where it is; `mode` 0. What is buffered stays.
    virtual void pause(int mode) = 0;
    // Stores the seconds that have been played; 0 at the beginning. A backend that does not know
    // leaves it as it is, which is 0.
    virtual void getPosition(double& position) = 0;

    // Answers a request with `size` bytes in its data; the event is the backend's again.
    // No bytes with WRITE_DATA_OK: nothing yet. WRITE_DATA_END_OF_STREAM: nothing follows.
    virtual void writeData(NeedDataEvent* event, unsigned size, WriteDataStatus status) = 0;
    virtual ~UVABackend() = default;
};

// Symbols of the host process. Both may run script before they return.
class SONOLET_UVA_CLASS UVAFactory {
public:
    // Null when the device has no backend to give; else one that is the caller's until it releases
    // it. Script thread. Events may come before this returns.
    static UVABackend* requestBackend(UVABackend::UVABackendType type, UVAClient* client);

    // When this returns the client gets no more events. May be called from the backend's own event
    // thread.
    static void releaseBackend(UVABackend* backend);
};

#undef SONOLET_UVA_CLASS

#endif
