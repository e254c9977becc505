#include "jspp/_detail/object_manager.h"

#include "jspp/_detail/private_record.h"
#include "jspp/interface.h"

#include <stdexcept>

namespace jspp::__detail {

object_manager& objects() {
    static object_manager& registry = *new object_manager;
    return registry;
}

namespace {

// Constructed while the plug-in is loaded, as long as nothing else asks earlier.
[[maybe_unused]] const object_manager& made_at_load = objects();

}  // namespace

const object_manager::owner* object_manager::entry_of(jsplugin_obj* obj) const noexcept {
    const auto entry = owners.find(obj);
    return entry == owners.end() ? nullptr : &entry->second;
}

object_manager::owner&
object_manager::add_entry(jsplugin_obj* obj, jsplugin_obj* parent, bool is_object) {
    const owner* const parent_entry = entry_of(parent);
    jsplugin_obj* const document = parent_entry ? parent_entry->document : parent;
    const auto [entry, added] = owners.try_emplace(obj);
    child_map::iterator child;
    try {
        child = children.insert({document, s_child{obj, is_object}});
    } catch (...) {
        if (added) {
            owners.erase(entry);
        }
        throw;
    }
    if (added) {
        entry->second.id = ++last_id;
    } else {
        children.erase(entry->second.child);
    }
    entry->second.document = document;
    entry->second.child = child;
    return entry->second;
}

void object_manager::erase(owner_map::iterator entry) noexcept {
    children.erase(entry->second.child);
    owners.erase(entry);
}

void object_manager::add_object(jsplugin_obj* obj, jsplugin_obj* parent, bool is_object) {
    const orvo::scoped_lock lock(mutex);
    add_entry(obj, parent, is_object).added_by_handle = false;
}

void object_manager::remove_object(jsplugin_obj* obj) {
    const orvo::scoped_lock lock(mutex);
    const auto entry = owners.find(obj);
    if (entry != owners.end()) {
        erase(entry);
    }
}

void object_manager::remove_parent(jsplugin_obj* document) {
    const orvo::scoped_lock lock(mutex);
    const auto [first, last] = children.equal_range(document);
    for (auto child = first; child != last; ++child) {
        jsplugin_obj* const obj = child->second.object;
        if (child->second.is_object && obj->plugin_private) {
            private_record::of(obj).unloaded = true;
        }
        owners.erase(obj);
    }
    children.erase(first, last);
}

object_manager::serial object_manager::add_handle(jsplugin_obj* obj, jsplugin_obj* parent) {
    const orvo::scoped_lock lock(mutex);
    const auto known = owners.find(obj);
    owner& entry = known != owners.end() ? known->second : add_entry(obj, parent, false);
    if (known == owners.end()) {
        entry.added_by_handle = true;
    }
    ++entry.handles;
    return entry.id;
}

void object_manager::remove_handle(jsplugin_obj* obj, serial entry) noexcept {
    const orvo::scoped_lock lock(mutex);
    const auto known = owners.find(obj);
    if (known == owners.end() || known->second.id != entry) {
        return;
    }
    if (--known->second.handles == 0 && known->second.added_by_handle) {
        erase(known);
    }
}

jsplugin_obj* object_manager::find_most_parent(jsplugin_obj* obj) const {
    const orvo::scoped_lock lock(mutex);
    const owner* const entry = entry_of(obj);
    if (!entry) {
        throw std::runtime_error("Can't find the parent of the given object!");
    }
    return entry->document;
}

jsplugin_obj* object_manager::document_of(jsplugin_obj* obj) const noexcept {
    const orvo::scoped_lock lock(mutex);
    const owner* const entry = entry_of(obj);
    return entry ? entry->document : obj;
}

bool object_manager::has_children(jsplugin_obj* obj, jsplugin_obj* document) const noexcept {
    const orvo::scoped_lock lock(mutex);
    const owner* const entry = entry_of(obj);
    return entry && entry->document == document;
}

bool object_manager::does_exist(jsplugin_obj* obj) const noexcept {
    const orvo::scoped_lock lock(mutex);
    return entry_of(obj) != nullptr;
}

bool object_manager::is_object(jsplugin_obj* obj) const noexcept {
    const orvo::scoped_lock lock(mutex);
    const owner* const entry = entry_of(obj);
    return entry && entry->child->second.is_object;
}

object_manager::found object_manager::find(jsplugin_obj* obj, serial entry) const noexcept {
    const orvo::scoped_lock lock(mutex);
    const owner* const known = entry_of(obj);
    if (!known || known->id != entry) {
        return {};
    }
    return {known->document, known->child->second.is_object};
}

std::size_t object_manager::size() const noexcept {
    const orvo::scoped_lock lock(mutex);
    return owners.size();
}

}  // namespace jspp::__detail
