#ifndef SONOLET_JSPP_DETAIL_OBJECT_MANAGER_H
#define SONOLET_JSPP_DETAIL_OBJECT_MANAGER_H

#include "jspp/_detail/pool.h"
#include "jspp/orvo/mutex.h"

#include "jsplugin.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <unordered_map>
#include <utility>

namespace jspp::__detail {

// Thrown where a script object does not belong to this framework, or its document has gone.
inline constexpr char not_ours[] = "Not a jspp interface";

// The registry of every script object that the framework made or holds a handle to, and of the
// document (outermost object) each belongs to.
//
// Threads: any; the registry has a lock of its own, and calls nobody while it holds it. Ownership:
// none, script objects belong to the host. A document is no entry of its own unless it was
// registered as the child of something.
class object_manager final {
public:
    // Tells two objects apart that had the same address one after the other. Never 0.
    using serial = std::uint64_t;

    object_manager() = default;
    object_manager(const object_manager&) = delete;
    object_manager& operator=(const object_manager&) = delete;

    // Registers `obj` under the document of `parent`, or under `parent` itself when that is not
    // registered. `is_object`: a plain object of this framework, otherwise a function. An earlier
    // entry of `obj` is replaced.
    void add_object(jsplugin_obj* obj, jsplugin_obj* parent, bool is_object) ORVO_EXCLUDES(mutex);
    void remove_object(jsplugin_obj* obj) ORVO_EXCLUDES(mutex);

    // Removes every child of the document.
    void remove_parent(jsplugin_obj* document) ORVO_EXCLUDES(mutex);

    // Counts a handle to `obj`. An unknown object is added as a function, and leaves the registry
    // with its last handle; a known one keeps its entry.
    serial add_handle(jsplugin_obj* obj, jsplugin_obj* parent) ORVO_EXCLUDES(mutex);
    void remove_handle(jsplugin_obj* obj, serial id) noexcept ORVO_EXCLUDES(mutex);

    // The document of `obj`. Throws std::runtime_error when `obj` is not registered. The registry's
    // interface has it for callers that know their object; the framework's own never know.
    jsplugin_obj* find_most_parent(jsplugin_obj* obj) const ORVO_EXCLUDES(mutex);

    // The same for an owner that may be a document: what is not registered is its own document.
    jsplugin_obj* document_of(jsplugin_obj* obj) const noexcept ORVO_EXCLUDES(mutex);

    bool has_children(jsplugin_obj* obj, jsplugin_obj* document) const noexcept
        ORVO_EXCLUDES(mutex);
    // Of the registry's interface; the framework asks for the document, too, with find().
    bool does_exist(jsplugin_obj* obj) const noexcept ORVO_EXCLUDES(mutex);

    // True for a plain object of this framework: only then may its plugin_private be read as one.
    // A script object loses that with its document, and lives on. Script thread.
    bool is_object(jsplugin_obj* obj) const noexcept ORVO_EXCLUDES(mutex);

    // Throws std::runtime_error(not_ours) when is_object() says no.
    void require_object(jsplugin_obj* obj) const ORVO_EXCLUDES(mutex);

    // What a handle refers to, looked up at once.
    struct found {
        jsplugin_obj* document = nullptr;  // null: the handle's object is not registered any more
        bool is_object = false;
    };
    found find(jsplugin_obj* obj, serial id) const noexcept ORVO_EXCLUDES(mutex);

    // Grows whenever something changes that a find() of a handle's could have told. Read before a
    // find(), it tells later whether that answer still holds. A word, since not every machine has
    // wider atomics; never 0.
    std::size_t changes() const noexcept { return handle_changes.load(std::memory_order_acquire); }

private:
    friend struct inspection;  // tests

    // Entries of one document hang in a list, newest first.
    struct entry;
    using node = std::pair<jsplugin_obj* const, entry>;  // of the table: object and entry
    struct entry {
        jsplugin_obj* document = nullptr;
        node* newer = nullptr;
        node* older = nullptr;
        serial id = 0;
        int handles = 0;
        bool is_object = false;
        bool added_by_handle = false;
    };

    entry& add_entry(jsplugin_obj* obj, jsplugin_obj* parent, bool is_object) ORVO_REQUIRES(mutex);
    void link(node& added, jsplugin_obj* document) ORVO_REQUIRES(mutex);
    void unlink(const entry& leaving) noexcept ORVO_REQUIRES(mutex);
    void erase(const node& leaving) noexcept ORVO_REQUIRES(mutex);
    const entry* entry_of(jsplugin_obj* obj) const noexcept ORVO_REQUIRES(mutex);
    void forget_last_object(const jsplugin_obj* obj) noexcept;

    mutable orvo::Mutex mutex;
    std::unordered_map<jsplugin_obj*,
                       entry,
                       std::hash<jsplugin_obj*>,
                       std::equal_to<>,
                       pool_allocator<node>>
        entries ORVO_GUARDED_BY(mutex);
    std::unordered_map<jsplugin_obj*, node*> newest_of ORVO_GUARDED_BY(mutex);  // by document
    serial last_id ORVO_GUARDED_BY(mutex) = 0;

    void note_change(const entry& changed) noexcept ORVO_REQUIRES(mutex);
    std::atomic<std::size_t> handle_changes{1};  // written under the mutex

    // The plain object that is_object() found last: script calls one object's members in a row.
    // Plain objects come and go on the script thread alone.
    mutable std::atomic<jsplugin_obj*> last_object{nullptr};
};

// The one registry; made on first use, never freed, since handles are dropped up to process exit.
object_manager& objects();

}  // namespace jspp::__detail

#endif
