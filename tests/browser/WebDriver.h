#ifndef SONOLET_TESTS_BROWSER_WEBDRIVER_H
#define SONOLET_TESTS_BROWSER_WEBDRIVER_H

#include "Process.h"

#include <array>
#include <map>

// A browser of its own and the WebDriver that controls it: sonolet-browser, or Cog without a
// display when the environment says SONOLET_BROWSER=cog.
//
// Errors: std::runtime_error with what the driver answers.
class WebDriver final {
public:
    // With these options beside --automation.
    explicit WebDriver(const std::vector<std::string>& options) {
        std::string arguments = inCog() ? R"("--log","error")" : R"("--automation")";
        for (const std::string& option : options) {
            arguments += ',' + quoted(option);
        }
        if (inCog()) {
            arguments += R"(,"--","--automation","--platform=headless")";
        }
        const std::string answer = call(
            "POST", "",
            std::string(R"({"capabilities":{"alwaysMatch":{"timeouts":{"script":500000},)") +
                (inCog() ? R"("wpe:browserOptions":{"binary":")" BIN_DIR "/sonolet-cog"
                         : R"("webkitgtk:browserOptions":{"binary":")" BIN_DIR "/sonolet-browser") +
                R"(","args":[)" + arguments + "]}}}}");
        const std::string key = R"("sessionId":")";
        const std::size_t id = answer.find(key) + key.size();
        session += '/' + answer.substr(id, answer.find('"', id) - id);
    }
    ~WebDriver() {
        try {
            ask("DELETE", "", "");
        } catch (const std::exception&) {
            // Its session goes with it.
        }
    }

    WebDriver(const WebDriver&) = delete;
    WebDriver& operator=(const WebDriver&) = delete;

    void open(const std::string& address) {
        call("POST", "/url", "{\"url\":" + quoted(address) + "}");
    }
    // The page's size, once it has it.
    void resize(int width, int height) {
        const std::string size = std::to_string(width) + ',' + std::to_string(height);
        call("POST", "/window/rect",
             "{\"width\":" + std::to_string(width) + ",\"height\":" + std::to_string(height) + '}');
        evaluate("while (`${[innerWidth, innerHeight]}` !== '" + size +
                 "') { await new Promise(requestAnimationFrame); }");
    }
    void reload() { call("POST", "/refresh", "{}"); }

    // Presses and releases real keys, one after the other: "Left", "Up", "Right", "Down", "Enter",
    // "Back", "Escape", or what they write.
    void press(const std::vector<std::string>& keys) {
        const std::map<std::string, std::string> codes = {
            {"Left", "\\uE012"},  {"Up", "\\uE013"},   {"Right", "\\uE014"}, {"Down", "\\uE015"},
            {"Enter", "\\uE007"}, {"Back", "\\uE003"}, {"Escape", "\\uE00C"}};
        std::string actions;
        for (const std::string& key : keys) {
            const auto code = codes.find(key);
            for (const char* type : {"keyDown", "keyUp"}) {
                actions += std::string(actions.empty() ? "" : ",") + "{\"type\":\"" + type +
                           "\",\"value\":\"" + (code == codes.end() ? key : code->second) + "\"}";
            }
        }
        call("POST", "/actions",
             R"({"actions":[{"type":"key","id":"keys","actions":[)" + actions + "]}]}");
    }
    // What is seen of the page: a PNG file in Base64.
    std::string screenshot() {
        const std::string quotes = call("GET", "/screenshot", "");
        return quotes.substr(1, quotes.size() - 2);
    }

    // Runs the body of an async function in the page; what it returns, as JSON.
    std::string evaluate(const std::string& body) {
        const std::string script = "const done = arguments[0]; (async () => {" + body +
                                   "})().then(done, (error) => done(`threw ${error}`));";
        return call("POST", "/execute/async", "{\"script\":" + quoted(script) + ",\"args\":[]}");
    }

    // The web processes of its browser.
    std::vector<int> webProcesses() const {
        const std::vector<int> browsers =
            childrenOf(driver.id(), inCog() ? "cog" : "sonolet-browser");
        return browsers.empty()
                   ? browsers
                   : childrenOf(browsers[0], inCog() ? "WPEWebProcess" : "WebKitWebProcess");
    }
    static bool inCog() {
        const char* const browser =
            std::getenv("SONOLET_BROWSER");  // NOLINT(concurrency-mt-unsafe)
        return browser != nullptr && std::string(browser) == "cog";
    }

private:
    Outcome ask(const std::string& method, const std::string& path, const std::string& body) const {
        return run({"/usr/bin/curl", "--silent", "--show-error", "--fail-with-body", "--noproxy",
                    "*", "--request", method, "--header", "Content-Type: application/json",
                    "--data-binary", body, session + path},
                   {});
    }
    // The value that the driver answers, as JSON.
    std::string call(const std::string& method, const std::string& path, const std::string& body) {
        Outcome answer = ask(method, path, body);
        // Nothing but an answer tells that the driver listens. To ask takes some milliseconds.
        for (int tries = 0; answer.exitCode == connectionRefused && tries < 2000; ++tries) {
            answer = ask(method, path, body);
        }
        const std::string before = "{\"value\":";
        if (answer.exitCode != 0 || answer.output.compare(0, before.size(), before) != 0) {
            throw std::runtime_error(path + ": " + answer.output + answer.errors);
        }
        return unescaped(
            answer.output.substr(before.size(), answer.output.rfind('}') - before.size()));
    }
    // A driver may write what is not ASCII as "\\u00B7".
    static std::string unescaped(std::string json) {
        for (std::size_t at = 0; (at = json.find("\\u", at)) != std::string::npos;) {
            char* const text = g_utf16_to_utf8(
                std::array<gunichar2, 1>{
                    static_cast<gunichar2>(std::stoi(json.substr(at + 2, 4), nullptr, 16))}
                    .data(),
                1, nullptr, nullptr, nullptr);
            json.replace(at, 6, text != nullptr ? text : "?");
            g_free(text);
        }
        return json;
    }
    static std::string quoted(const std::string& text) {
        std::string json = "\"";
        for (const char c : text) {
            json += c == '\n'               ? "\\n"
                    : c == '"' || c == '\\' ? std::string{'\\', c}
                                            : std::string{c};
        }
        return json + '"';
    }

    static constexpr int connectionRefused = 7;  // curl's
    // One that was free a moment ago: the driver cannot choose one itself.
    const std::string port = run({"/usr/bin/python3", "-c",
                                  "import socket; s = socket.create_server(('127.0.0.1', 0));"
                                  "print(s.getsockname()[1], end='')"},
                                 {})
                                 .output;
    // What the page's console writes would fill a pipe that nobody reads.
    const Process driver{{"/bin/sh", "-c", "exec \"$0\" --port=$1 >/dev/null 2>&1",
                          inCog() ? "/usr/bin/WPEWebDriver" : "/usr/bin/WebKitWebDriver", port}};
    std::string session = "http://127.0.0.1:" + port + "/session";
};

#endif
