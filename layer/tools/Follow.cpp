#include "tools/Follow.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <map>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <vector>

namespace {

using nlohmann::json;

bool has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

// Who writes a trace has it locked.
bool isBeingWritten(const std::string& file) {
    const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        return false;
    }
    const bool isLocked = flock(descriptor, LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    close(descriptor);
    return isLocked;
}

std::string listOf(const json& values) {
    std::string text;
    for (const json& value : values) {
        text += (text.empty() ? "" : ", ") + readable(value);
    }
    return text;
}

// The stream as lines, each call under those around it.
class Printer final {
public:
    explicit Printer(const Filter& wanted) : filter(wanted) {}

    void add(const TraceEvent& event) {
        if (event.phase == 'M' && event.name == "thread_name") {
            const auto name = event.arguments.find("name");
            names[event.thread] = name != event.arguments.end() ? readable(*name) : "";
            return;
        }
        std::vector<bool>& shown = depth[event.thread];
        const bool isShown = event.phase == 'E' ? !shown.empty() && shown.back()
                                                : filter.wants(event, names[event.thread]);
        if (event.phase == 'E' && !shown.empty()) {
            shown.pop_back();
        }
        if (isShown) {
            print(event, shown.size());
        }
        if (event.phase == 'B') {
            shown.push_back(isShown);
        }
    }

private:
    void print(const TraceEvent& event, std::size_t level) const {
        std::string line;
        const std::string results =
            event.out().empty() ? std::string() : " = " + listOf(event.out());
        switch (event.phase) {
        case 'X':
            line = event.category == "idle"
                       ? "idle, " + readable(event.arguments.value("times", json(0))) + " times"
                       : readable(event) + results;
            break;
        case 'B':
            line = readable(event) + " {";
            break;
        case 'E':
            line = "}" + results;
            break;
        case 'i':
            line = "---- " + event.name;
            break;
        default:
            return;
        }
        std::printf("%12.6f %6lld %s%s", event.time / 1e6, static_cast<long long>(event.thread),
                    std::string(2 * level, ' ').c_str(), line.c_str());
        if (event.phase == 'X') {
            std::printf("  [%.1f us]", event.duration);
        }
        std::puts("");
    }

    const Filter& filter;
    std::map<std::int64_t, std::string> names;
    std::map<std::int64_t, std::vector<bool>> depth;
};

}  // namespace

bool Filter::wants(const TraceEvent& event, const std::string& threadName) const {
    if (!member.empty() && !has(event.name, member)) {
        return false;
    }
    if (!thread.empty() && std::to_string(event.thread) != thread && !has(threadName, thread)) {
        return false;
    }
    return object.empty() || has(listOf(event.in()), object) || has(listOf(event.out()), object);
}

std::string readable(const json& value) {
    if (!value.is_object()) {
        return value.dump(-1, ' ', false, json::error_handler_t::replace);
    }
    if (value.empty()) {
        return "-";
    }
    if (const auto secret = value.find("secret"); secret != value.end()) {
        return secret->is_number() ? "(secret " + secret->dump() + ")" : "(secret)";
    }
    if (value.contains("undefined")) {
        return "undefined";
    }
    const auto cut = value.find("bytes");
    std::string text;
    for (auto each = value.begin(); each != value.end(); ++each) {
        if (each == cut) {
            continue;
        }
        const bool isText = each.key() == "text" || each.key() == "hex";
        text += isText ? readable(*each)
                       : each.key() + " " +
                             (each->is_string() ? each->get<std::string>() : readable(*each));
    }
    return cut == value.end() ? text : text + "... " + readable(*cut) + " bytes";
}

std::string readable(const TraceEvent& event) {
    return event.name + "(" + listOf(event.in()) + ")";
}

bool follow(const std::string& file, const Filter& filter) {
    std::ifstream input(file, std::ios::binary);
    if (!input) {
        throw std::invalid_argument(file + ": " + std::generic_category().message(errno));
    }
    TraceReader reader(input);
    Printer printer(filter);
    TraceEvent event;
    for (bool isLast = false;;) {
        while (reader.next(event)) {
            printer.add(event);
        }
        std::fflush(stdout);
        if (isLast || reader.hasEnded()) {
            return reader.isTrace();
        }
        // Once more after the writer has gone: it may have written since the last look.
        isLast = !isBeingWritten(file);
        if (!isLast) {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
        input.clear();
    }
}
