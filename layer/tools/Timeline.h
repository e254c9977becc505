#ifndef SONOLET_LAYER_TOOLS_TIMELINE_H
#define SONOLET_LAYER_TOOLS_TIMELINE_H

// timeline.html. "DATA", quotes included, stands where the trace is to be.
extern const char* const timelinePage;

#endif
