#ifndef SONOLET_SERVICE_CATALOGUE_SCANNER_H
#define SONOLET_SERVICE_CATALOGUE_SCANNER_H

#include "catalogue/CatalogueWriter.h"
#include "music/MusicFile.h"

#include <chrono>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <unordered_set>
#include <utility>
#include <vector>

namespace sonolet::service {

// What a scan tells its owner, on the scanning thread, with no lock held.
struct ScanEvents {
    // Progress each second, what is skipped and why, and what has changed in the end.
    std::function<void(std::string line)> log;
    // The scan is complete; the playlist files that it has met, relative to the folder of music.
    // Gives up once the flag is set. Not called when that folder could not be read. May be left
    // out.
    std::function<void(const std::vector<std::string>& files, const StopFlag& stop)> playlistFiles;
    // The scan is over, complete or not. Not called when it was stopped.
    std::function<void(bool complete)> finished;
};

// Whether a file of that name is looked at for its folder's picture.
bool isFolderPicture(const std::string& name);

// Brings a catalogue up to date with a folder of music, once, on a thread of its own, which begins
// in the constructor.
//
// Threads: the constructor and the destructor are the owner's; events come on the scanning thread.
// Errors: what goes wrong is a line of the log, and a scan that is not complete.
//
// A catalogue that proves damaged is set aside and made from nothing. Files are known by path, size
// and time; only new and changed ones are read. A file that cannot be read is skipped with one
// line; while the folder of music itself cannot be read, everything stays as it is known. Changes
// are committed in small batches, so a reader sees music soon and a process that dies loses little;
// the next scan goes on from there.
class Scanner final {
public:
    // One that looks again says only what it has found.
    enum class Pass { first, again };

    // The catalogue is made if it is not there. `log` and `finished` must be given, and all three
    // stay callable until the destructor returns.
    Scanner(std::string musicFolder,
            std::string catalogueFile,
            ScanEvents scanEvents,
            Pass whichPass = Pass::first);

    // Stops within a file and joins.
    ~Scanner();

    Scanner(const Scanner&) = delete;
    Scanner& operator=(const Scanner&) = delete;

private:
    using Clock = std::chrono::steady_clock;

    struct Counts {
        int files = 0;
        int added = 0;
        int changed = 0;
        int removed = 0;
        int skipped = 0;
    };

    void run();
    void scan();
    void scanOnce();
    void scanFolder(const std::string& path);
    void lookAtPicture(const std::string& path, const KnownFolder& known, const std::string& name);
    void lookAtFile(const std::string& path,
                    const std::string& name,
                    const FileStamp& stamp,
                    const KnownFolder& known);
    void loseFolders();
    void reportProgress();
    void reportResult(std::chrono::duration<double> taken);
    void flush();
    std::string absolute(const std::string& path) const;

    // Constant after construction.
    const std::string music;
    const std::string file;
    const ScanEvents events;
    const Pass pass;

    StopFlag stopping{false};

    // State below is the scanning thread's.
    std::unique_ptr<CatalogueWriter> writer;
    ScanBatch batch;
    Counts counts;
    std::set<std::pair<unsigned long long, unsigned long long>> visited;  // device and inode
    std::unordered_set<std::string> foldersWithMusic;
    std::vector<std::string> playlistFiles;
    bool complete = false;
    Clock::time_point lastFlush;
    Clock::time_point lastReport;

    std::thread thread;  // last: it uses everything above
};

}  // namespace sonolet::service

#endif
