#ifndef SONOLET_SIMPLE_BUFFER_H
#define SONOLET_SIMPLE_BUFFER_H

#include "Buffer.h"

#include <memory>

// A linear buffer of fixed size, filled once and read at any offset, any number of times. One
// thread. Part of the buffers' interface: what plays uses CircularBuffer.
class SimpleBuffer final : public Buffer {
public:
    // In bytes, fixed from here on; throws std::bad_alloc.
    explicit SimpleBuffer(unsigned size);
    ~SimpleBuffer() override;

    void read(char* out, const unsigned& offset, const unsigned& length) override;

    // REQUIRES: hasEnoughSpace(length). canWrite() is never true here.
    void write(const char* bytes, const unsigned& length) override;

    unsigned getSize() const override;
    // Bytes that write() has not filled.
    unsigned getSpace() const override;

    // False for the last byte written, too: offset + length stays below what was written.
    bool canRead(const unsigned& offset, const unsigned& length) const override;

    // A file that cannot be opened is told in the log.
    void writeToFile(const char* path) override;

private:
    const std::unique_ptr<char[]> data;
    unsigned used = 0;
    const unsigned capacity;
};

#endif
