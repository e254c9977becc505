#ifndef SONOLET_LAYER_TOOLS_TIMELINE_H
#define SONOLET_LAYER_TOOLS_TIMELINE_H

// timeline.html. "DATA", quotes included, stands where the trace is to be.
//
// CMake puts the file into the program when it is built. UTF-8, ends with 0.
extern const char* const timelinePage;

#endif
