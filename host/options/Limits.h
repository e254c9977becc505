#ifndef SONOLET_HOST_OPTIONS_LIMITS_H
#define SONOLET_HOST_OPTIONS_LIMITS_H

// Throws std::runtime_error with a line for the user when the process may not open the files, or
// reserve the address space, that a page takes. The script engine and GLib know no other way than
// to abort when they go without. REQUIRES: called before either is used.
void checkLimits();

#endif
