#ifndef SONOLET_TESTS_SERVICE_SERVER_OTHER_CLIENT_H
#define SONOLET_TESTS_SERVICE_SERVER_OTHER_CLIENT_H

#include "subsonic/Reply.h"

#include <libsoup/soup.h>

#include <memory>
#include <stdexcept>
#include <string>

namespace sonolet::test {

// Somebody else who uses the same server, and the same account.
class OtherClient final {
public:
    explicit OtherClient(std::string serverUrl, std::string userName = "listener")
        : url(std::move(serverUrl)), user(std::move(userName)),
          session(soup_session_new(), g_object_unref) {}

    // What is under the envelope. `asked`: "getSong?id=1".
    service::Reply ask(std::string asked) const {
        const bool isAlone = asked.find('?') == std::string::npos;
        asked += std::string(isAlone ? "?" : "&") + "u=" + user + "&p=" + user +
                 "&c=other&v=1.16.1&f=json";
        const std::shared_ptr<SoupMessage> message(
            soup_message_new("GET", (url + "/rest/" + asked).c_str()), g_object_unref);
        g_autoptr(GError) error = nullptr;
        const std::shared_ptr<GBytes> body(
            soup_session_send_and_read(session.get(), message.get(), nullptr, &error),
            g_bytes_unref);
        if (error != nullptr) {
            throw std::runtime_error(error->message);
        }
        gsize size = 0;
        const auto* bytes = static_cast<const char*>(g_bytes_get_data(body.get(), &size));
        service::Reply reply = service::Reply::parse({bytes, size})["subsonic-response"];
        if (reply["status"].text() != "ok") {
            throw std::runtime_error(asked + ": " + std::string(bytes, size));
        }
        return reply;
    }

private:
    const std::string url;
    const std::string user;
    const std::shared_ptr<SoupSession> session;
};

}  // namespace sonolet::test

#endif
