#ifndef SONOLET_JSPP_DETAIL_PRIVATE_RECORD_H
#define SONOLET_JSPP_DETAIL_PRIVATE_RECORD_H

#include "jspp/orvo/shared_ptr.h"

#include "jsplugin.h"

#include <string>

namespace jspp {

class interface;

namespace __detail {

// What hangs in the plugin_private of a script object made for an interface. Freed by the object's
// destructor.
struct private_record {
    orvo::shared_ptr<interface> self;  // the script object keeps its native one alive
    std::string scratch;               // the last string result
    jsplugin_obj* document;            // key of the interface's cache; may have gone, only compared
    bool unloaded = false;             // the document has gone, and no member may be used any more

    // REQUIRES: the registry knows `obj` as a plain object, or the host has just called one of our
    // callbacks for it.
    static private_record& of(jsplugin_obj* obj) noexcept {
        return *static_cast<private_record*>(obj->plugin_private);
    }
};

}  // namespace __detail
}  // namespace jspp

#endif
