#ifndef SONOLET_TESTS_HOST_HOSTPROCESS_H
#define SONOLET_TESTS_HOST_HOSTPROCESS_H

#include "Command.h"

#include <string>
#include <vector>

// Runs the host's executable with these arguments to its end.
Outcome runHost(std::vector<std::string> arguments);

// Runs a page script with the probe as plug-in; messages name the page "page.js".
Outcome runPage(const std::string& script, const std::vector<std::string>& options = {});

// The same, and sends `signal` when the page first writes, and again if it writes after that.
Outcome runPageUntilSignal(const std::string& script, int signal);

#endif
