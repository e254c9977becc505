#include "validate/Findings.h"

#include "validate/Rules.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <utility>

namespace {

constexpr std::size_t mostTold = 10;
constexpr std::size_t mostHistories = 50000;
constexpr std::size_t mostLabels = 10000;
constexpr std::size_t longestName = 40;

bool isObject(const Value& value) {
    return (value.tag == Tag::Object || value.tag == Tag::Handle || value.tag == Tag::Pointer) &&
           value.u.pointer != nullptr;
}

std::string textOf(const Value& object) {
    const char* const kind = object.tag == Tag::Handle    ? handleNames[object.kind]
                             : object.tag == Tag::Object  ? "object"
                             : object.tag == Tag::Pointer ? "backend"
                                                          : "";
    if (*kind == '\0') {
        return {};
    }
    char text[48];
    std::snprintf(text, sizeof text, "%s %lx", kind,
                  static_cast<unsigned long>(reinterpret_cast<std::uintptr_t>(object.u.pointer)));
    return text;
}

const char* statementOf(int number) {
    const auto* const found = std::find_if(std::begin(rules), std::end(rules),
                                           [&](const Rule& rule) { return rule.number == number; });
    return found != std::end(rules) ? found->says : "";
}

}  // namespace

const char* nameOf(Party party) {
    constexpr const char* names[] = {"host", "plug-in", "library", "backend", "log"};
    return names[static_cast<int>(party)];
}

Findings::Findings(Tell tellLine) : tell(std::move(tellLine)) {}

// The function, of the browser's calls with the name that they are about.
std::uint32_t Findings::labelOf(const Call& call) {
    std::string label = infoOf(call.function).name;
    const bool isNamed = (call.function == Fn::getter || call.function == Fn::setter) &&
                         call.arguments[1].u.text != nullptr;
    if (isNamed) {
        label += ' ';
        label.append(call.arguments[1].u.text,
                     std::min<std::size_t>(call.arguments[1].size, longestName));
    }
    const auto found = numbers.find(label);
    if (found != numbers.end()) {
        return found->second;
    }
    if (numbers.size() >= mostLabels) {
        numbers.clear();  // what is remembered keeps its names
    }
    const auto number = static_cast<std::uint32_t>(labels.size());
    labels.emplace(number, label);
    numbers.emplace(std::move(label), number);
    return number;
}

void Findings::remember(const Call& call) {
    if (histories.size() > mostHistories) {
        histories.clear();
    }
    const std::uint32_t label = labelOf(call);
    for (unsigned i = 0; i < call.count && i < 3; ++i) {
        if (isObject(call.arguments[i])) {
            History& history = histories[call.arguments[i].u.pointer];
            history.labels[history.count++ % history.labels.size()] = label;
        }
    }
}

void Findings::forget(const void* object) {
    histories.erase(object);
}

std::string Findings::before(const void* object, const Call* call) const {
    const auto found = histories.find(object);
    if (found == histories.end()) {
        return {};
    }
    const History& history = found->second;
    // The last one is the call itself.
    const std::uint32_t end = history.count - (call != nullptr ? 1 : 0);
    const auto size = static_cast<std::uint32_t>(history.labels.size());
    std::string text;
    for (std::uint32_t i = history.count > size ? history.count - size : 0; i < end; ++i) {
        text += text.empty() ? "; before it: " : ", ";
        const auto label = labels.find(history.labels[i % size]);
        text += label != labels.end() ? label->second : "";
    }
    return text;
}

void Findings::add(
    int rule, Party blame, const Call* call, const Value& object, const std::string& detail) {
    ++total;
    if (++counts[{rule, blame}] > mostTold) {
        return;
    }
    std::string line =
        "rule " + std::to_string(rule) + ", " + nameOf(blame) + ": " + statementOf(rule) + ':';
    const std::string name = textOf(object);
    if (!name.empty()) {
        line += ' ' + name;
    }
    if (!detail.empty()) {
        line += (name.empty() ? " " : ", ") + detail;
    }
    if (call != nullptr) {
        line += std::string(" in ") + infoOf(call->function).name;
    }
    line += ", thread " + std::to_string(syscall(SYS_gettid));
    if (isObject(object)) {
        line += before(object.u.pointer, call);
    }
    tell(line);
}

std::string Findings::summary() const {
    std::string text = std::to_string(total) + (total == 1 ? " finding:" : " findings:");
    for (const auto& [which, count] : counts) {
        text += (text.back() == ':' ? " rule " : ", rule ") + std::to_string(which.first) + ' ' +
                nameOf(which.second) + ' ' + std::to_string(count);
    }
    return text;
}
