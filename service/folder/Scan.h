#ifndef SONOLET_SERVICE_FOLDER_SCAN_H
#define SONOLET_SERVICE_FOLDER_SCAN_H

#include "catalogue/Scanner.h"
#include "source/Source.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace sonolet::service {

// The scan that brings a session's catalogue up to date with a folder of music, once; and once more
// when the catalogue proves damaged or is another, or the folder has changed.
//
// Threads: the session's owner, but for rebuild().
class Scan final {
public:
    using Pass = Scanner::Pass;

    // `over` is told when a scan has ended by itself, on the owner's thread. Borrows the events.
    Scan(const SourceEvents& toSession, std::string musicFolder, std::function<void(Pass)> over);

    Scan(const Scan&) = delete;
    Scan& operator=(const Scan&) = delete;

    // Ends the one that is under way, which may take as long as a read from the disk. Playlist
    // files are taken only while the accounts are in files.
    void start(const Kept& kept, Pass pass = Pass::first);
    // Once more with the same files; when one is under way, after that.
    void again();
    // Joins its thread; what it has not committed is found again by the next.
    void stop() { scanner.reset(); }
    // When the last one began: nanoseconds since 1970.
    std::int64_t begun() const { return beginning; }

    // Sets the catalogue's file aside and makes it again, when the error is a sign that it is
    // damaged. Any thread.
    void rebuild(const DatabaseError& error);

private:
    // Constant after construction.
    const SourceEvents& events;
    const std::string music;
    const std::function<void(Pass)> tellOver;

    Kept where;
    bool running = false;
    bool isWanted = false;  // again
    std::int64_t beginning = 0;
    std::atomic<bool> rebuilding{false};  // from here to the end of the scan
    std::unique_ptr<Scanner> scanner;     // last: its thread uses the above
};

}  // namespace sonolet::service

#endif
