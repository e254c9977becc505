// A C++ library with nothing in it but what every one has.

#include <iostream>
#include <string>

__attribute__((visibility("default"))) std::string benchEmpty();
std::string benchEmpty() {
    return "empty";
}
