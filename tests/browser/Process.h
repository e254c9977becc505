#ifndef SONOLET_TESTS_BROWSER_PROCESS_H
#define SONOLET_TESTS_BROWSER_PROCESS_H

#include "Command.h"

#include <gio/gio.h>

// A program that runs beside the test; killed at the end if it still runs.
class Process final {
public:
    explicit Process(const std::vector<std::string>& command) {
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
    ~Process() {
        g_subprocess_force_exit(process);
        g_subprocess_wait(process, nullptr, nullptr);
        g_object_unref(output);
        g_object_unref(process);
    }

    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    // The next line of its output, standard error included, that contains `part`; throws when the
    // output ends before.
    std::string awaitLine(const std::string& part) {
        std::string all;
        while (char* const line =
                   g_data_input_stream_read_line(output, nullptr, nullptr, nullptr)) {
            std::string text = line;
            g_free(line);
            if (text.find(part) != std::string::npos) {
                return text;
            }
            all += text + '\n';
        }
        throw std::runtime_error("no line with \"" + part + "\" but:\n" + all);
    }

    // Awaits its end; the exit code.
    int wait() {
        g_subprocess_wait(process, nullptr, nullptr);
        return g_subprocess_get_if_exited(process) != 0 ? g_subprocess_get_exit_status(process)
                                                        : 128 + g_subprocess_get_term_sig(process);
    }

    int id() const { return std::stoi(g_subprocess_get_identifier(process)); }
    void signal(int number) const { g_subprocess_send_signal(process, number); }

private:
    GSubprocess* process;
    GDataInputStream* output;
};

// The processes of this name among the children of `parent`.
inline std::vector<int> childrenOf(int parent, const std::string& name) {
    std::istringstream found(
        run({"/usr/bin/pgrep", "--parent", std::to_string(parent), name.substr(0, 15)}, {}).output);
    return {std::istream_iterator<int>(found), {}};
}

#endif
