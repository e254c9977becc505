#include "Buffer.h"

void Buffer::read(char* /*out*/, const unsigned& /*offset*/, const unsigned& /*length*/) {}

void Buffer::write(const char* /*data*/, const unsigned& /*length*/) {}

unsigned Buffer::getSize() const {
    return 0;
}

unsigned Buffer::getSpace() const {
    return 0;
}

bool Buffer::canRead(const unsigned& /*offset*/, const unsigned& /*length*/) const {
    return false;
}

bool Buffer::canWrite(const unsigned& /*length*/) const {
    return false;
}

bool Buffer::hasEnoughSpace(const unsigned& length) const {
    return length <= getSpace();
}
