#ifndef SONOLET_SERVICE_SUBSONIC_HTTP_H
#define SONOLET_SERVICE_SUBSONIC_HTTP_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

namespace sonolet::service {

// Why nothing, or not everything, came over the network.
class HttpError final : public std::runtime_error {
public:
    enum class Kind { refused, unknownHost, untrusted, timeout, broken, stopped };

    HttpError(Kind errorKind, const std::string& text) : std::runtime_error(text), why(errorKind) {}
    Kind kind() const { return why; }

private:
    Kind why;
};

// What came before the body.
struct HttpHead {
    int status = 0;
    std::string type;          // media type, in lower case, without parameters
    std::string etag;          // empty: none
    std::int64_t length = -1;  // of the body that comes; negative: unknown
    // Of a part (206): where it begins, and how long the whole is, negative: unknown.
    std::int64_t from = 0;
    std::int64_t total = -1;
};

// All of an answer, in memory.
struct HttpReply {
    HttpHead head;
    std::string body;
};

// What is asked for. The address may hold secrets, so it is in no message.
struct HttpRequest {
    std::string url;
    std::int64_t from = 0;  // the first byte wanted
    std::string ifRange;    // the etag that a part must be of; empty: whatever
};

// HTTP over a network that may be bad: on a thread of its own, encrypted as the system's
// certificates say for https. Redirections are not followed, since addresses hold secrets.
//
// Threads: any but its own. Units: bytes. Errors: HttpError. A wait for the next byte, or for the
// first, ends after `patience`. After stop() nothing waits: fetch() throws, and a transfer that is
// begun tells nothing.
class Http final {
public:
    explicit Http(std::chrono::milliseconds longestWait);
    // As stop().
    ~Http();

    Http(const Http&) = delete;
    Http& operator=(const Http&) = delete;

    // All of a body that has at most `largest` bytes; waits for it.
    HttpReply fetch(const HttpRequest& request, std::size_t largest);

    // What a transfer tells, on the network's thread, with no lock held; none may wait. `over`
    // comes last and once: with NULL when the body was whole.
    struct Listener {
        // False: no more of it is wanted.
        std::function<bool(const HttpHead& head)> head;
        std::function<bool(const char* bytes, std::size_t count)> bytes;
        std::function<void(const HttpError* error)> over;
    };
    class Transfer;

    // Begins a transfer, which ends by itself; or soon after cancel().
    std::shared_ptr<Transfer> begin(HttpRequest request, Listener listener);
    void cancel(const std::shared_ptr<Transfer>& transfer);

    // Has `action` called on the network's thread, unless it is stopped before.
    void after(std::chrono::milliseconds pause, std::function<void()> action);

    // Ends all transfers and joins the thread.
    void stop();

private:
    class Loop;
    const std::unique_ptr<Loop> loop;
};

}  // namespace sonolet::service

#endif
