#ifndef SONOLET_TESTS_PAGES_COMMAND_H
#define SONOLET_TESTS_PAGES_COMMAND_H

#include "../fakes/Test.h"

#include <glib.h>

// What a command left behind.
struct Outcome {
    int exitCode = -1;  // 128 and more: ended by that signal
    std::string output;
    std::string errors;
};

// Runs a program to its end, with these variables added to the environment.
inline Outcome run(const std::vector<std::string>& command,
                   const std::map<std::string, std::string>& variables) {
    std::vector<char*> words;
    words.reserve(command.size() + 1);
    for (const std::string& word : command) {
        words.push_back(const_cast<char*>(word.c_str()));
    }
    words.push_back(nullptr);
    g_auto(GStrv) environment = g_get_environ();
    for (const auto& [name, value] : variables) {
        environment = g_environ_setenv(environment, name.c_str(), value.c_str(), TRUE);
    }
    g_autofree char* output = nullptr;
    g_autofree char* errors = nullptr;
    g_autoptr(GError) error = nullptr;
    int status = 0;
    if (g_spawn_sync(nullptr, words.data(), environment, G_SPAWN_SEARCH_PATH, nullptr, nullptr,
                     &output, &errors, &status, &error) == FALSE) {
        throw std::runtime_error(error->message);
    }
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), output, errors};
}

inline std::string contentsOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("cannot read " + path);
    }
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void writeTo(const std::string& path, const std::string& contents) {
    std::ofstream file(path, std::ios::binary);
    if (!(file << contents) || !file.flush()) {
        throw std::runtime_error("cannot write " + path);
    }
}

#endif
