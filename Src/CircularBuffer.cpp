#include "CircularBuffer.h"

#include <cstring>

CircularBuffer::CircularBuffer() : data(new char[capacity]) {}

bool CircularBuffer::canRead(const unsigned& /*offset*/, const unsigned& length) const {
    const unsigned from = readPos.load(std::memory_order_relaxed);
    const unsigned to = writePos.load(std::memory_order_acquire);
    const unsigned available = to >= from ? to - from : to + capacity - from;
    return available > length;
}

bool CircularBuffer::canWrite(const unsigned& length) const {
    if (length >= capacity) {
        return false;
    }
    const unsigned to = writePos.load(std::memory_order_relaxed);
    const unsigned from = readPos.load(std::memory_order_acquire);
    if (to == from) {
        return true;
    }
    const unsigned space = to < from ? from - to : from + capacity - to;
    return length < space;
}

void CircularBuffer::write(const char* bytes, const unsigned& length) {
    if (length == 0) {
        return;  // where there may be no bytes to point at
    }
    const unsigned to = writePos.load(std::memory_order_relaxed);
    const unsigned from = readPos.load(std::memory_order_acquire);
    const unsigned end = to + length;
    if (to < from) {
        if (from > end) {
            std::memcpy(data.get() + to, bytes, length);
            writePos.store(end, std::memory_order_release);
        }
    } else if (end < capacity) {
        std::memcpy(data.get() + to, bytes, length);
        writePos.store(end, std::memory_order_release);
    } else if (end > capacity) {
        const unsigned tail = capacity - to;
        std::memcpy(data.get() + to, bytes, tail);
        std::memcpy(data.get(), bytes + tail, length - tail);
        writePos.store(end - capacity, std::memory_order_release);
    }
}

void CircularBuffer::read(char* out, const unsigned& /*offset*/, const unsigned& length) {
    if (length == 0) {
        return;
    }
    const unsigned from = readPos.load(std::memory_order_relaxed);
    const unsigned to = writePos.load(std::memory_order_acquire);
    const unsigned end = from + length;
    if (from <= to && end >= to) {
        return;
    }
    if (end < capacity) {
        std::memcpy(out, data.get() + from, length);
        readPos.store(end, std::memory_order_release);
    } else {
        const unsigned tail = capacity - from;
        std::memcpy(out, data.get() + from, tail);
        std::memcpy(out + tail, data.get(), length - tail);
        readPos.store(end - capacity, std::memory_order_release);
    }
}

void CircularBuffer::writeToFile(const char* /*path*/) {}
