#ifndef SONOLET_HOST_BROWSER_ADDRESS_H
#define SONOLET_HOST_BROWSER_ADDRESS_H

#include <string>

// The address of a page as a command line names it: a file, a folder with an index.html, or what
// begins with a scheme. Throws std::invalid_argument that says what is wrong.
std::string addressOf(const std::string& page);

// The player that is installed along; empty for a program of the build folder, which has none.
std::string installedPlayer();

#endif
