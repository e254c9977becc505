#ifndef SONOLET_TESTS_BROWSER_PROCESS_H
#define SONOLET_TESTS_BROWSER_PROCESS_H

#include <gio/gio.h>

#include <string>
#include <vector>

// A program that runs beside the test; killed at the end if it still runs.
class Process final {
public:
    explicit Process(const std::vector<std::string>& command);
    ~Process();

    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    // The next line of its output, standard error included, that contains `part`; throws when the
    // output ends before.
    std::string awaitLine(const std::string& part);

    // Awaits its end; the exit code.
    int wait();

    int id() const;
    void signal(int number) const { g_subprocess_send_signal(process, number); }

private:
    GSubprocess* process;
    GDataInputStream* output;
};

// The processes of this name among the children of `parent`.
std::vector<int> childrenOf(int parent, const std::string& name);

#endif
