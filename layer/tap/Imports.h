#ifndef SONOLET_LAYER_TAP_IMPORTS_H
#define SONOLET_LAYER_TAP_IMPORTS_H

#include <cstddef>
#include <functional>
#include <string>

// The functions that a loaded library gets from others, as the dynamic loader has filled them in.
//
// Replacing them is the one way to stand between a library and those it calls that depends neither
// on the order in which the process loaded things nor on how the browser was linked: symbols of the
// program itself, where the media backend is, win over every library that is loaded later. What the
// library did while it was loaded, in its static initialisers, has passed already.
//
// The tables read are the dynamic section and relocations of the System V ABI
// (refspecs.linuxfoundation.org/elf/gabi4+), with the numbers of x86, x86-64, ARM and AArch64; for
// other machines this does not compile. What the loader has made read-only (RELRO) is writable only
// while replace() runs.
//
// Threads: none may be calling into the library. Ownership: the library is the caller's and stays
// loaded. Errors: std::runtime_error.
class Imports final {
public:
    // What dlopen gave.
    explicit Imports(void* loaded);

    // Asks for each function by its symbol what is to be called instead; null leaves it as it is.
    // Answers how many were replaced. `choose` gets the function that was there, too.
    using Choose = std::function<void*(const std::string& symbol, void* function)>;
    // A function that is imported in several places is asked about for each.
    std::size_t replace(const Choose& choose);

private:
    void* const library;
};

#endif
