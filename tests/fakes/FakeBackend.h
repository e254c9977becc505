#ifndef SONOLET_TESTS_FAKES_FAKEBACKEND_H
#define SONOLET_TESTS_FAKES_FAKEBACKEND_H

#include "uva.h"

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

// A request that counts itself, so that a test sees every one come to its end.
class FakeRequest final : public NeedDataEvent {
public:
    FakeRequest(unsigned streamOffset, unsigned byteCount)
        : NeedDataEvent(streamOffset, byteCount), asked(byteCount) {
        ++alive;
    }
    ~FakeRequest() override { --alive; }
    FakeRequest(const FakeRequest&) = delete;
    FakeRequest& operator=(const FakeRequest&) = delete;

    static std::atomic<int> alive;
    const unsigned asked;
};

// A media backend that writes down what it is told. A call that overlaps another or comes after the
// release stops the process with a message. Kept after the release for the record, until
// FakeFactory::reset.
class FakeBackend final : public UVABackend {
public:
    struct Write {
        unsigned offset;
        unsigned asked;
        unsigned size;
        WriteDataStatus status;
        std::vector<unsigned char> bytes;
    };

    explicit FakeBackend(UVAClient* eventClient) : client(eventClient) {}
    ~FakeBackend() override;

    FakeBackend(const FakeBackend&) = delete;
    FakeBackend& operator=(const FakeBackend&) = delete;

    int setSource(const char* url, SourceDescription** sources, int flags) override;
    void play() override;
    void pause(int mode) override;
    void getPosition(double& result) override;
    void writeData(NeedDataEvent* event, unsigned size, WriteDataStatus status) override;

    // Events, on the caller's thread.
    void send(unsigned type);
    void request(unsigned offset, unsigned size);
    // A thread of the backend's own that sends what `next` answers (ownership passes; a null ends
    // it) until the release.
    void start(std::function<UVAEvent*()> next);

    void release();  // the factory's
    bool released() const { return isReleased; }

    std::string log;  // "source play pause(0) ..."
    double position = 0;
    std::vector<Write> writes;

private:
    class Guard;

    UVAClient* const client;
    std::atomic<int> callsUnderWay{0};
    std::atomic<bool> isReleased{false};
    std::thread events;
};

// The device's factory: how it answers, and what it gave. Never destroyed.
struct FakeFactory {
    static FakeFactory& get();

    // Ends every backend; all must have been released.
    void reset();
    FakeBackend& current() const;  // the one granted last
    int held() const;              // granted and not yet released

    bool grants = true;
    int sourceResult = 1;
    std::function<void(FakeBackend&)> whenRequested;  // runs inside requestBackend
    std::function<void(FakeBackend&)> whenReleased;   // runs inside releaseBackend
    std::function<void(FakeBackend&)> whenWritten;    // runs inside writeData
    std::vector<std::unique_ptr<FakeBackend>> backends;
};

#endif
