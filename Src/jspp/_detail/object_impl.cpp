#include "Logger.h"
#include "jspp/_detail/callback_manager.h"
#include "jspp/_detail/globals.h"
#include "jspp/_detail/handles.h"
#include "jspp/call_parameters.h"
#include "jspp/object.h"

#include <atomic>
#include <cstddef>
#include <unordered_map>
#include <vector>

namespace jspp {

namespace {

const Logger logger SONOLET_AT_LOAD("Src/jspp/_detail/object_impl", 16);

}  // namespace

// What the copies of a handle share: one count of the registry's, one place in the list of handles.
struct object::_s_data {
    _s_data(jsplugin_obj* script_object, jsplugin_obj* parent_object);
    ~_s_data();
    _s_data(const _s_data&) = delete;
    _s_data& operator=(const _s_data&) = delete;

    jsplugin_obj* const obj;
    const __detail::object_manager::serial entry;
    jsplugin_obj* const document;  // may have gone; only compared

    // What the registry's changes() were when it last told that this is a function of `document`;
    // 0: it did not. While there are no more, it need not be asked.
    std::atomic<std::size_t> seen{0};
};

namespace __detail {
namespace {

using record = object::_s_data;

// Every handle's record, weakly and by document, for the collection's trace. Never freed: handles
// go up to process exit. No lock is held while the host is called or a record is dropped.
class handle_list final {
public:
    void add(const orvo::shared_ptr<record>& data) {
        const orvo::scoped_lock lock(mutex);
        list& handles = documents[data->document];
        // A trace comes when memory is short, so what it needs is taken now.
        if (spare.capacity() <= handles.size()) {
            spare.reserve(2 * handles.size() + 8);
        }
        handles.emplace(data.get(), data);
    }

    void remove(const record* data) noexcept {
        const orvo::scoped_lock lock(mutex);
        const auto handles = documents.find(data->document);
        if (handles == documents.end()) {
            return;
        }
        handles->second.erase(data);
        if (handles->second.empty()) {
            documents.erase(handles);
        }
    }

    void remove_all(jsplugin_obj* document) noexcept {
        const orvo::scoped_lock lock(mutex);
        documents.erase(document);
    }

    // Calls `visit` with every living record of the document. Never nested; script thread.
    template <class Visit>
    void for_each(jsplugin_obj* document, const Visit& visit) noexcept {
        std::vector<orvo::shared_ptr<record>> alive;
        {
            const orvo::scoped_lock lock(mutex);
            const auto known = documents.find(document);
            if (known == documents.end()) {
                return;
            }
            list& handles = known->second;
            alive.swap(spare);
            for (auto handle = handles.begin(); handle != handles.end();) {
                if (orvo::shared_ptr<record> data = handle->second.lock()) {
                    alive.push_back(std::move(data));
                    ++handle;
                } else {
                    handle = handles.erase(handle);
                }
            }
        }
        for (const auto& data : alive) {
            visit(*data);
        }
        alive.clear();
        const orvo::scoped_lock lock(mutex);
        if (alive.capacity() > spare.capacity()) {
            spare.swap(alive);
        }
    }

    static handle_list& instance() {
        static handle_list& list = *new handle_list;
        return list;
    }

private:
    using list = std::unordered_map<const record*, orvo::weak_ptr<record>>;

    orvo::Mutex mutex;
    std::unordered_map<jsplugin_obj*, list> documents ORVO_GUARDED_BY(mutex);
    std::vector<orvo::shared_ptr<record>> spare ORVO_GUARDED_BY(mutex);  // empty, with room for all
};

}  // namespace

void mark_handles(jsplugin_obj* document) noexcept {
    handle_list::instance().for_each(document, [document](const record& data) {
        if (objects().find(data.obj, data.entry).document == document) {
            g_orvo_callbacks->gc_mark(data.obj);
        }
    });
}

void forget_handles(jsplugin_obj* document) noexcept {
    handle_list::instance().remove_all(document);
}

}  // namespace __detail

object::_s_data::_s_data(jsplugin_obj* script_object, jsplugin_obj* parent_object)
    : obj(script_object), entry(__detail::objects().add_handle(script_object, parent_object)),
      document(__detail::objects().document_of(script_object)) {}

object::_s_data::~_s_data() {
    __detail::handle_list::instance().remove(this);
    __detail::objects().remove_handle(obj, entry);
}

object::object() noexcept = default;

object::object(jsplugin_obj* obj, jsplugin_obj* parent) : data(new _s_data(obj, parent)) {
    __detail::handle_list::instance().add(data);
}

object::object(const object&) = default;
object::object(object&&) noexcept = default;
object& object::operator=(const object&) = default;
object& object::operator=(object&&) noexcept = default;
object::~object() = default;

__detail::object_manager::found object::find() const noexcept {
    if (!data) {
        return {};
    }
    const std::size_t changes = __detail::objects().changes();
    if (data->seen.load(std::memory_order_relaxed) == changes) {
        return {data->document, false};
    }
    const __detail::object_manager::found found = __detail::objects().find(data->obj, data->entry);
    if (found.document == data->document && !found.is_object) {
        data->seen.store(changes, std::memory_order_relaxed);
    }
    return found;
}

jsplugin_obj* object::get() const noexcept {
    return find().document ? data->obj : nullptr;
}

jsplugin_obj* object::document() const noexcept {
    return find().document;
}

bool operator==(const object& a, const object& b) noexcept {
    if (!a.data || !b.data) {
        return !a.data && !b.data;
    }
    // The entry tells a script object from a later one at the same address.
    return a.data->obj == b.data->obj && a.data->entry == b.data->entry;
}

void object::call_in(jsplugin_obj* context,
                     const call_parameters& parameters,
                     std::vector<jsplugin_value>& values) const {
    values.clear();
    parameters.generate_values(context, values);
    // To make script objects the host was called, and the document may have gone in there.
    if (!values.empty() && document() != context) {
        return;
    }
    __detail::g_orvo_callbacks->call_function(
        context, nullptr, data->obj, static_cast<int>(values.size()),
        values.empty() ? nullptr : values.data(), nullptr, nullptr);
}

void object::call(const call_parameters& parameters) const {
    jsplugin_obj* const context = document();
    if (!context) {
        logger.error("jspp::object::call", "Illegal Spotify object called, returning.");
        return;
    }
    std::vector<jsplugin_value> values;
    call_in(context, parameters, values);
}

bool object::call_delayed(const call_parameters& parameters) const {
    bool queued = false;
    {
        __detail::callback_manager& queue = __detail::callbacks();
        const orvo::scoped_lock lock(queue.mutex);
        queued = queue.add(*this, parameters);
    }
    if (!queued) {
        logger.error("jspp::object::call_delayed", "Illegal Spotify object called, returning.");
    }
    return queued;
}

void object::call_queued(const call_parameters& parameters,
                         std::vector<jsplugin_value>& values) const {
    const __detail::object_manager::found found = find();
    if (found.document && !found.is_object) {
        call_in(found.document, parameters, values);
    }
}

}  // namespace jspp
