#ifndef SONOLET_SERVICE_STORE_GLIBTEXT_H
#define SONOLET_SERVICE_STORE_GLIBTEXT_H

#include <glib.h>

#include <memory>

namespace sonolet::service {

struct FreeWithGlib {
    void operator()(void* memory) const { g_free(memory); }
};

// Owns a text that GLib has made; nullptr where GLib has answered none.
using GlibText = std::unique_ptr<char, FreeWithGlib>;

}  // namespace sonolet::service

#endif
