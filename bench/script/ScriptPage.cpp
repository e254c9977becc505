#include "script/ScriptPage.h"

#include "around/Library.h"
#include "engine/EngineHooks.h"
#include "engine/Text.h"

#include <iostream>
#include <stdexcept>

unsigned ManualScheduler::schedule(Delay delay, Task task) {
    tasks.emplace(++lastId, std::make_pair(delay.count(), std::move(task)));
    return lastId;
}

void ManualScheduler::run(double delay) {
    for (const auto& [id, task] : std::map(tasks)) {
        if (task.first == delay) {
            task.second();
        }
    }
}

ScriptPage::ScriptPage(const PluginLibrary& plugin, JSGlobalContextRef owned)
    : context(owned),
      document(std::make_unique<Document>(context, plugin.capabilities(), scheduler, *this)) {
    document->open({"file", "", 0});
    evaluate("session = Spotify.Session.create(Spotify.SessionConfig);");
}

ScriptPage::~ScriptPage() {
    document.reset();
    JSGlobalContextRelease(context);
}

JSObjectRef ScriptPage::evaluate(const std::string& script) const {
    JSValueRef exception = nullptr;
    const JSValueRef value = JSEvaluateScript(context, text::EngineString(script).get(), nullptr,
                                              nullptr, 1, &exception);
    if (exception != nullptr) {
        throw std::runtime_error(text::toUtf8(context, exception));
    }
    return JSValueIsObject(context, value) ? JSValueToObject(context, value, nullptr) : nullptr;
}

void ScriptPage::define(const char* name, JSValueRef value) const {
    JSObjectSetProperty(context, JSContextGetGlobalObject(context), text::EngineString(name).get(),
                        value, JSPropertyAttributes{}, nullptr);
}

void ScriptPage::define(const char* name, JSObjectCallAsFunctionCallback function) const {
    define(name,
           JSObjectMakeFunctionWithCallback(context, text::EngineString(name).get(), function));
}

std::function<void()> ScriptPage::loop(const std::string& body, int count) const {
    const JSObjectRef function =
        evaluate("(function(count) { let last; for (let i = 0; i < count; ++i) { " + body +
                 " } return last; })");
    JSValueProtect(context, function);
    return [this, function, count] {
        const JSValueRef argument = JSValueMakeNumber(context, count);
        JSValueRef exception = nullptr;
        JSObjectCallAsFunction(context, function, nullptr, 1, &argument, &exception);
        if (exception != nullptr) {
            throw std::runtime_error(text::toUtf8(context, exception));
        }
    };
}

std::function<void()> ScriptPage::loopInListener(const std::string& body, int count) {
    const JSObjectRef function =
        evaluate("(function() { let last; for (let i = 0; i < " + std::to_string(count) +
                 "; ++i) { " + body + " } heard = last; })");
    JSValueProtect(context, function);
    return [this, function] {
        define("listen", function);
        evaluate("heard = null; session.addEventListener('EndOfTrack', listen);");
        raiseEndOfTrack();
        evaluate("session.removeEventListener('EndOfTrack', listen);"
                 "if (heard === null) throw 'not all was done';");
    };
}

std::function<void()> ScriptPage::collected(std::function<void()> make) const {
    return [this, make = std::move(make)] {
        make();
        document->letGo();
        JSSynchronousGarbageCollectForDebugging(context);
        document->letGo();
    };
}

void ScriptPage::raiseEndOfTrack() {
    benchCallbacks()->end_of_track(benchHandle<sp_session>());
    scheduler.run(100);
}

void ScriptPage::uncaught(JSContextRef where, JSValueRef exception) noexcept {
    std::cerr << text::toUtf8(where, exception) << '\n';
}
