#ifndef SONOLET_SERVICE_FOLDER_FOLDER_WATCH_H
#define SONOLET_SERVICE_FOLDER_FOLDER_WATCH_H

#include "music/Sound.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <thread>

struct _GFileMonitor;
struct _GMainContext;
struct _GMainLoop;
struct _GSource;

namespace sonolet::service {

// Tells when what is in a folder of music may be another: music, playlist files, covers, folders,
// through links too. The kernel watches each folder; where it cannot, being asked for too many or
// over a network, it is simply told each minute.
//
// Threads: the constructor and the destructor are the owner's. Everything happens on a thread of
// its own, which begins to watch a while after it was made, so that who ends soon pays nothing.
// Errors: what cannot be watched counts as what the kernel cannot watch.
class FolderWatch final {
public:
    using Milliseconds = std::chrono::milliseconds;
    struct Limits {
        Milliseconds begin{1000};
        // As soon as nothing has changed for so long, but not later than that after a change.
        Milliseconds quiet{400};
        Milliseconds latest{2000};
        Milliseconds rescan{60000};
        // Folders that the kernel may watch; 0: as many as the system allows.
        std::size_t folders = 0;
    };

    // `since`: what has changed after that is told once it watches; nanoseconds since 1970.
    // `changed` is called on the watching thread.
    FolderWatch(std::string musicFolder,
                std::int64_t since,
                std::function<void()> changed,
                Limits watchLimits);
    // Joins.
    ~FolderWatch();

    FolderWatch(const FolderWatch&) = delete;
    FolderWatch& operator=(const FolderWatch&) = delete;

private:
    struct Release {
        void operator()(_GFileMonitor* monitor) const;
        void operator()(_GMainContext* which) const;
        void operator()(_GMainLoop* which) const;
        void operator()(_GSource* source) const;
    };
    using Monitor = std::unique_ptr<_GFileMonitor, Release>;
    using Action = void (FolderWatch::*)();

    void run();
    void after(Milliseconds pause, Action action);
    // Every folder anew; what is watched already (`before`) goes on, so that nothing is missed.
    void watchAll();
    void watch(const std::string& path, std::map<std::string, Monitor>& before);
    // Something of that path has happened.
    void notice(const std::string& path);
    // Nothing has changed for a while: it is told.
    void settle();
    // For what cannot be watched.
    void lookAgain();
    // Whether a scan would look at a file of that name.
    bool matters(const std::string& path) const;

    // Constant after construction.
    const std::string music;
    const std::int64_t begun;
    const std::function<void()> tell;
    const Limits limits;
    const std::unique_ptr<_GMainContext, Release> context;
    const std::unique_ptr<_GMainLoop, Release> loop;

    StopFlag stopping{false};

    // State below is the thread's.
    std::map<std::string, Monitor> watched;  // by where a folder really is
    std::size_t most = 0;
    bool isWatching = false;
    bool isPartial = false;    // something cannot be watched
    bool isRepeating = false;  // and therefore told each minute
    bool isChanged = false;    // and not told yet
    bool hasNewTree = false;   // other folders than those that are watched
    std::unique_ptr<_GSource, Release> settling;
    std::chrono::steady_clock::time_point firstChange;

    std::thread thread;  // last: it uses everything above
};

}  // namespace sonolet::service

#endif
