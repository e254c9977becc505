#ifndef SONOLET_TESTS_BROWSER_SITE_H
#define SONOLET_TESTS_BROWSER_SITE_H

#include <libsoup/soup.h>

#include <map>
#include <string>
#include <thread>

// A web server with a few pages. 127.0.0.1 and localhost are two origins of it.
class Site final {
public:
    // By path; each is HTML.
    explicit Site(std::map<std::string, std::string> htmlPages);
    ~Site();

    Site(const Site&) = delete;
    Site& operator=(const Site&) = delete;

    std::string address(const std::string& host, const std::string& path) const;

private:
    const std::map<std::string, std::string> pages;
    GMainContext* context;
    GMainLoop* loop;
    SoupServer* server;
    std::thread thread;
    guint port = 0;
};

#endif
