#include "runner/Runner.h"

#include "engine/Text.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace {

std::string readPage(const std::string& file) {
    if (std::filesystem::is_directory(file)) {
        throw std::runtime_error(file + ": is a folder, not a page script");
    }
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        throw std::runtime_error(file + ": " + std::generic_category().message(errno));
    }
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::string propertyText(JSContextRef context, JSObjectRef object, const char* name) {
    JSValueRef exception = nullptr;
    const JSValueRef value =
        JSObjectGetProperty(context, object, text::EngineString(name).get(), &exception);
    if (exception != nullptr || value == nullptr || JSValueIsUndefined(context, value)) {
        return {};
    }
    return text::toUtf8(context, value);
}

// "page.js:3:7: uncaught TypeError: text" and the stack, a line a frame.
std::string describe(JSContextRef context, JSValueRef exception) {
    std::string message = text::toUtf8(context, exception);
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
    : options(givenOptions), script(readPage(options.page)), plugin(options.plugin),
      scheduler(options.speed()), loop(g_main_loop_new(nullptr, FALSE)),
      signals([this] { closePage(); }) {}

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
    }
    do {
        next = Next::Wait;
        page.reset();
        page = std::make_unique<Page>(plugin, scheduler, *this, options);
        page->run(script, options.page);
        if (next == Next::Wait) {
            g_main_loop_run(loop);
        }
    } while (next == Next::Reload);
    // Exceptions of the unload listeners still count.
    page.reset();
    return exitCode;
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
    const std::string text = describe(context, exception);
    std::fwrite(text.data(), 1, text.size(), stderr);
    exitCode = 1;
    closePage();
}
