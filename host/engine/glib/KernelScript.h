#ifndef SONOLET_HOST_ENGINE_GLIB_KERNELSCRIPT_H
#define SONOLET_HOST_ENGINE_GLIB_KERNELSCRIPT_H

// The text of kernel.js.
extern const char kernelScript[];

#endif
