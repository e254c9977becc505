#ifndef SONOLET_TESTS_BROWSER_WEBDRIVER_H
#define SONOLET_TESTS_BROWSER_WEBDRIVER_H

#include "Process.h"

#include <jsc/jsc.h>
#include <libsoup/soup.h>

#include <memory>
#include <string>
#include <vector>

// A browser of its own and the WebKitWebDriver that controls it.
//
// Errors: std::runtime_error with what the driver answers.
class WebDriver final {
public:
    // With these options beside --automation.
    explicit WebDriver(const std::vector<std::string>& options);
    ~WebDriver();

    WebDriver(const WebDriver&) = delete;
    WebDriver& operator=(const WebDriver&) = delete;

    void open(const std::string& address);
    void reload();
    void click(const std::string& selector);

    // Runs the body of an async function in the page; what it returns, as JSON.
    std::string evaluate(const std::string& body);

    // The web processes of its browser.
    std::vector<int> webProcesses() const;

private:
    std::string call(const char* method, const std::string& path, const std::string& body);
    JSCValue* request(const char* method, const std::string& path, const std::string& body);
    std::string quoted(const std::string& text);

    SoupSession* http;
    JSCContext* json;
    std::unique_ptr<Process> driver;
    std::string base;
};

#endif
