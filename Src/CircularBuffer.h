#ifndef SONOLET_CIRCULAR_BUFFER_H
#define SONOLET_CIRCULAR_BUFFER_H

#include "Buffer.h"

#include <atomic>
#include <memory>

// Decoded sound on its way from one writer thread to one reader thread; about 3.7 seconds of
// 44.1 kHz 16-bit stereo.
//
// Threads: canWrite() and write() are the writer's, canRead() and read() the reader's; no locks.
// One slot stays empty, so that a full ring differs from an empty one. The ring reads strictly in
// order: offsets are ignored.
class CircularBuffer final : public Buffer {
public:
    static constexpr unsigned capacity = 0xA0000;

    CircularBuffer();

    void read(char* out, const unsigned& offset, const unsigned& length) override;

    // A write that would end exactly at the end of the storage is dropped.
    void write(const char* bytes, const unsigned& length) override;

    // True while more than `length` bytes are there: the last one waits for its successor.
    bool canRead(const unsigned& offset, const unsigned& length) const override;
    bool canWrite(const unsigned& length) const override;

    // Does nothing.
    void writeToFile(const char* path) override;

private:
    const std::unique_ptr<char[]> data;

    // Each is stored (release) by its own side and loaded (acquire) by the other, and has a cache
    // line to itself: a store would slow down the other side's loads of its own.
    alignas(64) std::atomic<unsigned> readPos{0};
    alignas(64) std::atomic<unsigned> writePos{0};
};

#endif
