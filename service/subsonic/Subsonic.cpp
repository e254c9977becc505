#include "subsonic/Subsonic.h"

#include "store/GlibText.h"
#include "store/Id.h"

#include <glib.h>

#include <cstring>
#include <utility>

namespace sonolet::service {

namespace {

// The newest version that is spoken; older servers answer what they know.
constexpr char version[] = "1.16.1";
// Servers keep settings by it.
constexpr char client[] = "Sonolet";

constexpr std::size_t largestAnswer = 64 << 20;
constexpr std::size_t saltLength = 16;

std::string escaped(const std::string& text) {
    return GlibText(
               g_uri_escape_bytes(reinterpret_cast<const guint8*>(text.data()), text.size(), ""))
        .get();
}

// The interface's numbers of failures.
ServerError errorOfCode(int code, const std::string& message) {
    const std::string text = "the server says: " + (message.empty() ? "nothing" : message) + " (" +
                             std::to_string(code) + ')';
    switch (code) {
    case 20:
        return {SP_ERROR_CLIENT_TOO_OLD, text, false, code};
    case 40:
    case 41:
    case 42:
    case 43:
    case 44:
        return {SP_ERROR_BAD_USERNAME_OR_PASSWORD, text, false, code};
    case 50:
        return {SP_ERROR_PERMISSION_DENIED, text, false, code};
    case 60:
        return {SP_ERROR_USER_NEEDS_PREMIUM, text, false, code};
    case 0:
        return {SP_ERROR_OTHER_TRANSIENT, text, false, code};
    default:
        return {SP_ERROR_OTHER_PERMANENT, text, false, code};
    }
}

std::optional<ServerError> errorOfStatus(int status) {
    constexpr int redirection = 300;
    constexpr int refused = 400;
    constexpr int broken = 500;
    if (status >= 200 && status < redirection) {
        return std::nullopt;
    }
    const std::string text = "the server answers with HTTP " + std::to_string(status);
    if (status < refused) {
        return ServerError(SP_ERROR_UNABLE_TO_CONTACT_SERVER,
                           text + ": it is somewhere else, and that address is to be given", false);
    }
    switch (status) {
    case 401:
        return ServerError(SP_ERROR_BAD_USERNAME_OR_PASSWORD, text, false);
    case 403:
        return ServerError(SP_ERROR_ACCESS_DENIED, text, false);
    case 404:
        return ServerError(SP_ERROR_OTHER_PERMANENT,
                           text + ": nothing is there; its address may be another", false);
    case 429:
        return ServerError(SP_ERROR_OTHER_TRANSIENT, text + ": it is asked too often", false);
    case 501:
        return ServerError(SP_ERROR_OTHER_PERMANENT, text + ": it does not do that", false);
    default:
        break;
    }
    return status >= broken ? ServerError(SP_ERROR_OTHER_TRANSIENT, text, true)
                            : ServerError(SP_ERROR_OTHER_PERMANENT, text, false);
}

// The envelope's inside; throws what it says is wrong.
Reply opened(const std::string& body) {
    Reply reply;
    try {
        reply = Reply::parse(body)["subsonic-response"];
    } catch (const Reply::Malformed& error) {
        throw ServerError(SP_ERROR_OTHER_TRANSIENT, error.what(), false);
    }
    const std::string status = reply["status"].text();
    if (status == "failed") {
        const Reply error = reply["error"];
        throw errorOfCode(static_cast<int>(error["code"].number()), error["message"].text());
    }
    if (status != "ok") {
        throw ServerError(SP_ERROR_OTHER_TRANSIENT, "the answer is none of this interface", false);
    }
    return reply;
}

}  // namespace

ServerAddress::ServerAddress(const std::string& url) {
    const std::string refusal = '"' + url +
                                "\" is no address of a server: http://HOST:PORT/PATH or https, "
                                "without user, password or query";
    GError* error = nullptr;
    GUri* uri = g_uri_parse(url.c_str(), G_URI_FLAGS_ENCODED, &error);
    if (uri == nullptr) {
        const std::string why = error->message;
        g_error_free(error);
        throw std::runtime_error(refusal + " (" + why + ')');
    }
    const std::string scheme = g_uri_get_scheme(uri);
    const std::string host = g_uri_get_host(uri) == nullptr ? "" : g_uri_get_host(uri);
    const bool plain = g_uri_get_userinfo(uri) == nullptr && g_uri_get_query(uri) == nullptr &&
                       g_uri_get_fragment(uri) == nullptr;
    std::string path = g_uri_get_path(uri);
    const int port = g_uri_get_port(uri);
    g_uri_unref(uri);
    if ((scheme != "http" && scheme != "https") || host.empty() || !plain) {
        throw std::runtime_error(refusal);
    }
    while (!path.empty() && path.back() == '/') {
        path.pop_back();
    }
    const bool isNumbered = host.find(':') != std::string::npos;
    base = scheme + "://" + (isNumbered ? '[' + host + ']' : host) +
           (port < 0 ? "" : ':' + std::to_string(port)) + path;
    isPrivate = scheme == "https" || host == "localhost" || host == "::1" ||
                (host.compare(0, 4, "127.") == 0 && g_hostname_is_ip_address(host.c_str()));
}

std::string ServerLogin::tokenOf(const std::string& password, const std::string& salt) {
    const std::string salted = password + salt;
    return GlibText(g_compute_checksum_for_data(G_CHECKSUM_MD5,
                                                reinterpret_cast<const guchar*>(salted.data()),
                                                salted.size()))
        .get();
}

ServerLogin ServerLogin::withToken(const std::string& user, const std::string& password) {
    ServerLogin login;
    login.user = user;
    login.salt = hex(sha256(GlibText(g_uuid_string_random()).get())).substr(0, saltLength);
    login.token = tokenOf(password, login.salt);
    return login;
}

Subsonic::Subsonic(Http& network, ServerAddress where, Watch& connection)
    : http(network), place(std::move(where)), watch(connection) {}

void Subsonic::use(const std::optional<ServerLogin>& login) {
    const std::lock_guard<std::mutex> lock(mutex);
    user = login;
}

std::string
Subsonic::url(const ServerLogin& login, const char* method, const Parameters& parameters) const {
    std::string url = place.base + "/rest/" + method + ".view?f=json&v=" + version +
                      "&c=" + client + "&u=" + escaped(login.user);
    url += login.token.empty() ? "&p=enc:" + hex(login.password)
                               : "&t=" + login.token + "&s=" + login.salt;
    for (const auto& [name, value] : parameters) {
        url += std::string("&") + name + '=' + escaped(value);
    }
    return url;
}

ServerLogin Subsonic::current() const {
    const std::lock_guard<std::mutex> lock(mutex);
    if (!user) {
        throw ServerError(SP_ERROR_PERMISSION_DENIED, "nobody is logged in", false);
    }
    return *user;
}

std::string Subsonic::url(const char* method, const Parameters& parameters) const {
    return url(current(), method, parameters);
}

ServerError Subsonic::errorOf(const HttpError& error, const std::string& base) {
    const std::string text = base + ": " + error.what();
    switch (error.kind()) {
    case HttpError::Kind::unknownHost:
        return {SP_ERROR_HOST_NOT_FOUND, text, true};
    case HttpError::Kind::timeout:
        return {SP_ERROR_TIMEOUT, text, true};
    case HttpError::Kind::refused:
    case HttpError::Kind::untrusted:
        return {SP_ERROR_UNABLE_TO_CONTACT_SERVER, text, true};
    case HttpError::Kind::stopped:
        return {SP_ERROR_OTHER_TRANSIENT, text, false};
    case HttpError::Kind::broken:
        break;
    }
    return {SP_ERROR_OTHER_TRANSIENT, text, true};
}

std::optional<ServerError> Subsonic::errorOf(const HttpHead& head, const std::string& body) {
    const bool isText = head.type == "application/json" || head.type == "text/json" ||
                        head.type == "text/xml" || head.type == "application/xml";
    if (isText) {
        try {
            opened(body);
        } catch (const ServerError& error) {
            return error;
        }
    }
    return errorOfStatus(head.status);
}

HttpReply Subsonic::fetch(const std::string& asked, std::size_t largest) {
    try {
        return http.fetch({asked, 0, {}}, largest);
    } catch (const HttpError& error) {
        throw errorOf(error, place.base);
    }
}

Reply Subsonic::callAs(const ServerLogin& login, const char* method, const Parameters& parameters) {
    const HttpReply reply = fetch(url(login, method, parameters), largestAnswer);
    const std::optional<ServerError> refused = errorOfStatus(reply.head.status);
    try {
        Reply answer = opened(reply.body);
        if (!refused) {
            return answer;
        }
    } catch (const ServerError& error) {
        // Some send their envelope with a status that tells less.
        if (!refused || error.code() >= 0) {
            throw;
        }
    }
    throw ServerError(*refused);
}

Reply Subsonic::callAside(const char* method) {
    return callAs(current(), method);
}

Reply Subsonic::call(const char* method, const Parameters& parameters) {
    const ServerLogin login = current();
    const Clock::time_point asked = Clock::now();
    try {
        Reply answer = callAs(login, method, parameters);
        watch.answered(asked);
        return answer;
    } catch (const ServerError& error) {
        watch.failed(error);
        throw;
    }
}

std::string Subsonic::bytes(const char* method, const Parameters& parameters, std::size_t largest) {
    const Clock::time_point asked = Clock::now();
    try {
        HttpReply reply = fetch(url(method, parameters), largest);
        if (const std::optional<ServerError> error = errorOf(reply.head, reply.body)) {
            throw ServerError(*error);
        }
        watch.answered(asked);
        return std::move(reply.body);
    } catch (const ServerError& error) {
        watch.failed(error);
        throw;
    }
}

}  // namespace sonolet::service
