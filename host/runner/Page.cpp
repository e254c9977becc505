#include "runner/Page.h"

#include "engine/Text.h"
#include "options/Folders.h"
#include "runner/Console.h"
#include "runner/Function.h"

#include <cerrno>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

// Exported by the engine but in none of its public headers; null with an engine that has it not.
// NOLINTNEXTLINE(readability-identifier-naming): the engine's name
extern "C" __attribute__((weak)) void JSGlobalContextSetUnhandledRejectionCallback(
    JSGlobalContextRef context, JSObjectRef function, JSValueRef* exception);

Page::Context::Context() : ref(JSGlobalContextCreateInGroup(nullptr, nullptr)) {}

Page::Context::~Context() {
    JSGlobalContextRelease(ref);
}

Page::Page(const PluginLibrary& plugin,
           Scheduler& scheduler,
           PageOwner& pageOwner,
           Overtime& pageOvertime,
           const Options& options)
    : owner(pageOwner), overtime(pageOvertime) {
    pageOvertime.watch(JSContextGetGroup(context.ref));
    document = std::make_unique<Document>(context.ref, plugin.capabilities(), scheduler, pageOwner);
    timers = std::make_unique<Timers>(context.ref, scheduler, pageOwner);
    console::install(context.ref);
    installWindow(options.exposeGc);
    if (options.stressGc) {
        document->stressCollector();
    }
    reportRejections();
    document->open({"file", "", 0});
}

Page::~Page() {
    timers->clearAll();
    if (overtime.hasStoppedScript()) {
        // What was stopped between two calls still stops the next one: it may be this.
        JSEvaluateScript(context.ref, text::EngineString("").get(), nullptr, nullptr, 1, nullptr);
    }
    document->close();
}

void Page::installWindow(bool exposeGc) {
    const JSObjectRef global = JSContextGetGlobalObject(context.ref);
    function::setProperty(context.ref, global, "window", global);
    function::define(context.ref, global, "close", [this](JSContextRef ctx, size_t, auto) {
        owner.closePage();
        return JSValueMakeUndefined(ctx);
    });
    const JSObjectRef location = JSObjectMake(context.ref, nullptr, nullptr);
    function::setProperty(context.ref, global, "location", location);
    function::define(context.ref, location, "reload", [this](JSContextRef ctx, size_t, auto) {
        owner.reload();
        return JSValueMakeUndefined(ctx);
    });
    function::define(context.ref, global, "importScripts",
                     [this](JSContextRef ctx, size_t argc, const JSValueRef argv[]) {
                         importScripts(argc, argv);
                         return JSValueMakeUndefined(ctx);
                     });
    if (exposeGc) {
        function::define(context.ref, global, "gc", [this](JSContextRef ctx, size_t, auto) {
            document->collect();
            return JSValueMakeUndefined(ctx);
        });
    }
}

void Page::reportRejections() {
    if (JSGlobalContextSetUnhandledRejectionCallback == nullptr) {
        return;
    }
    const JSObjectRef reporter =
        function::make(context.ref, "unhandledRejection",
                       [this](JSContextRef ctx, size_t argc, const JSValueRef argv[]) {
                           owner.uncaught(ctx, argc > 1 ? argv[1] : JSValueMakeUndefined(ctx));
                           return JSValueMakeUndefined(ctx);
                       });
    JSGlobalContextSetUnhandledRejectionCallback(context.ref, reporter, nullptr);
}

std::string Page::read(const std::string& file) {
    if (isFolder(file)) {
        throw std::runtime_error(file + ": is a folder, not a page script");
    }
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        throw std::runtime_error(file + ": " + std::generic_category().message(errno));
    }
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void Page::run(const std::string& script, const std::string& file) {
    folder = std::filesystem::path(file).parent_path();
    if (const JSValueRef exception = evaluate(script, file)) {
        owner.uncaught(context.ref, exception);
    }
}

JSValueRef Page::evaluate(const std::string& script, const std::string& file) const {
    const text::EngineString source(script);
    const text::EngineString url(file);
    JSValueRef exception = nullptr;
    JSEvaluateScript(context.ref, source.get(), nullptr, url.get(), 1, &exception);
    return exception;
}

// As in a worker, but by path from the page's folder.
void Page::importScripts(size_t argc, const JSValueRef argv[]) const {
    for (size_t i = 0; i < argc; ++i) {
        const std::string file = (folder / text::toUtf8(context.ref, argv[i])).string();
        if (const JSValueRef exception = evaluate(read(file), file)) {
            throw function::Thrown{exception};
        }
    }
}
