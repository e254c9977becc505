#include "engine/CallbackTable.h"

#include "engine/Document.h"
#include "engine/ObjectRecord.h"
#include "engine/ObjectStore.h"

#include <new>

namespace {

constexpr int done = 0;
constexpr int refused = -1;

// The document that the plug-in calls; null when `ctx` is none of its objects.
Document* called(const jsplugin_obj* ctx) {
    const ObjectRecord* const object = ObjectRecord::find(ctx);
    if (object == nullptr) {
        return nullptr;
    }
    Document& document = object->store.document;
    document.calledByPlugin();  // `object` may be gone after it
    return &document;
}

int create(jsplugin_obj* ctx, const NativeCallbacks& callbacks, jsplugin_obj** result) noexcept {
    Document* const document = called(ctx);
    if (document == nullptr || result == nullptr) {
        return refused;
    }
    try {
        *result = document->objects().create(callbacks);
        return *result != nullptr ? static_cast<int>(JSP_CREATE_OK) : refused;
    } catch (const std::bad_alloc&) {
        return refused;
    }
}

int createFunction(jsplugin_obj* ctx,
                   jsplugin_getter* getter,
                   jsplugin_setter* setter,
                   jsplugin_function* call,
                   jsplugin_destructor* destructor,
                   jsplugin_gc_trace* trace,
                   jsplugin_obj** result) noexcept {
    return call == nullptr ? refused
                           : create(ctx, {getter, setter, call, destructor, trace}, result);
}

int createObject(jsplugin_obj* ctx,
                 jsplugin_getter* getter,
                 jsplugin_setter* setter,
                 jsplugin_destructor* destructor,
                 jsplugin_gc_trace* trace,
                 jsplugin_obj** result) noexcept {
    return create(ctx, {getter, setter, nullptr, destructor, trace}, result);
}

int addPollFunction(jsplugin_obj* ctx, unsigned interval, jsplugin_poll* poll) noexcept {
    Document* const document = called(ctx);
    return document != nullptr && poll != nullptr && document->addPoll(interval, poll) ? done
                                                                                       : refused;
}

int callFunction(jsplugin_obj* ctx,
                 jsplugin_obj* thisObject,
                 jsplugin_obj* function,
                 int argc,
                 jsplugin_value* argv,
                 void*,
                 void*) noexcept {
    Document* const document = called(ctx);
    ObjectRecord* const callee = ObjectRecord::find(function);
    if (document == nullptr || callee == nullptr || (argc > 0 && argv == nullptr)) {
        return refused;
    }
    return document->callFunction(ObjectRecord::find(thisObject), *callee, argc, argv) ? done
                                                                                       : refused;
}

int addUnloadListener(jsplugin_obj* ctx, jsplugin_unload* unload) noexcept {
    Document* const document = called(ctx);
    return document != nullptr && unload != nullptr && document->addUnloadListener(unload)
               ? done
               : refused;
}

void mark(jsplugin_obj* object) noexcept {
    if (ObjectRecord* const record = ObjectRecord::find(object)) {
        record->store.mark(*record);
    }
}

}  // namespace

jsplugin_callbacks* callbackTable() noexcept {
    static jsplugin_callbacks table = [] {
        jsplugin_callbacks callbacks = {};
        callbacks.create_function = createFunction;
        callbacks.create_object = createObject;
        callbacks.add_poll_function = addPollFunction;
        callbacks.call_function = callFunction;
        callbacks.add_unload_listener = addUnloadListener;
        callbacks.gc_mark = mark;
        return callbacks;
    }();
    return &table;
}
