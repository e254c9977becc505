#ifndef SONOLET_JSPP_DETAIL_OBJECT_CACHE_H
#define SONOLET_JSPP_DETAIL_OBJECT_CACHE_H

#include "jsplugin.h"

#include <map>
#include <memory>

namespace jspp::__detail {

// The script objects of one interface, one for each document. Nearly always there is one document,
// so the first entry stands in the cache itself. Script thread. Owns nothing and asks nobody:
// whoever finds an object asks the registry whether it is still that document's.
class object_cache final {
public:
    // Null when there is none. The answer may be of an earlier document at the same address.
    jsplugin_obj* find(jsplugin_obj* document) const noexcept {
        if (document == first_document) {
            return first;
        }
        if (!others) {
            return nullptr;
        }
        const auto entry = others->find(document);
        return entry == others->end() ? nullptr : entry->second;
    }

    // In place of an earlier one. Throws when there is no memory, which the first document needs
    // none of.
    void set(jsplugin_obj* document, jsplugin_obj* object);

    // Removes the document's entry if it is this object: a later one may have come in its place.
    void erase(jsplugin_obj* document, jsplugin_obj* object) noexcept;

private:
    // Both null, or neither.
    jsplugin_obj* first_document = nullptr;
    jsplugin_obj* first = nullptr;
    std::unique_ptr<std::map<jsplugin_obj*, jsplugin_obj*>> others;
};

}  // namespace jspp::__detail

#endif
