#include "HostProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace {

// A folder of its own for one page, gone with it.
class PageFolder {
public:
    explicit PageFolder(const std::string& script) {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "sonolet-host-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no folder for the page");
        }
        path = pattern;
        std::ofstream(path / "page.js", std::ios::binary) << script;
    }
    ~PageFolder() { std::filesystem::remove_all(path); }
    PageFolder(const PageFolder&) = delete;
    PageFolder& operator=(const PageFolder&) = delete;

    std::filesystem::path path;
};

// `signal` is sent at each output; 0 for none.
HostResult run(const std::vector<std::string>& arguments, const std::string& folder, int signal) {
    std::array<int, 2> out = {};
    std::array<int, 2> err = {};
    if (pipe2(out.data(), O_CLOEXEC) != 0 || pipe2(err.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipes");
    }
    std::vector<std::string> words = {HOST_EXECUTABLE};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    argv.reserve(words.size() + 1);
    for (std::string& word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    setenv("PROBE_REPORT", "1", 1);  // NOLINT(concurrency-mt-unsafe): the tests have one thread
    const pid_t child = fork();
    if (child == 0) {
        dup2(out[1], STDOUT_FILENO);
        dup2(err[1], STDERR_FILENO);
        if (folder.empty() || chdir(folder.c_str()) == 0) {
            execv(HOST_EXECUTABLE, argv.data());
        }
        _exit(127);
    }
    close(out[1]);
    close(err[1]);
    HostResult result;
    std::array<pollfd, 2> ends = {{{out[0], POLLIN, 0}, {err[0], POLLIN, 0}}};
    const std::array<std::string*, 2> texts = {&result.out, &result.err};
    int open = 2;
    while (open > 0 && (poll(ends.data(), ends.size(), -1) > 0 || errno == EINTR)) {
        for (std::size_t i = 0; i < ends.size(); ++i) {
            if (ends[i].fd < 0 || ends[i].revents == 0) {
                continue;
            }
            std::array<char, 4096> buffer = {};
            const ssize_t length = read(ends[i].fd, buffer.data(), buffer.size());
            if (length <= 0) {
                close(ends[i].fd);
                ends[i].fd = -1;
                --open;
                continue;
            }
            texts[i]->append(buffer.data(), static_cast<std::size_t>(length));
            if (signal != 0 && i == 0) {
                kill(child, signal);
            }
        }
    }
    int status = 0;
    waitpid(child, &status, 0);
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

}  // namespace

HostResult runHost(const std::vector<std::string>& arguments) {
    return run(arguments, "", 0);
}

HostResult runPage(const std::string& script, const std::vector<std::string>& options) {
    const PageFolder folder(script);
    std::vector<std::string> arguments = {"--plugin", HOST_PROBE, "--audio", "null", "page.js"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return run(arguments, folder.path.string(), 0);
}

HostResult runPageUntilSignal(const std::string& script, int signal) {
    const PageFolder folder(script);
    return run({"--plugin", HOST_PROBE, "page.js"}, folder.path.string(), signal);
}
