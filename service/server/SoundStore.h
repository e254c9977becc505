#ifndef SONOLET_SERVICE_SERVER_SOUND_STORE_H
#define SONOLET_SERVICE_SERVER_SOUND_STORE_H

#include "music/Sound.h"
#include "subsonic/Subsonic.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace sonolet::service {

class Download;

// The music of a server as files of the cache: what is opened is fetched, from wherever it is read
// first and then what is missing, and stays for the next time and for when the server is away. What
// was not used for the longest time goes first.
//
// A file that this machine decodes is fetched as it is, which no server counts as a play; any other
// as the server makes an MP3 of it, of which nobody knows the length before the end. While the
// connection is lost a read waits, and goes on at the same byte.
//
// Threads: any. Errors: what is wrong with a sound is told by its read().
class SoundStore final {
public:
    using Log = std::function<void(std::string line)>;

    SoundStore(Http& network,
               Subsonic& client,
               std::string cacheFolder,
               Log logLine,
               Subsonic::Watch& connection);

    // `path` is "ID.SUFFIX", `size` what the server says of it, negative for nothing.
    std::shared_ptr<const Sound>
    open(const std::string& name, const std::string& path, std::int64_t size);

    // 0: a tenth of what the disk has free, four GiB at most.
    void setLimit(std::uint64_t mebibytes) { megabytes = mebibytes; }
    // Of what the server makes, in kbit/s; `always`: also of what could be decoded as it is.
    void setBitrate(int kilobits, bool always);

    // For downloads.
    Http& network() const { return http; }
    Subsonic& client() const { return server; }
    Subsonic::Watch& watch() const { return tell; }
    const Log& log() const { return say; }
    // Makes room, which goes by what was used when.
    void shrink();

private:
    // Constant after construction.
    Http& http;
    Subsonic& server;
    const std::string folder;
    const Log say;
    Subsonic::Watch& tell;

    std::atomic<std::uint64_t> megabytes{0};
    std::atomic<int> bitrate{320};
    std::atomic<bool> transcodesAll{false};

    std::mutex mutex;
    std::map<std::string, std::weak_ptr<Download>> downloads;  // protected by mutex; by file
};

}  // namespace sonolet::service

#endif
