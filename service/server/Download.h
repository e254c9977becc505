#ifndef SONOLET_SERVICE_SERVER_DOWNLOAD_H
#define SONOLET_SERVICE_SERVER_DOWNLOAD_H

#include "server/SoundStore.h"
#include "store/Files.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace sonolet::service {

// The parts of a file that are there: spans of bytes that neither touch nor overlap. Places are
// bytes from the file's start; `from` is in a span, `to` behind it.
class Spans final {
public:
    void add(std::int64_t from, std::int64_t to);
    // The first place from this one on that is not there: where the bytes end that are, or it.
    std::int64_t firstMissing(std::int64_t place) const;
    // Behind the last byte that is there; 0: none is.
    std::int64_t end() const { return spans.empty() ? 0 : spans.rbegin()->second; }
    void clear() { spans.clear(); }

    // A line for each, in order; what cannot be read is none.
    std::string asText() const;
    static Spans fromText(const std::string& text);

private:
    std::map<std::int64_t, std::int64_t> spans;  // end by begin
};

// One sound on its way into a file of the cache. Beside the file another says which parts of it are
// there, as soon as nobody reads it any more.
//
// Threads: read() is for any and waits; the rest of what happens comes on the network's thread,
// which keeps nothing alive: a transfer ends with the last reader. Errors: UnreadableFile from
// read(), once no more of it can be had; a lost connection is none, it is tried again.
class Download final : public std::enable_shared_from_this<Download> {
public:
    struct Wanted {
        std::string file;        // in the cache
        std::string id;          // the server's
        std::int64_t size = -1;  // what it says of it
        bool isMade = false;     // the server makes it
        std::string format;      // what it is to make
        int bitrate = 0;         // kbit/s
    };

    // Throws UnreadableFile when there can be no such file. Of one that is there already it takes
    // what the file beside it says, unless it is too short for that.
    Download(SoundStore& soundStore, Wanted what);
    // Writes what is there into the file beside it, for the next one to go on with.
    ~Download();

    Download(const Download&) = delete;
    Download& operator=(const Download&) = delete;

    // Begins to fetch what is missing. REQUIRES: a shared_ptr has it.
    void start();

    // Bytes; negative while nobody knows, as of what the server makes.
    std::int64_t size() const;
    // As Sound's; given up once the flag is set and wake() called.
    std::size_t
    read(std::int64_t offset, void* to, std::size_t count, const std::atomic<bool>& givenUp);
    void wake();

private:
    using Lock = std::unique_lock<std::mutex>;

    bool isWhole() const { return total >= 0 && there.firstMissing(0) >= total; }
    void fetch(std::int64_t from);
    void demand(std::int64_t offset);
    bool begins(const HttpHead& received);
    bool comes(const char* bytes, std::size_t count);
    void isOver(const HttpError* error);
    void goOn();
    void retry(const ServerError& error);
    void giveUp(const std::string& why);

    // Constant after construction.
    SoundStore& store;
    const Wanted wanted;
    const FileDescriptor file;

    mutable std::mutex mutex;
    std::condition_variable changed;
    // State below is protected by mutex.
    Spans there;
    std::int64_t total = -1;  // bytes; negative: unknown
    std::string etag;
    std::shared_ptr<Http::Transfer> transfer;  // none: nothing is on its way
    Subsonic::Clock::time_point begun;         // the transfer
    std::int64_t place = 0;                    // where its next byte goes
    std::int64_t next = 0;                     // what to go on with
    bool isPart = true;                        // the server gives parts, as far as is known
    bool asStream = false;                     // it refuses downloads
    HttpHead head;
    std::string refusal;  // the beginning of what is no media
    bool isRefusal = false;
    std::string failure;  // not empty: nothing comes any more
    std::chrono::milliseconds pause{0};
};

}  // namespace sonolet::service

#endif
