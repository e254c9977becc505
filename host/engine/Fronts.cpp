#include "engine/Fronts.h"

#include "engine/ObjectAccess.h"
#include "engine/Text.h"

#include <array>
#include <cstdint>
#include <unordered_map>

// Exported by the engine but in none of its public headers; null with an engine that has it not.
// NOLINTNEXTLINE(readability-identifier-naming): the engine's name
extern "C" __attribute__((weak)) void JSReportExtraMemoryCost(JSContextRef context, size_t size);

namespace {

// What hangs on a script object outside of the engine's heap, about: without knowing of it the
// engine would let many thousand dead objects lie before it collects.
constexpr size_t nativeMemoryCost = 1024;

// Records by the address of their front. Another object may come to lie there, so an entry counts
// only while the front lives.
class Table final {
public:
    void add(ObjectRecord& record) {
        records.insert_or_assign(record.object, &record);
        lately(record.object) = &record;
    }
    void remove(const ObjectRecord& record) noexcept {
        if (ObjectRecord*& known = lately(record.object); known == &record) {
            known = nullptr;
        }
        const auto found = records.find(record.object);
        if (found != records.end() && found->second == &record) {
            records.erase(found);
        }
    }
    ObjectRecord* find(JSObjectRef object) noexcept {
        ObjectRecord*& known = lately(object);
        if (known == nullptr || known->object != object) {
            const auto found = records.find(object);
            if (found == records.end()) {
                return nullptr;
            }
            known = found->second;
        }
        return known->living() == object ? known : nullptr;
    }

private:
    ObjectRecord*& lately(JSObjectRef object) noexcept {
        return cache[reinterpret_cast<std::uintptr_t>(object) / 16 % cache.size()];
    }

    std::unordered_map<JSObjectRef, ObjectRecord*> records;
    std::array<ObjectRecord*, 64> cache = {};  // by a part of the address; all are in `records`
};

// Never freed: documents go up to process exit.
Table& table() {
    static Table& fronts = *new Table;
    return fronts;
}

FrontLink* linkOf(JSObjectRef catcher) noexcept {
    return static_cast<FrontLink*>(JSObjectGetPrivate(catcher));
}

JSValueRef
catchRead(JSContextRef, JSObjectRef catcher, JSStringRef name, JSValueRef* exception) noexcept {
    const FrontLink* const link = linkOf(catcher);
    ObjectRecord* const record = link != nullptr ? link->record : nullptr;
    if (record == nullptr || record->callbacks.getter == nullptr ||
        Fallback::isPrototypeName(name)) {
        return nullptr;
    }
    return record->access.read(*record, name, exception);
}

JSValueRef callFunction(JSContextRef context,
                        JSObjectRef function,
                        JSObjectRef thisObject,
                        size_t argc,
                        const JSValueRef argv[],
                        JSValueRef* exception) noexcept {
    ObjectRecord* const record = table().find(function);
    if (record == nullptr) {
        return JSValueMakeUndefined(context);
    }
    return record->access.call(*record, thisObject, argc, argv, exception);
}

void finalize(JSObjectRef catcher) noexcept {
    FinalizerQueue::add(linkOf(catcher));
}

// The process's, and never released.
JSClassRef catcherClass() {
    static const JSClassRef made = [] {
        JSClassDefinition catcher = kJSClassDefinitionEmpty;
        catcher.className = "NativeObject";
        catcher.attributes = kJSClassAttributeNoAutomaticPrototype;
        catcher.finalize = finalize;
        catcher.getProperty = catchRead;
        return JSClassCreate(&catcher);
    }();
    return made;
}

}  // namespace

Fronts::Fronts(JSGlobalContextRef scriptContext, const Intrinsics& engineFunctions)
    : context(scriptContext),
      objectFallback(context, engineFunctions, engineFunctions.objectPrototype()),
      functionFallback(context, engineFunctions, engineFunctions.functionPrototype()) {}

JSObjectRef Fronts::make(ObjectRecord& record, const std::shared_ptr<FinalizerQueue>& queue) const {
    const NativeCallbacks& callbacks = record.callbacks;
    const bool isFunction = callbacks.call != nullptr;
    // Until it is returned the front lives by being on the stack.
    const JSObjectRef front =
        isFunction ? JSObjectMakeFunctionWithCallback(
                         context, text::EngineString(record.name).get(), callFunction)
                   : JSObjectMake(context, nullptr, nullptr);
    if (JSReportExtraMemoryCost != nullptr) {
        JSReportExtraMemoryCost(context, nativeMemoryCost);
    }
    if (!isFunction || callbacks.getter != nullptr || callbacks.setter != nullptr) {
        auto* const link = new FrontLink{&record, queue};
        record.links.push_back(link);
        const JSObjectRef catcher = JSObjectMake(context, catcherClass(), link);
        JSObjectSetPrototype(context, catcher,
                             isFunction ? functionFallback.object() : objectFallback.object());
        JSObjectSetPrototype(context, front, catcher);
    }
    record.object = front;
    record.weak.set(context, front);
    table().add(record);
    return front;
}

void Fronts::forget(const ObjectRecord& record) noexcept {
    table().remove(record);
}

ObjectRecord* Fronts::recordBehind(JSContextRef context, JSValueRef prototype) noexcept {
    if (!JSValueIsObjectOfClass(context, prototype, catcherClass())) {
        return nullptr;
    }
    const FrontLink* const link = linkOf(JSValueToObject(context, prototype, nullptr));
    return link != nullptr ? link->record : nullptr;
}

ObjectRecord* Fronts::recordOf(JSObjectRef object) noexcept {
    return table().find(object);
}
