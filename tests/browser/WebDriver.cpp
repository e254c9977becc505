#include "WebDriver.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>
#include <system_error>

namespace {

// A port that was free a moment ago: the driver cannot choose one itself.
std::string freePort() {
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    const bool bound = bind(listener, reinterpret_cast<sockaddr*>(&address), size) == 0 &&
                       getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) == 0;
    close(listener);
    if (!bound) {
        throw std::runtime_error("no free port");
    }
    return std::to_string(ntohs(address.sin_port));
}

std::string take(char* text) {
    std::string taken = text;
    g_free(text);
    return taken;
}

}  // namespace

WebDriver::WebDriver(const std::vector<std::string>& options)
    : http(soup_session_new()), json(jsc_context_new()) {
    const std::string port = freePort();
    driver = std::make_unique<Process>(
        std::vector<std::string>{"/usr/bin/WebKitWebDriver", "--port=" + port});
    base = "http://127.0.0.1:" + port;
    std::string arguments = "\"--automation\"";
    for (const std::string& option : options) {
        arguments += ',' + quoted(option);
    }
    const std::string wanted = R"({"capabilities":{"alwaysMatch":{"webkitgtk:browserOptions":{)"
                               R"("binary":")" BIN_DIR R"(/sonolet-browser","args":[)" +
                               arguments + "]}}}}";
    // Nothing tells when the driver listens but that it answers.
    JSCValue* session = nullptr;
    for (int tries = 0; session == nullptr; ++tries) {
        try {
            session = request("POST", "/session", wanted);
        } catch (const std::system_error&) {
            if (tries == 1000) {
                throw;
            }
            g_usleep(10000);
        }
    }
    JSCValue* const id = jsc_value_object_get_property(session, "sessionId");
    base += "/session/" + take(jsc_value_to_string(id));
    g_object_unref(id);
    g_object_unref(session);
}

WebDriver::~WebDriver() {
    try {
        call("DELETE", "", "");
    } catch (const std::exception&) {
        // The session has ended already.
    }
    driver.reset();
    g_object_unref(json);
    g_object_unref(http);
}

void WebDriver::open(const std::string& address) {
    call("POST", "/url", "{\"url\":" + quoted(address) + "}");
}

void WebDriver::reload() {
    call("POST", "/refresh", "{}");
}

void WebDriver::click(const std::string& selector) {
    JSCValue* const element =
        request("POST", "/element", R"({"using":"css selector","value":)" + quoted(selector) + "}");
    char** const names = jsc_value_object_enumerate_properties(element);
    JSCValue* const id = jsc_value_object_get_property(element, names[0]);
    call("POST", "/element/" + take(jsc_value_to_string(id)) + "/click", "{}");
    g_object_unref(id);
    g_strfreev(names);
    g_object_unref(element);
}

std::string WebDriver::evaluate(const std::string& body) {
    const std::string script = "const done = arguments[0]; (async () => {" + body +
                               "})().then(done, (error) => done(`threw ${error}`));";
    return call("POST", "/execute/async", "{\"script\":" + quoted(script) + ",\"args\":[]}");
}

std::vector<int> WebDriver::webProcesses() const {
    const std::vector<int> browsers = childrenOf(driver->id(), "sonolet-browser");
    return browsers.empty() ? browsers : childrenOf(browsers[0], "WebKitWebProcess");
}

std::string WebDriver::call(const char* method, const std::string& path, const std::string& body) {
    JSCValue* const value = request(method, path, body);
    char* const text = jsc_value_to_json(value, 0);
    g_object_unref(value);
    return text != nullptr ? take(text) : "undefined";
}

JSCValue* WebDriver::request(const char* method, const std::string& path, const std::string& body) {
    SoupMessage* const message = soup_message_new(method, (base + path).c_str());
    if (!body.empty()) {
        GBytes* const bytes = g_bytes_new(body.data(), body.size());
        soup_message_set_request_body_from_bytes(message, "application/json", bytes);
        g_bytes_unref(bytes);
    }
    GError* error = nullptr;
    GBytes* const answer = soup_session_send_and_read(http, message, nullptr, &error);
    const guint status = soup_message_get_status(message);
    g_object_unref(message);
    if (answer == nullptr) {
        const std::string text = error->message;
        g_error_free(error);
        throw std::system_error(std::make_error_code(std::errc::connection_refused), text);
    }
    gsize size = 0;
    const auto* data = static_cast<const char*>(g_bytes_get_data(answer, &size));
    const std::string text(data, size);
    g_bytes_unref(answer);
    if (status != 200) {
        throw std::runtime_error(path + ": " + text);
    }
    JSCValue* const whole = jsc_value_new_from_json(json, text.c_str());
    JSCValue* const value = jsc_value_object_get_property(whole, "value");
    g_object_unref(whole);
    return value;
}

std::string WebDriver::quoted(const std::string& text) {
    JSCValue* const string = jsc_value_new_string(json, text.c_str());
    std::string result = take(jsc_value_to_json(string, 0));
    g_object_unref(string);
    return result;
}
