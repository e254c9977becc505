#include "tools/TraceReader.h"

#include <cmath>
#include <cstddef>
#include <utility>

namespace {

using nlohmann::json;

const json nothing = json::array();

std::string textOf(const json& object, const char* name) {
    const auto found = object.find(name);
    return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

double numberOf(const json& object, const char* name) {
    const auto found = object.find(name);
    const double number = found != object.end() && found->is_number() ? found->get<double>() : 0.0;
    return std::isfinite(number) ? number : 0.0;
}

// As an integer, or 0 for what is none.
std::int64_t integerOf(const json& value) {
    constexpr double most = 9e18;
    if (value.is_number_integer()) {
        return value.get<std::int64_t>();
    }
    const double number = value.is_number() ? value.get<double>() : 0.0;
    return number > -most && number < most ? static_cast<std::int64_t>(number) : 0;
}

// Whether values lie in each other as nobody writes them: whoever goes through such ones runs out
// of stack.
bool isTooDeep(std::string_view line) {
    constexpr int most = 64;
    int depth = 0;
    bool isText = false;
    for (std::size_t i = 0; i < line.size() && depth <= most; ++i) {
        const char c = line[i];
        if (isText) {
            i += c == '\\' ? 1 : 0;
            isText = c != '"';
        } else if (c == '"') {
            isText = true;
        } else {
            depth += c == '[' || c == '{' ? 1 : c == ']' || c == '}' ? -1 : 0;
        }
    }
    return depth > most;
}

const json* at(const json& values, std::size_t n) {
    return values.is_array() && n < values.size() ? &values[n] : nullptr;
}

}  // namespace

const json& TraceEvent::part(const char* which) const {
    const auto found = arguments.find(which);
    return found != arguments.end() && found->is_array() ? *found : nothing;
}

std::int64_t TraceEvent::integer(const json& values, std::size_t n) {
    const json* const value = at(values, n);
    if (value != nullptr && value->is_boolean()) {
        return value->get<bool>() ? 1 : 0;
    }
    return value != nullptr ? integerOf(*value) : 0;
}

std::string TraceEvent::text(const json& values, std::size_t n) {
    const json* const value = at(values, n);
    if (value != nullptr && value->is_string()) {
        return value->get<std::string>();
    }
    return value != nullptr && value->is_object() ? textOf(*value, "text") : std::string();
}

std::string TraceEvent::address(const json& values, std::size_t n) {
    const json* const value = at(values, n);
    const bool isAddress =
        value != nullptr && value->is_object() && value->size() == 1 && value->begin()->is_string();
    const std::string address = isAddress ? value->begin()->get<std::string>() : std::string();
    return address == "0" ? std::string() : address;
}

bool TraceReader::parse(std::string_view line, TraceEvent& event) {
    while (!line.empty() && (line.back() == ',' || line.back() == '\r' || line.back() == ' ')) {
        line.remove_suffix(1);
    }
    if (isTooDeep(line)) {
        return false;
    }
    json object = json::parse(line.begin(), line.end(), nullptr, false);
    if (!object.is_object()) {
        return false;
    }
    const std::string phase = textOf(object, "ph");
    event.phase = phase.size() == 1 ? phase[0] : '\0';
    event.name = textOf(object, "name");
    event.category = textOf(object, "cat");
    event.thread = integerOf(object.value("tid", json(0)));
    event.id = integerOf(object.value("id", json(0)));
    event.time = numberOf(object, "ts");
    event.duration = numberOf(object, "dur");
    const auto arguments = object.find("args");
    event.arguments = arguments != object.end() && arguments->is_object() ? std::move(*arguments)
                                                                          : json::object();
    event.call = textOf(event.arguments, "call");
    if (event.call.empty()) {
        event.call = event.name;
    }
    return event.phase != '\0';
}

bool TraceReader::next(TraceEvent& event) {
    std::string line;
    while (std::getline(input, line)) {
        if (input.eof()) {
            // Its end is still to come, or never will.
            rest += line;
            break;
        }
        line.insert(0, rest);
        rest.clear();
        if (line == "[" || line.empty()) {
            ended = false;
        } else if (line == "{}]" || line == "]") {
            ended = true;
        } else if (parse(line, event)) {
            seenHead = seenHead || (event.phase == 'M' && event.name == "sonolet_trace");
            return true;
        } else {
            ++brokenLines;
        }
    }
    return false;
}
