#ifndef SONOLET_TESTS_SERVICE_SERVER_BAD_SERVER_H
#define SONOLET_TESTS_SERVICE_SERVER_BAD_SERVER_H

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace sonolet::test {

// A server that misbehaves as it is told: one thread that answers each connection with the bytes
// that a test has for a method of the interface.
class BadServer final {
public:
    // The whole answer to a request's head, status line and all. What is empty is never answered:
    // the connection stays open until the other side closes it.
    using Answer = std::function<std::string(const std::string& head)>;

    BadServer() : listener(socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof(address);
        if (bind(listener, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
            listen(listener, 16) != 0 || pipe(waking) != 0 ||
            getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
            throw std::runtime_error("no server");
        }
        port = ntohs(address.sin_port);
        thread = std::thread([this] { serve(); });
    }
    ~BadServer() {
        close(waking[1]);  // which the thread sees at the other end
        thread.join();
        close(listener);
        close(waking[0]);
    }
    BadServer(const BadServer&) = delete;
    BadServer& operator=(const BadServer&) = delete;

    std::string url() const { return "http://127.0.0.1:" + std::to_string(port) + "/music/"; }

    void answer(const std::string& method, Answer with) {
        const std::lock_guard<std::mutex> lock(mutex);
        answers[method] = std::move(with);
    }
    void answerAll(const std::string& bytes) {
        const std::lock_guard<std::mutex> lock(mutex);
        always = bytes;
        isAlways = true;
    }
    void behave() {
        const std::lock_guard<std::mutex> lock(mutex);
        isAlways = false;
    }
    // What was never answered is answered now.
    void answerLate(const std::string& bytes) {
        const std::lock_guard<std::mutex> lock(mutex);
        for (const int connection : unanswered) {
            static_cast<void>(send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL));
        }
    }
    std::size_t count(const std::string& method) {
        const std::lock_guard<std::mutex> lock(mutex);
        return asked[method];
    }

    // Of the head of a request, as it stands there; empty if it is not.
    static std::string parameter(const std::string& head, const std::string& name) {
        const std::size_t from = head.find('&' + name + '=');
        if (from == std::string::npos) {
            return {};
        }
        const std::size_t begin = from + name.size() + 2;
        return head.substr(begin, head.find_first_of("& ", begin) - begin);
    }

    static std::string reply(const std::string& body,
                             const std::string& status = "200 OK",
                             const std::string& type = "application/json",
                             const std::string& more = "") {
        return "HTTP/1.1 " + status + "\r\nContent-Type: " + type +
               "\r\nConnection: close\r\nContent-Length: " + std::to_string(body.size()) + "\r\n" +
               more + "\r\n" + body;
    }
    static std::string envelope(const std::string& inside) {
        return reply(R"({"subsonic-response":{"status":"ok","version":"1.16.1")" +
                     (inside.empty() ? "" : "," + inside) + "}}");
    }
    static std::string failure(int code) {
        return reply(R"({"subsonic-response":{"status":"failed","error":{"code":)" +
                     std::to_string(code) + R"(,"message":"no"}}})");
    }

private:
    void serve() {
        std::vector<pollfd> ready = {{listener, POLLIN, 0}, {waking[0], POLLIN, 0}};
        std::map<int, std::string> heads;  // as far as they have come, by connection
        for (;;) {
            poll(ready.data(), ready.size(), -1);
            if (ready[1].revents != 0) {
                break;
            }
            if (ready[0].revents != 0) {
                heads[accept(listener, nullptr, nullptr)];
            }
            for (std::size_t i = 2; i < ready.size(); ++i) {
                if (ready[i].revents != 0 && !isWaiting(ready[i].fd, heads[ready[i].fd])) {
                    close(ready[i].fd);
                    heads.erase(ready[i].fd);
                    const std::lock_guard<std::mutex> lock(mutex);
                    unanswered.erase(ready[i].fd);
                }
            }
            ready.resize(2);
            for (const auto& [connection, head] : heads) {
                ready.push_back({connection, POLLIN, 0});
            }
        }
        for (const auto& [connection, head] : heads) {
            close(connection);
        }
    }
    // Reads on, and answers what is whole. False when nothing more is to be done with it: it is
    // answered, or the other side has closed it, which may be before it has asked anything.
    bool isWaiting(int connection, std::string& head) {
        char bytes[4096];
        const ssize_t count = recv(connection, bytes, sizeof(bytes), 0);
        if (count <= 0) {
            return false;
        }
        head.append(bytes, static_cast<std::size_t>(count));
        if (head.find("\r\n\r\n") == std::string::npos) {
            return true;
        }
        const std::string answer = answerTo(head);
        if (answer.empty()) {
            const std::lock_guard<std::mutex> lock(mutex);
            unanswered.insert(connection);
        }
        static_cast<void>(send(connection, answer.data(), answer.size(), MSG_NOSIGNAL));
        return answer.empty();
    }
    std::string answerTo(const std::string& head) {
        const std::size_t from = head.find("/rest/") + 6;
        const std::string method = head.substr(from, head.find(".view") - from);
        const std::lock_guard<std::mutex> lock(mutex);
        ++asked[method];
        if (isAlways) {
            return always;
        }
        const auto known = answers.find(method);
        return known == answers.end() ? failure(0) : known->second(head);
    }

    const int listener;
    int waking[2] = {};
    int port = 0;

    std::mutex mutex;
    // State below is protected by mutex.
    std::map<std::string, Answer> answers;
    std::map<std::string, std::size_t> asked;
    std::set<int> unanswered;  // connections
    std::string always;
    bool isAlways = false;

    std::thread thread;
};

}  // namespace sonolet::test

#endif
