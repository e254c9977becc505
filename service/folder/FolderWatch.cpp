#include "folder/FolderWatch.h"

#include "catalogue/Scanner.h"
#include "music/PlaylistFile.h"
#include "music/Tags.h"

#include <gio/gio.h>
#include <sys/stat.h>
#include <sys/vfs.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

namespace sonolet::service {

namespace {

using Clock = std::chrono::steady_clock;

constexpr char allowance[] = "/proc/sys/fs/inotify/max_user_watches";

// What other machines change there no kernel tells: NFS, SMB, CIFS, 9P, FUSE, AFS, Ceph.
constexpr std::array<std::uint32_t, 8> remoteSystems = {
    0x6969, 0x517b, 0xff534d42, 0xfe534d42, 0x01021997, 0x65735546, 0x5346414f, 0x00c36400};

bool isRemote(const std::string& path) {
    struct statfs system {};
    return statfs(path.c_str(), &system) == 0 &&
           std::find(remoteSystems.begin(), remoteSystems.end(),
                     static_cast<std::uint32_t>(system.f_type)) != remoteSystems.end();
}

// Half of what the user may have: other programs watch too.
std::size_t allowedFolders() {
    std::size_t allowed = 0;
    return std::ifstream(allowance) >> allowed ? allowed / 2 : 0;
}

std::int64_t lastChange(const struct stat& status) {
    constexpr std::int64_t nanoseconds = 1000000000;
    return status.st_ctim.tv_sec * nanoseconds + status.st_ctim.tv_nsec;
}

std::string nameOf(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

}  // namespace

void FolderWatch::Release::operator()(GFileMonitor* monitor) const {
    g_file_monitor_cancel(monitor);
    g_object_unref(monitor);
}
void FolderWatch::Release::operator()(GMainContext* which) const {
    g_main_context_unref(which);
}
void FolderWatch::Release::operator()(GMainLoop* which) const {
    g_main_loop_unref(which);
}
void FolderWatch::Release::operator()(GSource* source) const {
    g_source_destroy(source);
    g_source_unref(source);
}

FolderWatch::FolderWatch(std::string musicFolder,
                         std::int64_t since,
                         std::function<void()> changed,
                         Limits watchLimits)
    : music(std::move(musicFolder)), begun(since), tell(std::move(changed)), limits(watchLimits),
      context(g_main_context_new()), loop(g_main_loop_new(context.get(), FALSE)),
      thread([this] { run(); }) {}

FolderWatch::~FolderWatch() {
    stopping = true;
    // Asked for inside the loop, since before it runs nobody would hear of it.
    after(Milliseconds(0), nullptr);
    thread.join();
}

void FolderWatch::run() {
    g_main_context_push_thread_default(context.get());
    after(limits.begin, &FolderWatch::watchAll);
    g_main_loop_run(loop.get());
    settling.reset();
    watched.clear();
    // What the monitors still had to say is let go with them.
    while (g_main_context_iteration(context.get(), FALSE) != FALSE) {
    }
    g_main_context_pop_thread_default(context.get());
}

// Without an action: ends the loop.
void FolderWatch::after(Milliseconds pause, Action action) {
    struct Task {
        FolderWatch* self;
        Action action;
    };
    const std::unique_ptr<GSource, void (*)(GSource*)> source(
        g_timeout_source_new(static_cast<guint>(pause.count())), g_source_unref);
    g_source_set_callback(
        source.get(),
        [](gpointer data) -> gboolean {
            const auto* task = static_cast<Task*>(data);
            if (task->action == nullptr) {
                g_main_loop_quit(task->self->loop.get());
            } else if (!task->self->stopping) {
                (task->self->*task->action)();
            }
            return G_SOURCE_REMOVE;
        },
        new Task{this, action}, [](gpointer data) { delete static_cast<Task*>(data); });
    g_source_attach(source.get(), context.get());
}

// ---- The folders ----

void FolderWatch::watchAll() {
    most = limits.folders != 0 ? limits.folders : allowedFolders();
    isPartial = false;
    hasNewTree = false;
    std::map<std::string, Monitor> before = std::exchange(watched, {});
    watch(music, before);
    isPartial = isPartial || watched.empty();
    if (isPartial && !isRepeating) {
        isRepeating = true;
        after(limits.rescan, &FolderWatch::lookAgain);
    }
    isWatching = true;
    if (isChanged && settling == nullptr) {
        isChanged = false;
        tell();
    }
}

void FolderWatch::watch(const std::string& path, std::map<std::string, Monitor>& before) {
    std::error_code error;
    const std::string place = std::filesystem::canonical(path, error);
    if (stopping || error || watched.count(place) > 0) {
        return;  // a link may lead back
    }
    Monitor& monitor = watched[place];
    if (const auto known = before.find(place); known != before.end()) {
        monitor = std::move(known->second);
    }
    if (monitor == nullptr && watched.size() <= most) {
        const std::unique_ptr<GFile, void (*)(gpointer)> file(
            g_vfs_get_file_for_path(g_vfs_get_local(), place.c_str()), g_object_unref);
        monitor.reset(
            g_file_monitor_directory(file.get(),
                                     static_cast<GFileMonitorFlags>(G_FILE_MONITOR_WATCH_MOVES |
                                                                    G_FILE_MONITOR_WATCH_MOUNTS),
                                     nullptr, nullptr));
        if (monitor != nullptr) {
            g_file_monitor_set_rate_limit(monitor.get(),
                                          static_cast<gint>(limits.quiet.count()) / 4);
            g_signal_connect(monitor.get(), "changed",
                             G_CALLBACK(+[](GFileMonitor*, GFile* which, GFile* other,
                                            GFileMonitorEvent, gpointer self) {
                                 for (GFile* each : {which, other}) {
                                     if (each != nullptr) {
                                         static_cast<FolderWatch*>(self)->notice(
                                             g_file_peek_path(each));
                                     }
                                 }
                             }),
                             this);
        }
    }
    isPartial = isPartial || monitor == nullptr || isRemote(place);
    // What has changed before it was watched. A folder that was not there is news as a whole.
    std::vector<std::string> inside;
    for (std::filesystem::directory_iterator entries(place, error), end; !error && entries != end;
         entries.increment(error)) {
        struct stat status {};
        const std::string entry = entries->path();
        if (nameOf(entry).front() == '.' || stat(entry.c_str(), &status) != 0) {
            continue;
        }
        if (S_ISDIR(status.st_mode)) {
            inside.push_back(entry);
        } else if (!isWatching && lastChange(status) >= begun && matters(entry)) {
            isChanged = true;
        }
    }
    struct stat status {};
    isChanged = isChanged || isWatching ||
                (stat(place.c_str(), &status) == 0 && lastChange(status) >= begun);
    for (const std::string& entry : inside) {
        watch(entry, before);
    }
}

// ---- What happens in them ----

bool FolderWatch::matters(const std::string& path) const {
    const std::string name = nameOf(path);
    if (name.empty() || name.front() == '.') {
        return false;
    }
    return isMusicFile(name) || PlaylistFile::isOne(name) || isFolderPicture(name);
}

void FolderWatch::notice(const std::string& path) {
    std::error_code error;
    const bool isFolder = watched.count(path) > 0 || std::filesystem::is_directory(path, error);
    if (!isFolder && !matters(path)) {
        return;
    }
    hasNewTree = hasNewTree || isFolder;
    const Clock::time_point now = Clock::now();
    if (!isChanged) {
        isChanged = true;
        firstChange = now;
    }
    const auto left = std::chrono::duration_cast<Milliseconds>(firstChange + limits.latest - now);
    const Milliseconds pause = std::max(Milliseconds(0), std::min(limits.quiet, left));
    settling.reset(g_timeout_source_new(static_cast<guint>(pause.count())));
    g_source_set_callback(
        settling.get(),
        [](gpointer self) -> gboolean {
            static_cast<FolderWatch*>(self)->settle();
            return G_SOURCE_REMOVE;
        },
        this, nullptr);
    g_source_attach(settling.get(), context.get());
}

void FolderWatch::settle() {
    settling.reset();
    if (hasNewTree) {
        watchAll();  // before it is told, so that nothing is missed between
    } else {
        isChanged = false;
        tell();
    }
}

void FolderWatch::lookAgain() {
    isRepeating = false;
    if (isPartial) {
        watchAll();
    }
}

}  // namespace sonolet::service
