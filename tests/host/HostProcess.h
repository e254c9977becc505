#ifndef SONOLET_TESTS_HOST_HOSTPROCESS_H
#define SONOLET_TESTS_HOST_HOSTPROCESS_H

#include <string>
#include <vector>

// What a run of the host's executable left.
struct HostResult {
    int exitCode = -1;  // -1 when a signal ended it
    std::string out;
    std::string err;
};

// Runs the executable with these arguments to its end.
HostResult runHost(const std::vector<std::string>& arguments);

// Runs a page script with the probe as plug-in; messages name the page "page.js".
HostResult runPage(const std::string& script, const std::vector<std::string>& options = {});

// The same, and sends `signal` when the page first writes, and again if it writes after that.
HostResult runPageUntilSignal(const std::string& script, int signal);

#endif
