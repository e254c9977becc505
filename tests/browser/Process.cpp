#include "Process.h"

#include "Command.h"

#include <filesystem>
#include <sstream>
#include <stdexcept>

Process::Process(const std::vector<std::string>& command) {
    std::vector<const char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& word : command) {
        arguments.push_back(word.c_str());
    }
    arguments.push_back(nullptr);
    GError* error = nullptr;
    process = g_subprocess_newv(arguments.data(),
                                static_cast<GSubprocessFlags>(G_SUBPROCESS_FLAGS_STDOUT_PIPE |
                                                              G_SUBPROCESS_FLAGS_STDERR_MERGE),
                                &error);
    if (process == nullptr) {
        throw std::runtime_error(error->message);
    }
    output = g_data_input_stream_new(g_subprocess_get_stdout_pipe(process));
}

Process::~Process() {
    g_subprocess_force_exit(process);
    g_subprocess_wait(process, nullptr, nullptr);
    g_object_unref(output);
    g_object_unref(process);
}

std::string Process::awaitLine(const std::string& part) {
    std::string all;
    while (char* const line = g_data_input_stream_read_line(output, nullptr, nullptr, nullptr)) {
        std::string text = line;
        g_free(line);
        if (text.find(part) != std::string::npos) {
            return text;
        }
        all += text + '\n';
    }
    throw std::runtime_error("no line with \"" + part + "\" but:\n" + all);
}

int Process::wait() {
    g_subprocess_wait(process, nullptr, nullptr);
    return g_subprocess_get_if_exited(process) != 0 ? g_subprocess_get_exit_status(process)
                                                    : 128 + g_subprocess_get_term_sig(process);
}

int Process::id() const {
    return std::stoi(g_subprocess_get_identifier(process));
}

std::vector<int> childrenOf(int parent, const std::string& name) {
    std::vector<int> found;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        if (g_ascii_isdigit(entry.path().filename().c_str()[0]) == 0) {
            continue;
        }
        // "123 (name) S 122 ..."
        std::istringstream stat(contentsOf((entry.path() / "stat").string()));
        int id = 0;
        std::string title;
        std::string state;
        int itsParent = 0;
        if (stat >> id >> title >> state >> itsParent && itsParent == parent && state != "Z" &&
            title.find(name.substr(0, 15)) != std::string::npos) {
            found.push_back(id);
        }
    }
    return found;
}
