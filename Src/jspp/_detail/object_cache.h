#ifndef SONOLET_JSPP_DETAIL_OBJECT_CACHE_H
#define SONOLET_JSPP_DETAIL_OBJECT_CACHE_H

#include "jsplugin.h"

#include <map>
#include <memory>

namespace jspp::__detail {

// The script objects of one interface, one for each document. Nearly always there is one document,
// so the first entry stands in the cache itself. Not thread-safe.
class object_cache final {
public:
    // Null when there is none.
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

    // In place of an earlier one.
    void set(jsplugin_obj* document, jsplugin_obj* object) {
        if (others) {
            const auto entry = others->find(document);
            if (entry != others->end()) {
                entry->second = object;
                return;
            }
        }
        if (!first_document || document == first_document) {
            first_document = document;
            first = object;
            return;
        }
        if (!others) {
            others = std::make_unique<std::map<jsplugin_obj*, jsplugin_obj*>>();
        }
        others->emplace(document, object);
    }

    // Removes the document's entry if it is this object.
    void erase(jsplugin_obj* document, jsplugin_obj* object) noexcept {
        if (document == first_document) {
            if (object == first) {
                first_document = first = nullptr;
            }
            return;
        }
        if (others) {
            const auto entry = others->find(document);
            if (entry != others->end() && entry->second == object) {
                others->erase(entry);
            }
        }
    }

private:
    jsplugin_obj* first_document = nullptr;
    jsplugin_obj* first = nullptr;
    std::unique_ptr<std::map<jsplugin_obj*, jsplugin_obj*>> others;
};

}  // namespace jspp::__detail

#endif
