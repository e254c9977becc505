#include "SimpleBuffer.h"

#include "Logger.h"

#include <cstdio>
#include <cstring>

namespace {

const Logger logger SONOLET_AT_LOAD("Src/SimpleBuffer");

}  // namespace

SimpleBuffer::SimpleBuffer(unsigned size) : data(new char[size]), capacity(size) {
    logger.trace("SimpleBuffer::SimpleBuffer", "Allocating new buffer");
}

SimpleBuffer::~SimpleBuffer() {
    logger.trace("SimpleBuffer::~SimpleBuffer");
}

void SimpleBuffer::read(char* out, const unsigned& offset, const unsigned& length) {
    std::memcpy(out, data.get() + offset, length);
}

void SimpleBuffer::write(const char* bytes, const unsigned& length) {
    std::memcpy(data.get() + used, bytes, length);
    used += length;
}

unsigned SimpleBuffer::getSize() const {
    return capacity;
}

unsigned SimpleBuffer::getSpace() const {
    return capacity - used;
}

bool SimpleBuffer::canRead(const unsigned& offset, const unsigned& length) const {
    logger.trace("SimpleBuffer::canRead");
    return offset < used && length < used - offset;
}

void SimpleBuffer::writeToFile(const char* path) {
    std::FILE* const file = std::fopen(path, "wb");
    if (!file) {
        logger.error("SimpleBuffer::writeToFile", "Could not open file: ", path);
        return;
    }
    if (std::fwrite(data.get(), 1, used, file) != used) {
        logger.error("SimpleBuffer::writeToFile", "Could not write file: ", path);
    }
    std::fclose(file);
}
