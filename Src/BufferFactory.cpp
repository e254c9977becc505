#include "BufferFactory.h"

#include "CircularBuffer.h"

BufferFactory* BufferFactory::m_instance = nullptr;

BufferFactory& BufferFactory::getInstance() {
    // The initialisation happens once, whichever threads come first.
    static BufferFactory& instance = *(m_instance = new BufferFactory);
    return instance;
}

// NOLINTNEXTLINE(readability-convert-member-functions-to-static): one operation of the factory
std::unique_ptr<Buffer> BufferFactory::createBuffer(unsigned /*size*/) const {
    return std::make_unique<CircularBuffer>();
}
