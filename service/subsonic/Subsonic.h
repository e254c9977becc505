#ifndef SONOLET_SERVICE_SUBSONIC_SUBSONIC_H
#define SONOLET_SERVICE_SUBSONIC_SUBSONIC_H

#include "source/Answers.h"
#include "subsonic/Http.h"
#include "subsonic/Items.h"

#include <chrono>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace sonolet::service {

// Why a server did not answer what it was asked.
class ServerError final : public SourceError {
public:
    // The network or the machine behind it, not the question.
    bool isLost() const { return lost; }
    // The number that the server itself gave; negative: it gave none.
    int code() const { return serverCode; }
    // The server answers that it does not have it, as servers say that.
    bool isNotThere() const { return serverCode == 0 || serverCode == 70; }

    ServerError(sp_error error, const std::string& text, bool isLost, int codeOfServer = -1)
        : SourceError(error, text), lost(isLost), serverCode(codeOfServer) {}

private:
    bool lost;
    int serverCode;
};

// Where a server is: scheme, host, port and path. Throws std::runtime_error for what cannot be one.
struct ServerAddress {
    explicit ServerAddress(const std::string& url);

    std::string base;  // without a slash at its end, without user and password
    // Whether what is sent there can be read by nobody else: it is encrypted, or stays on this
    // machine.
    bool isPrivate = false;
};

// What proves who asks: a text from which the password cannot be read, and its salt; or, for a
// server that knows nothing better, the password.
struct ServerLogin {
    std::string user;
    std::string salt;
    std::string token;
    std::string password;  // in place of the two

    // With a fresh salt: two tokens of one password are not the same.
    static ServerLogin withToken(const std::string& user, const std::string& password);
    static std::string tokenOf(const std::string& password, const std::string& salt);
};

// A server that speaks the Subsonic interface (REST, JSON).
//
// Threads: any; call() waits for the answer. Errors: ServerError.
class Subsonic final {
public:
    using Parameters = std::vector<std::pair<const char*, std::string>>;
    using Clock = std::chrono::steady_clock;

    // Told of each answer, on the thread that asked. It outlives who tells it.
    class Watch {
    public:
        // `asked`: an answer tells only that the server was there then or later.
        virtual void answered(Clock::time_point asked) = 0;
        virtual void failed(const ServerError& error) = 0;

    protected:
        ~Watch() = default;
    };

    Subsonic(Http& network, ServerAddress where, Watch& connection);

    const ServerAddress& address() const { return place; }

    // Who asks from here on; nobody: each call is a ServerError. What is under way goes on.
    void use(const std::optional<ServerLogin>& login);

    // What the server answers under its envelope.
    Reply call(const char* method, const Parameters& parameters = {});
    // The same without telling the watch: of what many servers do not say, and as somebody else.
    Reply callAside(const char* method);
    Reply callAs(const ServerLogin& login, const char* method, const Parameters& parameters = {});
    // An answer that is no JSON, of at most `largest` bytes: a picture.
    std::string bytes(const char* method, const Parameters& parameters, std::size_t largest);

    // For a transfer of somebody else's. It holds secrets.
    std::string url(const char* method, const Parameters& parameters) const;
    // The error that an answer to such a transfer tells; `body`: its beginning, if it is no media.
    static std::optional<ServerError> errorOf(const HttpHead& head, const std::string& body);
    static ServerError errorOf(const HttpError& error, const std::string& base);

private:
    // Throws when nobody is logged in.
    ServerLogin current() const;
    std::string
    url(const ServerLogin& login, const char* method, const Parameters& parameters) const;
    HttpReply fetch(const std::string& asked, std::size_t largest);

    // Constant after construction.
    Http& http;
    const ServerAddress place;
    Watch& watch;

    mutable std::mutex mutex;
    std::optional<ServerLogin> user;  // protected by mutex
};

}  // namespace sonolet::service

#endif
