#include "tools/Summary.h"

#include "tap/Functions.h"

#include <algorithm>
#include <cstdio>

namespace {

bool has(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

// "1.234 s", "56.7 ms", "0.8 us": four digits that matter.
std::string duration(double us) {
    char text[32];
    if (us >= 1e6) {
        std::snprintf(text, sizeof text, "%.3f s", us / 1e6);
    } else if (us >= 1e3) {
        std::snprintf(text, sizeof text, "%.2f ms", us / 1e3);
    } else {
        std::snprintf(text, sizeof text, "%.1f us", us);
    }
    return text;
}

std::string seconds(double us) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3f", us / 1e6);
    return text;
}

std::string left(std::string text, std::size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

std::string right(const std::string& text, std::size_t width) {
    return text.size() < width ? std::string(width - text.size(), ' ') + text : text;
}

std::string bytes(std::int64_t count) {
    return count >= 10240 ? std::to_string(count / 1024) + " KiB" : std::to_string(count) + " B";
}

}  // namespace

double Summary::Times::total() const {
    double sum = 0;
    for (const float each : all) {
        sum += each;
    }
    return sum;
}

double Summary::Times::median() const {
    std::vector<float> sorted = all;
    const auto middle = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2);
    std::nth_element(sorted.begin(), middle, sorted.end());
    return sorted.empty() ? 0 : *middle;
}

double Summary::Times::worst() const {
    return all.empty() ? 0 : *std::max_element(all.begin(), all.end());
}

// ---- Reading ----

void Summary::add(const TraceEvent& event) {
    ++events;
    if (event.phase != 'M') {
        first = first < 0 ? event.time : std::min(first, event.time);
        last = std::max(last, event.time + event.duration);
    }
    std::vector<Frame>& stack = stacks[event.thread];
    switch (event.phase) {
    case 'M': {
        const auto named = [&](const char* key) {
            const auto found = event.arguments.find(key);
            return found != event.arguments.end() && found->is_string() ? found->get<std::string>()
                                                                        : std::string();
        };
        if (event.name == "thread_name") {
            threads[event.thread] = named("name");
        } else if (event.name == "process_name") {
            process = named("name");
        } else if (event.name == "sonolet_trace" && date.empty()) {
            date = named("date");
        }
        break;
    }
    case 'B':
    case 'X': {
        if (event.category == "idle") {
            idle += event.duration;
            break;
        }
        Frame frame{event.name, event.call, event.time};
        sound(event, event.call);
        comes(event, event.call);
        if (event.phase == 'B') {
            stack.push_back(std::move(frame));
        } else {
            goes(event, event.call);
            call(frame, event.duration);
        }
        break;
    }
    case 'E':
        if (!stack.empty()) {
            const Frame frame = std::move(stack.back());
            stack.pop_back();
            sound(event, frame.call);
            goes(event, frame.call);
            call(frame, event.time - frame.began);
        }
        break;
    case 's':
        arrowBegins[event.id] = event.time;
        break;
    case 'f': {
        const auto begin = arrowBegins.find(event.id);
        if (begin != arrowBegins.end()) {
            arrows[event.name].add(event.time - begin->second);
            arrowBegins.erase(begin);
        }
        break;
    }
    case 'C': {
        const auto value = event.arguments.find("value");
        const double level =
            value != event.arguments.end() && value->is_number() ? value->get<double>() : 0;
        const auto known = levels.emplace(event.name, std::make_pair(level, level)).first;
        known->second.second = level;
        mostLevels[event.name] = std::max(mostLevels[event.name], level);
        break;
    }
    case 'i':
        mark(event);
        break;
    default:
        break;
    }
}

void Summary::call(const Frame& frame, double time) {
    const bool isScript = frame.name != frame.call || frame.call == "poll";
    (isScript ? members : functions)[frame.name].add(time);
}

Summary::Track& Summary::track(double at) {
    if (tracks.empty()) {
        tracks.push_back({});
        tracks.back().at = at;
    }
    return tracks.back();
}

