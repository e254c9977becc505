#ifndef SONOLET_BUFFER_FACTORY_H
#define SONOLET_BUFFER_FACTORY_H

#include "Buffer.h"

#include <memory>

// Makes the buffer of a track, so that AudioTrack need not know which kind it is. One instance,
// made on first use and never freed; any thread.
class BufferFactory final {
public:
    static BufferFactory& getInstance();

    BufferFactory(const BufferFactory&) = delete;
    BufferFactory& operator=(const BufferFactory&) = delete;

    // Always a ring of the one fixed capacity, whatever size is asked for. 640 KiB, some four
    // seconds; throws std::bad_alloc.
    std::unique_ptr<Buffer> createBuffer(unsigned size) const;

private:
    BufferFactory() = default;

    static BufferFactory* m_instance;
};

#endif
