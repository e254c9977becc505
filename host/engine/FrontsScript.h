#ifndef SONOLET_HOST_ENGINE_FRONTSSCRIPT_H
#define SONOLET_HOST_ENGINE_FRONTSSCRIPT_H

// The text of fronts.js.
extern const char frontsScript[];

#endif