void Summary::sound(const TraceEvent& event, const std::string& name) {
    const bool isEnd = event.phase == 'E' || event.phase == 'X';
    const bool isBegin = event.phase != 'E';
    if (name == "sp_session_player_load" && isBegin) {
        tracks.push_back({});
        tracks.back().at = event.time;
    } else if (name == "sp_session_player_play" && isBegin) {
        Track& now = track(event.time);
        now.isPlayed = now.isPlayed || TraceEvent::integer(event.in(), 1) != 0;
    } else if (name == "sp_session_player_unload" && isBegin && !tracks.empty() &&
               tracks.back().end.empty()) {
        tracks.back().end = "unloaded";
    } else if (name == "music_delivery" && isEnd) {
        Track& now = track(event.time);
        const std::int64_t taken = TraceEvent::integer(event.out(), 0);
        ++now.deliveries;
        now.refused += taken == 0 ? 1 : 0;
        now.delivered += taken * 4;
    } else if (name == "handleEvent" && isBegin) {
        Track& now = track(event.time);
        const std::int64_t type = TraceEvent::integer(event.in(), 2);
        now.requests += type == 1 ? 1 : 0;
        now.underruns += type == 22 ? 1 : 0;
        if (type == 4) {
            now.end = "played to the end";
        }
    } else if (name == "writeData" && isBegin) {
        Track& now = track(event.time);
        const std::int64_t size = TraceEvent::integer(event.in(), 2);
        if (size > 0) {
            now.firstSound = now.firstSound > 0 ? now.firstSound : event.time - now.at;
            now.longestGap =
                now.lastWrite > 0 ? std::max(now.longestGap, event.time - now.lastWrite) : 0;
            now.lastWrite = event.time;
            now.written += size;
        }
        if (TraceEvent::integer(event.in(), 3) == 1 && now.end.empty()) {
            now.end = "end of stream";
        }
    }
}

// What a call's arguments tell.
void Summary::comes(const TraceEvent& event, const std::string& name) {
    const auto& in = event.in();
    if (name == "destructor") {
        objects.erase(TraceEvent::address(in, 0));
    } else if (startsQuery(functionNamed(name)) && !in.empty()) {
        asked[in.back().dump()] = {name.substr(3, name.rfind('_') - 3), event.time};
    } else if (completesQuery(functionNamed(name)) && in.size() == 2) {
        const auto query = asked.find(in[1].dump());
        if (query != asked.end()) {
            queries[query->second.first].add(event.time - query->second.second);
            asked.erase(query);
        }
    } else if (name == "call" && has(event.name, ".addEventListener")) {
        ++listeners[TraceEvent::text(in, 3)];
    } else if (name == "call" && has(event.name, ".removeEventListener")) {
        --listeners[TraceEvent::text(in, 3)];
    }
}

// What its results tell.
void Summary::goes(const TraceEvent& event, const std::string& name) {
    const auto& out = event.out();
    if (name == "create_object" || name == "create_function") {
        const std::string object = TraceEvent::address(out, 1);
        const std::vector<Frame>& stack = stacks[event.thread];
        if (!object.empty()) {
            objects[object] = stack.empty() ? "(host)" : stack.back().name;
        }
    } else if (name.rfind("sp_", 0) == 0 && name != "sp_session_release") {
        std::string kind = name.substr(3, name.find('_', 3) - 3);
        kind = kind == "playlistcontainer" ? "container" : kind;
        if (has(name, "_add_ref")) {
            ++handles[kind];
        } else if (has(name, "_release")) {
            --handles[kind];
        } else if (has(name, "_create") && !TraceEvent::address(out, 0).empty()) {
            ++handles[out[0].begin().key()];
        }
    }
}

// What there is when the last document goes is what a page has kept; afterwards it all goes.
void Summary::mark(const TraceEvent& event) {
    const std::string& name = event.name;
    if (name == "document unloads") {
        kept = makers();
        keptHandles = handles;
    } else if (name == "document opens") {
        kept.clear();
        keptHandles.clear();
    }
    if (has(name, "rule ") || has(name, "fails") || has(name, "error") || has(name, "underrun") ||
        has(name, "lost") || name.rfind("log: ", 0) == 0) {
        faults.emplace_back(event.time, name);
    } else if (name != "collection" && name != "end of stream written") {
        marks.emplace_back(event.time, name);
    }
}

// ---- Telling ----

std::string Summary::text(std::size_t rows) const {
    std::string all = head();
    all += timesTable("calls by member, those that took longest together first", members, rows);
    all += timesTable("calls of library, backend and host", functions, rows);
    std::map<std::string, Times> told;
    std::map<std::string, Times> sounds;
    for (const auto& [name, times] : arrows) {
        (name == "sound" || name == "request" ? sounds : told)[name] = times;
    }
    all += timesTable("events, from cause to listener", told, rows);
    all += timesTable("queries, from question to answer of the library", queries, rows);
    all += timesTable("sound: a delivery until it is written, a request until its answer", sounds,
                      rows);
    return all + soundTable() + leftovers(rows);
}

std::string Summary::head() const {
    std::string text = "trace of " + (process.empty() ? std::string("a process") : process) + ", " +
                       date + ": " + seconds(last - std::max(first, 0.0)) + " s, " +
                       std::to_string(events) + " events, idle " + seconds(idle) + " s\n";
    for (const auto& [number, name] : threads) {
        text += "  thread " + std::to_string(number) + "  " + name + "\n";
    }
    return text;
}

