#ifndef SONOLET_TESTS_PAGES_MUSIC_SERVER_H
#define SONOLET_TESTS_PAGES_MUSIC_SERVER_H

#include "Command.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>
#include <string>

// A supysonic over a folder of music, with the account "listener" and its password "listener".
class MusicServer final {
public:
    MusicServer(const std::string& folder, const std::string& music) {
        std::filesystem::remove_all(folder);
        std::filesystem::create_directories(folder);
        writeTo(folder + "/supysonic.conf", "[base]\ndatabase_uri = sqlite:///" + folder +
                                                "/supysonic.db\n[webapp]\ncache_dir = " + folder +
                                                "/cache\n");
        // It takes the account's configuration before the folder's; here it has none.
        const std::map<std::string, std::string> environment = {{"HOME", folder}};
        const Outcome made = run({"/bin/sh", "-c",
                                  R"(cd "$0" && supysonic-cli user add listener -p listener &&
                 supysonic-cli folder add music "$1" && supysonic-cli folder scan --foreground)",
                                  folder, music},
                                 environment);
        if (made.exitCode != 0) {
            throw std::runtime_error("supysonic-cli: " + made.output + made.errors);
        }
        start(folder);
    }
    ~MusicServer() {
        kill(-process, SIGKILL);
        waitpid(process, nullptr, 0);
    }
    MusicServer(const MusicServer&) = delete;
    MusicServer& operator=(const MusicServer&) = delete;

    std::string url() const { return "http://127.0.0.1:" + std::to_string(port); }

private:
    // A port that was free a moment ago.
    static int freePort() {
        const int probe = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof(address);
        const bool known = bind(probe, reinterpret_cast<sockaddr*>(&address), size) == 0 &&
                           getsockname(probe, reinterpret_cast<sockaddr*>(&address), &size) == 0;
        close(probe);
        return known ? ntohs(address.sin_port) : 0;
    }

    void start(const std::string& folder) {
        port = freePort();
        int said[2];
        if (pipe(said) != 0) {
            throw std::runtime_error("no pipe");
        }
        const std::string number = std::to_string(port);
        process = fork();
        if (process == 0) {
            setpgid(0, 0);
            dup2(said[1], STDOUT_FILENO);
            dup2(said[1], STDERR_FILENO);
            if (chdir(folder.c_str()) == 0) {
                setenv("HOME", folder.c_str(), 1);  // NOLINT(concurrency-mt-unsafe): one thread
                execlp("supysonic-server", "supysonic-server", "-S", "gunicorn", "--host",
                       "127.0.0.1", "--port", number.c_str(), nullptr);
            }
            _exit(127);
        }
        close(said[1]);
        std::string lines;
        char letter = 0;
        // Its last line before it answers.
        while (lines.find("Booting worker") == std::string::npos) {
            if (read(said[0], &letter, 1) != 1) {
                throw std::runtime_error("supysonic-server does not start: " + lines);
            }
            lines += letter;
        }
        close(said[0]);
    }

    pid_t process = -1;
    int port = 0;
};

#endif
