#include "jspp/_detail/object_cache.h"

namespace jspp::__detail {

void object_cache::set(jsplugin_obj* document, jsplugin_obj* object) {
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

void object_cache::erase(jsplugin_obj* document, jsplugin_obj* object) noexcept {
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

}  // namespace jspp::__detail
