#include "runner/Runner.h"

#include "engine/Text.h"
#include "options/Memory.h"

#include <algorithm>
#include <cstdio>

namespace {

// What a person can still read of one text.
constexpr std::size_t mostCharacters = 10000;

std::string readableText(JSContextRef context, JSValueRef value) {
    const JSStringRef whole = JSValueToStringCopy(context, value, nullptr);
    if (whole == nullptr) {
        return {};
    }
    const std::size_t length = JSStringGetLength(whole);
    std::string readable;
    if (length <= mostCharacters) {
        readable = text::toUtf8(whole);
    } else {
        const JSStringRef begin =
            JSStringCreateWithCharacters(JSStringGetCharactersPtr(whole), mostCharacters);
        readable = text::toUtf8(begin) + "... (the first " + std::to_string(mostCharacters) +
                   " of " + std::to_string(length) + " characters)";
        JSStringRelease(begin);
    }
    JSStringRelease(whole);
    return readable;
}

std::string propertyText(JSContextRef context, JSObjectRef object, const char* name) {
    JSValueRef exception = nullptr;
    const JSValueRef value =
        JSObjectGetProperty(context, object, text::EngineString(name).get(), &exception);
    if (exception != nullptr || value == nullptr || JSValueIsUndefined(context, value)) {
        return {};
    }
    return readableText(context, value);
}

bool isAboutModules(const std::string& message) {
    const auto has = [&](const char* words) { return message.find(words) != std::string::npos; };
    return has("Could not import the module") ||
           (message.rfind("SyntaxError", 0) == 0 &&
            (has("import call") || has("import.meta") || has("keyword 'export'")));
}

// "page.js:3:7: uncaught TypeError: text" and the stack, a line a frame.
std::string describe(JSContextRef context, JSValueRef exception) {
    std::string message = readableText(context, exception);
    if (message.empty()) {
        message = "an exception without a text";
    }
    if (!JSValueIsObject(context, exception)) {
        return "uncaught " + message + '\n';
    }
    const JSObjectRef object = JSValueToObject(context, exception, nullptr);
    const std::string file = propertyText(context, object, "sourceURL");
    const std::string line = propertyText(context, object, "line");
    const std::string column = propertyText(context, object, "column");
    std::string text;
    if (!line.empty()) {
        text = (file.empty() ? "(script)" : file) + ':' + line +
               (column.empty() ? "" : ':' + column) + ": ";
    }
    text += "uncaught " + message + '\n';
    if (isAboutModules(message)) {
        text += "    (a page of sonolet-host is a classic script, which has no modules)\n";
    }
    const std::string stack = propertyText(context, object, "stack");
    for (std::size_t begin = 0; begin < stack.size();) {
        const std::size_t end = std::min(stack.find('\n', begin), stack.size());
        text += "    at " + stack.substr(begin, end - begin) + '\n';
        begin = end + 1;
    }
    return text;
}

}  // namespace

Runner::Runner(const Options& givenOptions)
    : options(givenOptions), script(Page::read(options.page)), plugin(options.pluginLibrary()),
      scheduler(options.speed()), loop(g_main_loop_new(nullptr, FALSE)), overtime(options.page),
      signals([this] { closePage(); }, &Overtime::begin) {}

Runner::~Runner() {
    page.reset();
    g_main_loop_unref(loop);
}

int Runner::run() {
    if (options.seconds) {
        scheduler.schedule(Scheduler::Delay(*options.seconds * 1000.0), [this] {
            closePage();
            return false;
        });
        Overtime::beginAfter(*options.seconds / options.speed());
    }
    while (next != Next::Close) {
        next = Next::Wait;
        page = std::make_unique<Page>(plugin, scheduler, *this, overtime, options);
        page->run(script, options.page);
        if (next == Next::Wait) {
            g_main_loop_run(loop);
        }
        // Exceptions of the unload listeners still count.
        page.reset();
        memory::giveBack();
        // A page that reloads itself at once leaves no other time to --for and to signals.
        g_main_context_iteration(nullptr, FALSE);
    }
    return overtime.hasStoppedScript() ? 1 : exitCode;
}

void Runner::reload() {
    stopWaiting(Next::Reload);
}

void Runner::closePage() {
    stopWaiting(Next::Close);
}

// The page goes when the main loop has returned: nothing of it is on the stack then.
void Runner::stopWaiting(Next wanted) {
    // A page that closes itself and reloads is closed.
    if (next != Next::Close) {
        next = wanted;
    }
    g_main_loop_quit(loop);
}

void Runner::uncaught(JSContextRef context, JSValueRef exception) noexcept {
    // What a script was stopped by is no exception of its own.
    if (!overtime.hasStoppedScript()) {
        const std::string text = describe(context, exception);
        std::fwrite(text.data(), 1, text.size(), stderr);
        exitCode = 1;
    }
    closePage();
}
