#include "validate/Validator.h"

#include "tap/Utf8.h"

#include <utility>

namespace {

bool isText(const Value& value) {
    return (value.tag == Tag::Text || value.tag == Tag::Expression || value.tag == Tag::Secret) &&
           value.u.text != nullptr;
}

// Of the library, what may come from, or be asked on, any thread.
bool isForAnyThread(Fn function) {
    switch (function) {
    case Fn::notify_main_thread:
    case Fn::music_delivery:
    case Fn::log_message:
    case Fn::end_of_track:
    case Fn::handleEvent:
    case Fn::getDRMBackend:
    case Fn::sp_build_id:
    case Fn::sp_error_message:
    case Fn::releaseBackend:
    case Fn::KlogPrintf:
        return true;
    default:
        return false;
    }
}

int threadRuleOf(const FunctionInfo& function) {
    if (function.caller == Party::Host || function.callee == Party::Host) {
        return 103;
    }
    if (function.callee == Party::Library) {
        return 201;
    }
    return function.caller == Party::Library ? 208 : 301;
}

}  // namespace

Validator::Validator(const Clock& clock, Findings::Tell tell)
    : findings(std::move(tell)), host(findings, clock), library(findings, clock),
      backend(findings) {}

void Validator::check(const jsplugin_callbacks* table) noexcept {
    const std::lock_guard<std::mutex> lock(mutex);
    std::string missing;
    const auto look = [&](bool isThere, const char* name) {
        if (!isThere) {
            missing += (missing.empty() ? "no " : ", ") + std::string(name);
        }
    };
    look(table != nullptr, "table");
    if (table != nullptr) {
        look(table->create_function != nullptr, "create_function");
        look(table->create_object != nullptr, "create_object");
        look(table->add_poll_function != nullptr, "add_poll_function");
        look(table->call_function != nullptr, "call_function");
        look(table->add_unload_listener != nullptr, "add_unload_listener");
        look(table->gc_mark != nullptr, "gc_mark");
    }
    if (!missing.empty()) {
        findings.add(102, Party::Host, nullptr, {}, missing);
    }
}

void Validator::began(Call& call) noexcept {
    const std::lock_guard<std::mutex> lock(mutex);
    const FunctionInfo& function = infoOf(call.function);
    findings.remember(call);
    checkThread(call);
    checkTexts(call, call.arguments, call.count, function.caller);
    if (function.caller == Party::Host || function.callee == Party::Host) {
        host.began(call);
    } else if (function.caller == Party::Library || function.callee == Party::Library) {
        library.began(call);
    } else if (function.callee != Party::Log) {
        backend.began(call);
    }
}

void Validator::ended(Call& call, const Value* results, unsigned count) noexcept {
    const std::lock_guard<std::mutex> lock(mutex);
    const FunctionInfo& function = infoOf(call.function);
    checkTexts(call, results, count, function.callee);
    if (function.caller == Party::Host || function.callee == Party::Host) {
        host.ended(call, results, count);
    } else if (function.caller == Party::Library || function.callee == Party::Library) {
        library.ended(call, results, count);
    } else if (function.callee != Party::Log) {
        backend.ended(call, results);
    }
}

// The first call of the host says which thread is script's.
void Validator::checkThread(const Call& call) {
    const FunctionInfo& function = infoOf(call.function);
    if (script == std::thread::id() && function.caller == Party::Host) {
        script = std::this_thread::get_id();
    }
    if (script != std::thread::id() && script != std::this_thread::get_id() &&
        !isForAnyThread(call.function)) {
        findings.add(threadRuleOf(function), function.caller, &call,
                     call.count > 0 ? call.arguments[0] : Value(), "another thread");
    }
}

void Validator::checkTexts(const Call& call, const Value* values, unsigned count, Party blame) {
    for (unsigned i = 0; i < count; ++i) {
        if (isText(values[i]) && !isUtf8({values[i].u.text, values[i].size})) {
            findings.add(101, blame, &call, call.count > 0 ? call.arguments[0] : Value(),
                         "value " + std::to_string(i + 1));
        }
    }
}

std::size_t Validator::count() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return findings.count();
}

std::string Validator::summary() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return findings.summary();
}