std::string Summary::timesTable(const std::string& title,
                                const std::map<std::string, Times>& rows,
                                std::size_t most) const {
    if (rows.empty()) {
        return {};
    }
    std::vector<std::pair<std::string, const Times*>> sorted;
    sorted.reserve(rows.size());
    std::size_t width = 24;
    for (const auto& [name, times] : rows) {
        sorted.emplace_back(name, &times);
    }
    std::sort(sorted.begin(), sorted.end(), [](const auto& one, const auto& other) {
        return one.second->total() > other.second->total();
    });
    const std::size_t shown = std::min(most, sorted.size());
    for (std::size_t i = 0; i < shown; ++i) {
        width = std::max(width, sorted[i].first.size());
    }
    std::string text = "\n" + title + "\n" + left("", width + 2) + right("count", 8) +
                       right("median", 12) + right("worst", 12) + right("together", 12) + "\n";
    for (std::size_t i = 0; i < shown; ++i) {
        const auto& [name, times] = sorted[i];
        text += "  " + left(name, width) + right(std::to_string(times->all.size()), 8) +
                right(duration(times->median()), 12) + right(duration(times->worst()), 12) +
                right(duration(times->total()), 12) + "\n";
    }
    if (shown < sorted.size()) {
        text += "  and " + std::to_string(sorted.size() - shown) + " more (--rows N)\n";
    }
    return text;
}

std::string Summary::soundTable() const {
    if (tracks.empty()) {
        return {};
    }
    std::string text = "\nsound, track by track\n  " + left("loaded at", 11) + left("play", 6) +
                       right("first sound", 12) + right("delivered", 12) + right("requests", 10) +
                       right("written", 12) + right("gap", 12) + right("underruns", 11) + "  end\n";
    for (const Track& each : tracks) {
        text += "  " + left(seconds(each.at), 11) + left(each.isPlayed ? "yes" : "NO", 6) +
                right(each.firstSound > 0 ? duration(each.firstSound) : "none", 12) +
                right(bytes(each.delivered), 12) + right(std::to_string(each.requests), 10) +
                right(bytes(each.written), 12) + right(duration(each.longestGap), 12) +
                right(std::to_string(each.underruns), 11) + "  " +
                (each.end.empty() ? "open" : each.end) + "\n";
    }
    return text;
}

std::map<std::string, std::int64_t> Summary::makers() const {
    std::map<std::string, std::int64_t> counts;
    for (const auto& [object, maker] : objects) {
        ++counts[maker];
    }
    return counts;
}

std::string Summary::leftovers(std::size_t rows) const {
    std::string text;
    const auto section = [&](const std::string& title,
                             const std::map<std::string, std::int64_t>& of) {
        std::vector<std::pair<std::int64_t, std::string>> sorted;
        for (const auto& [name, number] : of) {
            if (number > 0) {
                sorted.emplace_back(number, name);
            }
        }
        std::sort(sorted.rbegin(), sorted.rend());
        text += sorted.empty() ? "" : "\n" + title + "\n";
        for (std::size_t i = 0; i < std::min(rows, sorted.size()); ++i) {
            text += right(std::to_string(sorted[i].first), 10) + "  " + sorted[i].second + "\n";
        }
    };
    section("script objects there at the end of the page, by what made them",
            kept.empty() ? makers() : kept);
    section("references held at the end of the page, by kind",
            keptHandles.empty() ? handles : keptHandles);
    section("listeners there at the end, by event", listeners);
    if (!levels.empty()) {
        text += "\nlevels" + left("", 20) + right("first", 14) + right("most", 14) +
                right("last", 14) + "\n";
    }
    for (const auto& [name, level] : levels) {
        text += "  " + left(name, 24) +
                right(std::to_string(static_cast<long long>(level.first)), 14) +
                right(std::to_string(static_cast<long long>(mostLevels.at(name))), 14) +
                right(std::to_string(static_cast<long long>(level.second)), 14) + "\n";
    }
    const auto list = [&](const std::string& title,
                          const std::vector<std::pair<double, std::string>>& of) {
        text += of.empty() ? "" : "\n" + title + "\n";
        for (std::size_t i = 0; i < std::min(rows, of.size()); ++i) {
            text += right(seconds(of[i].first), 12) + " s  " + of[i].second + "\n";
        }
        if (of.size() > rows) {
            text += "  and " + std::to_string(of.size() - rows) + " more (--rows N)\n";
        }
    };
    list("what happened", marks);
    list("what went wrong", faults);
    return text;
}
