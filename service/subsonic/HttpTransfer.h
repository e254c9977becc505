#ifndef SONOLET_SERVICE_SUBSONIC_HTTP_TRANSFER_H
#define SONOLET_SERVICE_SUBSONIC_HTTP_TRANSFER_H

#include "subsonic/Http.h"

#include <libsoup/soup.h>

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <thread>
#include <utility>
#include <vector>

// What Http is made of, for its own sources alone: a thread, and requests that are on their way
// there.
namespace sonolet::service {

struct HttpRelease {
    void operator()(gpointer object) const { g_object_unref(object); }
    void operator()(GError* error) const { g_error_free(error); }
    void operator()(GMainContext* context) const { g_main_context_unref(context); }
    void operator()(GSource* source) const {
        g_source_destroy(source);
        g_source_unref(source);
    }
};

template <typename Object>
using HttpOwned = std::unique_ptr<Object, HttpRelease>;

// One request on its way. Threads: once begun it is the network thread's, cancel() too: GLib may
// lose what waits while another thread cancels it. Ownership: the loop keeps it until it is over.
class Http::Transfer final : public std::enable_shared_from_this<Transfer> {
public:
    Transfer(Loop& owner, HttpRequest what, Listener whom)
        : loop(owner), request(std::move(what)), listener(std::move(whom)) {}

    void start();
    void cancel() { g_cancellable_cancel(cancellable.get()); }

private:
    using Self = std::shared_ptr<Transfer>;

    void read();
    void end(const HttpError* error);
    void end(const GError& error);
    void beginWait();

    static void sent(GObject* session, GAsyncResult* result, gpointer data);
    static void got(GObject* stream, GAsyncResult* result, gpointer data);

    // Constant after construction.
    Loop& loop;
    const HttpRequest request;
    const HttpOwned<GCancellable> cancellable{g_cancellable_new()};

    Listener listener;
    HttpOwned<SoupMessage> message;
    HttpOwned<GInputStream> stream;
    HttpOwned<GSource> timer;
    bool timedOut = false;
    std::int64_t missing = -1;  // bytes of the body; negative: unknown
    std::vector<char> buffer;
};

// The network's thread, with a main loop and a session of connections.
//
// Threads: any, where nothing else is said. Errors: std::system_error when there can be no thread.
class Http::Loop final {
public:
    explicit Loop(std::chrono::milliseconds longestWait)
        : patience(longestWait), context(g_main_context_new()), thread([this] { run(); }) {}

    // On the network's thread, in the order of asking. Dropped once it is stopped.
    void invoke(std::function<void()> action);
    // The network thread's.
    void invokeAfter(std::chrono::milliseconds pause, std::function<void()> action) const;
    // Ends all transfers and joins the thread; not to be called on it.
    void stop();

    const std::chrono::milliseconds patience;
    const HttpOwned<GMainContext> context;

    // State below is the network thread's.
    SoupSession* session = nullptr;
    std::set<std::shared_ptr<Transfer>> transfers;
    bool stopped = false;

private:
    using Actions = std::deque<std::function<void()>>;

    void run();
    Actions take();

    // State below is protected by mutex.
    std::mutex mutex;
    Actions actions;
    bool refusing = false;

    std::thread thread;  // last: it uses the above
};

}  // namespace sonolet::service

#endif
