#include "runner/Timers.h"

#include "runner/Function.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <stdexcept>
#include <utility>

Timers::Timers(JSGlobalContextRef scriptContext,
               Scheduler& pageScheduler,
               ErrorReporter& errorReporter)
    : context(scriptContext), scheduler(pageScheduler), reporter(errorReporter) {
    const JSObjectRef global = JSContextGetGlobalObject(context);
    const auto adder = [this](bool repeats) {
        return [this, repeats](JSContextRef ctx, size_t argc, const JSValueRef argv[]) {
            return add(ctx, argc, argv, repeats);
        };
    };
    const auto clearer = [this](JSContextRef ctx, size_t argc, const JSValueRef argv[]) {
        const double id = argc > 0 ? JSValueToNumber(ctx, argv[0], nullptr) : 0;
        if (id >= 1 && id <= 4294967295.0) {
            clear(static_cast<unsigned>(id));
        }
        return JSValueMakeUndefined(ctx);
    };
    function::define(context, global, "setTimeout", adder(false));
    function::define(context, global, "setInterval", adder(true));
    function::define(context, global, "clearTimeout", clearer);
    function::define(context, global, "clearInterval", clearer);
}

Timers::~Timers() {
    clearAll();
}

JSValueRef
Timers::add(JSContextRef callContext, size_t argc, const JSValueRef argv[], bool repeats) {
    const JSObjectRef callee = argc > 0 && JSValueIsObject(callContext, argv[0])
                                   ? JSValueToObject(callContext, argv[0], nullptr)
                                   : nullptr;
    if (callee == nullptr || !JSObjectIsFunction(callContext, callee)) {
        throw std::invalid_argument("a timer takes a function as its first argument");
    }
    const double asked = argc > 1 ? JSValueToNumber(callContext, argv[1], nullptr) : 0;
    // As in browsers, at least a millisecond; no number is none.
    const Scheduler::Delay delay(std::isnan(asked) ? 1.0 : std::max(asked, 1.0));
    Timer timer{callee, {}};
    JSValueProtect(context, callee);
    for (size_t i = 2; i < argc; ++i) {
        JSValueProtect(context, argv[i]);
        timer.arguments.push_back(argv[i]);
    }
    const auto id = std::make_shared<unsigned>(0);
    *id = scheduler.schedule(delay, [this, id, repeats] {
        fire(*id);
        if (!repeats) {
            clear(*id);
        }
        return repeats;
    });
    timers.emplace(*id, std::move(timer));
    return JSValueMakeNumber(callContext, *id);
}

void Timers::fire(unsigned id) {
    const auto found = timers.find(id);
    // Protected until clear(), which the function itself may call: from here the stack keeps the
    // function, and the arguments are protected once more.
    const JSObjectRef callee = found->second.function;
    const std::vector<JSValueRef> arguments = found->second.arguments;
    for (const JSValueRef argument : arguments) {
        JSValueProtect(context, argument);
    }
    JSValueRef exception = nullptr;
    JSObjectCallAsFunction(context, callee, nullptr, arguments.size(), arguments.data(),
                           &exception);
    for (const JSValueRef argument : arguments) {
        JSValueUnprotect(context, argument);
    }
    if (exception != nullptr) {
        reporter.uncaught(context, exception);
    }
}

void Timers::clear(unsigned id) {
    const auto found = timers.find(id);
    if (found == timers.end()) {
        return;
    }
    scheduler.cancel(id);
    JSValueUnprotect(context, found->second.function);
    for (const JSValueRef argument : found->second.arguments) {
        JSValueUnprotect(context, argument);
    }
    timers.erase(found);
}

void Timers::clearAll() {
    while (!timers.empty()) {
        clear(timers.begin()->first);
    }
}
