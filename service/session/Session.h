#ifndef SONOLET_SERVICE_SESSION_SESSION_H
#define SONOLET_SERVICE_SESSION_SESSION_H

#include "images/Images.h"
#include "session/FaultShow.h"
#include "session/Login.h"
#include "session/Storage.h"
#include "source/Source.h"
#include "store/StatePaths.h"

#include "libspotify/api.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace sonolet::service {

// A failure that has a number in the interface.
class ServiceError final : public std::runtime_error {
public:
    ServiceError(sp_error errorCode, const std::string& text)
        : std::runtime_error(text), code(errorCode) {}
    // What the caller is answered; what() is for standard error.
    sp_error number() const { return code; }

private:
    sp_error code;
};

// The one session of a process. It makes its parts, lets them meet and ends them in an order in
// which none outlives what it uses; what it can do is theirs.
//
// Threads: the operations belong to the thread that calls processEvents(). The source, the workers
// and the player have threads of their own, which reach the owner through the event queue.
// notify_main_thread is called on any of them, music_delivery and end_of_track on the player's, all
// others on the owner's. No lock is held while a callback runs. A callback may call any operation:
// a processEvents() inside one does nothing, and after close() no further callback runs.
class Session : public std::enable_shared_from_this<Session> {
public:
    // Throws ServiceError for a configuration that cannot be used. It leaves no thread then, and
    // has called nothing but notify_main_thread.
    explicit Session(const sp_session_config& config);
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // Starts the source. The session is known by its handle from here on.
    void start();

    // Joins every thread. The player is silent, the library empty from here on.
    void close();

    // Handles what waits, and tells after how many milliseconds to be called again at the latest
    // (0: at once; NULL: nobody asks). What fails meanwhile is a line of the log.
    sp_error processEvents(int* nextTimeout);
    void* userdata() const { return userData; }

    const std::shared_ptr<Library>& library() const { return shelves; }
    // The parts, borrowed: for as long as the session is held.
    Playlists& playlists() const { return *lists; }
    Login& login() const { return *logins; }
    Playback& playback() const { return *player; }
    Queries& queries() const { return *questions; }

    // Makes the catalogue again when this is a sign that it is damaged. Any thread.
    void rebuildDamaged(const DatabaseError& error) { source->rebuild(error); }

    // `id` is 20 bytes, known or not.
    Ref<sp_image> image(const std::string& id) { return images->image(id); }
    // For all sessions to come too. 0: as much as seems right. DatabaseError when it cannot be
    // kept.
    sp_error setCacheSize(std::size_t megabytes) const;

    // In kbit/s, where the source has the choice.
    void setBitrate(int kilobits) const { source->setBitrate(kilobits); }

    // As Playlists::setStarred(); metadata_updated follows from the events.
    sp_error setStarred(const std::vector<Id>& tracks, bool star);

protected:
    ~Session();

private:
    void makeParts(const sp_session_config& config);
    void makeImages();
    void lookForChanges();
    void keepAgain();
    void settled();
    std::unique_ptr<Source> openSource();
    void endWorkers();
    int timeout() const;

    // Constant after construction.
    Callbacks callbacks;
    void* const userData;
    std::shared_ptr<Faults> faults;
    LateAnswers late;
    StatePaths paths;

    // The parts, each after those it uses; made once, gone in close() where they have a thread.
    std::unique_ptr<Source> source;
    std::unique_ptr<Storage> storage;
    std::shared_ptr<Library> shelves;
    std::shared_ptr<Playlists> lists;
    std::unique_ptr<Worker> checker;   // of logins
    std::unique_ptr<Worker> answerer;  // of queries
    std::unique_ptr<Worker> painter;   // of images
    std::shared_ptr<Images> images;
    std::unique_ptr<Queries> questions;
    std::unique_ptr<Playback> player;
    std::unique_ptr<Login> logins;
    std::unique_ptr<FaultShow> faultShow;

    // The owner thread's.
    bool dispatching = false;
    std::int64_t knownListChange = 0;  // to the source
};

}  // namespace sonolet::service

// The interface's name for it.
struct sp_session final : sonolet::service::Session {  // NOLINT(readability-identifier-naming)
    using Session::Session;
    ~sp_session() = default;
};

#endif
