#ifndef SONOLET_SERVICE_MUSIC_SOUND_H
#define SONOLET_SERVICE_MUSIC_SOUND_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace sonolet::service {

// Bytes of music that cannot be read, or are not what they say they are: why.
class UnreadableFile final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A read that was given up because of wakeReaders().
class ReadEnded final : public std::runtime_error {
public:
    ReadEnded() : std::runtime_error("the read was given up") {}
};

// Set, from any thread, once nobody waits any more for what is being read.
using StopFlag = std::atomic<bool>;

// The bytes of one piece of music, wherever they are.
//
// Threads: for any; read() may wait, the others do not. Units: bytes. A sound that is given up on
// says so by an exception, never by waiting without an end.
class Sound {
public:
    virtual ~Sound() = default;

    // What log lines call it, and by which it is known to be the same.
    virtual const std::string& path() const = 0;
    // Negative while nobody knows; such a sound is read from its start to its end.
    virtual std::int64_t size() const = 0;
    // Copies up to `count` bytes out; fewer at the end, none behind it. Throws UnreadableFile, or
    // ReadEnded once wakeReaders(true) was called.
    virtual std::size_t read(std::int64_t offset, void* to, std::size_t count) const = 0;
    // Ends the waits of others in read(), and all to come until it is taken back. What never waits
    // need not know.
    virtual void wakeReaders(bool) const {}
};

}  // namespace sonolet::service

#endif
