#include "tools/Html.h"

#include "tools/Follow.h"
#include "tools/Timeline.h"

#include <cstddef>

namespace {

using nlohmann::json;

// More than a browser shows without waiting.
constexpr std::size_t mostSlices = 400000;

}  // namespace

void Html::add(const TraceEvent& event) {
    std::vector<std::size_t>& stack = open[event.thread];
    switch (event.phase) {
    case 'M':
        if (event.name == "thread_name") {
            threads[event.thread] = readable(event.arguments.value("name", json("")));
        }
        break;
    case 'B':
    case 'X': {
        std::string detail = readable(event);
        for (const json& value : event.out()) {
            detail += " = " + readable(value);
        }
        if (event.phase == 'B') {
            stack.push_back(dropped + slices.size());
        }
        slices.push_back({event.thread, event.name, event.category, event.time,
                          event.phase == 'X' ? event.duration : -1,
                          stack.size() - (event.phase == 'B' ? 1 : 0), std::move(detail)});
        if (slices.size() > mostSlices) {
            slices.pop_front();
            ++dropped;
        }
        break;
    }
    case 'E':
        if (!stack.empty()) {
            if (stack.back() >= dropped) {
                Slice& slice = slices[stack.back() - dropped];
                slice.duration = event.time - slice.time;
                for (const json& value : event.out()) {
                    slice.detail += " = " + readable(value);
                }
            }
            stack.pop_back();
        }
        break;
    case 's':
        arrowBegins[event.id] = {event.thread, event.time};
        break;
    case 'f': {
        const auto begin = arrowBegins.find(event.id);
        if (begin != arrowBegins.end()) {
            arrows.push_back(
                {begin->second.first, begin->second.second, event.thread, event.time, event.name});
            arrowBegins.erase(begin);
        }
        break;
    }
    case 'i':
        marks.push_back({event.time, event.name});
        break;
    case 'C':
        counters[event.name].push_back({event.time, event.arguments.value("value", json(0))});
        break;
    default:
        break;
    }
}

std::string Html::text() const {
    json data;
    data["dropped"] = dropped;
    data["threads"] = json::array();
    for (const auto& [number, name] : threads) {
        data["threads"].push_back({number, name});
    }
    // Names and details are told once: most come again and again.
    std::map<std::string, std::size_t> numbers;
    json texts = json::array();
    const auto numberOf = [&](const std::string& text) {
        const auto added = numbers.emplace(text, numbers.size());
        if (added.second) {
            texts.push_back(text);
        }
        return added.first->second;
    };
    json& all = data["slices"] = json::array();
    for (const Slice& each : slices) {
        all.push_back({each.thread, numberOf(each.name), numberOf(each.category), each.time,
                       each.duration, each.depth, numberOf(each.detail)});
    }
    data["texts"] = std::move(texts);
    data["arrows"] = arrows;
    data["marks"] = marks;
    data["counters"] = counters;
    // No text may end the script that it stands in, nor begin a comment there.
    std::string script;
    for (const char c : data.dump(-1, ' ', false, json::error_handler_t::replace)) {
        c == '<' ? script.append("\\u003c") : script.append(1, c);
    }
    std::string page = timelinePage;
    constexpr char place[] = "\"DATA\"";
    return page.replace(page.find(place), sizeof place - 1, script);
}
