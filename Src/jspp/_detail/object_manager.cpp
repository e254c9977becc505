#include "jspp/_detail/object_manager.h"

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

const object_manager::entry* object_manager::entry_of(jsplugin_obj* obj) const noexcept {
    const auto known = entries.find(obj);
    return known == entries.end() ? nullptr : &known->second;
}

void object_manager::link(node& added, jsplugin_obj* document) {
    node*& newest = newest_of[document];
    added.second.document = document;
    added.second.newer = nullptr;
    added.second.older = newest;
    if (newest) {
        newest->second.newer = &added;
    }
    newest = &added;
}

void object_manager::unlink(const entry& leaving) noexcept {
    if (leaving.older) {
        leaving.older->second.newer = leaving.newer;
    }
    if (leaving.newer) {
        leaving.newer->second.older = leaving.older;
    } else if (leaving.older) {
        newest_of.find(leaving.document)->second = leaving.older;
    } else {
        newest_of.erase(leaving.document);
    }
}

object_manager::entry&
object_manager::add_entry(jsplugin_obj* obj, jsplugin_obj* parent, bool is_object) {
    const entry* const parent_entry = entry_of(parent);
    jsplugin_obj* const document = parent_entry ? parent_entry->document : parent;
    const auto [place, added] = entries.try_emplace(obj);
    entry& kept = place->second;
    if (added) {
        try {
            link(*place, document);
        } catch (...) {
            entries.erase(place);
            throw;
        }
        kept.id = ++last_id;
    } else if (kept.document != document) {
        newest_of.try_emplace(document);  // before anything changes: it may throw
        unlink(kept);
        link(*place, document);
        note_change(kept);
    }
    if (kept.is_object != is_object) {
        note_change(kept);
    }
    kept.is_object = is_object;
    if (!is_object) {
        forget_last_object(obj);
    }
    return kept;
}

void object_manager::erase(const node& leaving) noexcept {
    jsplugin_obj* const obj = leaving.first;
    forget_last_object(obj);
    note_change(leaving.second);
    unlink(leaving.second);
    entries.erase(obj);
}

void object_manager::note_change(const entry& changed) noexcept {
    if (changed.handles > 0) {
        const std::size_t next = handle_changes.load(std::memory_order_relaxed) + 1;
        handle_changes.store(next == 0 ? 1 : next, std::memory_order_release);
    }
}

void object_manager::forget_last_object(const jsplugin_obj* obj) noexcept {
    if (last_object.load(std::memory_order_relaxed) == obj) {
        last_object.store(nullptr, std::memory_order_relaxed);
    }
}

void object_manager::add_object(jsplugin_obj* obj, jsplugin_obj* parent, bool is_object) {
    const orvo::scoped_lock lock(mutex);
    add_entry(obj, parent, is_object).added_by_handle = false;
}

void object_manager::remove_object(jsplugin_obj* obj) {
    const orvo::scoped_lock lock(mutex);
    const auto known = entries.find(obj);
    if (known != entries.end()) {
        erase(*known);
    }
}

void object_manager::remove_parent(jsplugin_obj* document) {
    const orvo::scoped_lock lock(mutex);
    const auto newest = newest_of.find(document);
    if (newest == newest_of.end()) {
        return;
    }
    const node* child = newest->second;
    newest_of.erase(newest);
    while (child) {
        jsplugin_obj* const obj = child->first;
        note_change(child->second);
        child = child->second.older;
        forget_last_object(obj);
        entries.erase(obj);
    }
}

object_manager::serial object_manager::add_handle(jsplugin_obj* obj, jsplugin_obj* parent) {
    const orvo::scoped_lock lock(mutex);
    const auto known = entries.find(obj);
    entry& counted = known != entries.end() ? known->second : add_entry(obj, parent, false);
    if (counted.handles == 0 && known == entries.end()) {
        counted.added_by_handle = true;
    }
    ++counted.handles;
    return counted.id;
}

void object_manager::remove_handle(jsplugin_obj* obj, serial id) noexcept {
    const orvo::scoped_lock lock(mutex);
    const auto known = entries.find(obj);
    if (known == entries.end() || known->second.id != id) {
        return;
    }
    if (--known->second.handles == 0 && known->second.added_by_handle) {
        erase(*known);
    }
}

jsplugin_obj* object_manager::find_most_parent(jsplugin_obj* obj) const {
    const orvo::scoped_lock lock(mutex);
    const entry* const known = entry_of(obj);
    if (!known) {
        throw std::runtime_error("Can't find the parent of the given object!");
    }
    return known->document;
}

jsplugin_obj* object_manager::document_of(jsplugin_obj* obj) const noexcept {
    const orvo::scoped_lock lock(mutex);
    const entry* const known = entry_of(obj);
    return known ? known->document : obj;
}

bool object_manager::has_children(jsplugin_obj* obj, jsplugin_obj* document) const noexcept {
    const orvo::scoped_lock lock(mutex);
    const entry* const known = entry_of(obj);
    return known && known->document == document;
}

bool object_manager::does_exist(jsplugin_obj* obj) const noexcept {
    const orvo::scoped_lock lock(mutex);
    return entry_of(obj) != nullptr;
}

bool object_manager::is_object(jsplugin_obj* obj) const noexcept {
    if (obj && obj == last_object.load(std::memory_order_relaxed)) {
        return true;
    }
    const orvo::scoped_lock lock(mutex);
    const entry* const known = entry_of(obj);
    if (!known || !known->is_object) {
        return false;
    }
    last_object.store(obj, std::memory_order_relaxed);
    return true;
}

void object_manager::require_object(jsplugin_obj* obj) const {
    if (!is_object(obj)) {
        throw std::runtime_error(not_ours);
    }
}

object_manager::found object_manager::find(jsplugin_obj* obj, serial id) const noexcept {
    const orvo::scoped_lock lock(mutex);
    const entry* const known = entry_of(obj);
    if (!known || known->id != id) {
        return {};
    }
    return {known->document, known->is_object};
}

}  // namespace jspp::__detail
