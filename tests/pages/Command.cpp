#include "Command.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace {

std::string temporaryFile() {
    char path[] = "/tmp/sonolet-test-XXXXXX";
    const int file = mkstemp(path);
    if (file < 0) {
        throw std::runtime_error("cannot make a temporary file");
    }
    close(file);
    return path;
}

void redirect(int descriptor, const std::string& path) {
    const int file = open(path.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
    if (file < 0 || dup2(file, descriptor) < 0) {
        _exit(126);
    }
}

std::string takeFile(const std::string& path) {
    std::string contents = contentsOf(path);
    unlink(path.c_str());
    return contents;
}

}  // namespace

std::string contentsOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void writeTo(const std::string& path, const std::string& contents) {
    std::ofstream file(path, std::ios::binary);
    file << contents;
    if (!file.flush()) {
        throw std::runtime_error("cannot write " + path);
    }
}

Outcome run(const std::vector<std::string>& command,
            const std::map<std::string, std::string>& environment) {
    const std::string output = temporaryFile();
    const std::string errors = temporaryFile();
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& word : command) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);

    const pid_t child = fork();
    if (child < 0) {
        throw std::runtime_error("cannot fork");
    }
    if (child == 0) {
        for (const auto& [name, value] : environment) {
            setenv(name.c_str(), value.c_str(), 1);  // NOLINT(concurrency-mt-unsafe): one thread
        }
        redirect(STDOUT_FILENO, output);
        redirect(STDERR_FILENO, errors);
        execvp(arguments[0], arguments.data());
        _exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);
    Outcome outcome;
    outcome.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    outcome.output = takeFile(output);
    outcome.errors = takeFile(errors);
    return outcome;
}
