#include "replay/Recording.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <sstream>
#include <system_error>

namespace {

// Empty when it is not there.
std::string textOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    try {
        return {std::istreambuf_iterator<char>(file), {}};
    } catch (const std::ios_base::failure&) {
        throw NotReplayable(path + ": " + std::generic_category().message(errno));
    }
}

// A number of the head; 0 for what is none.
std::int64_t numberOf(const TraceEvent& head, const char* name, std::int64_t whenMissing) {
    const auto found = head.arguments.find(name);
    if (found == head.arguments.end()) {
        return whenMissing;
    }
    return TraceEvent::integer(nlohmann::json::array({*found}), 0);
}

}  // namespace

Recording::Recording(const std::string& path) {
    if (!std::ifstream(path)) {
        throw NotReplayable(path + ": " + std::generic_category().message(errno));
    }
    readBoth(path, textOf(path), textOf(path + ".old"));
}

Recording::Recording(const std::string& path, std::string newer, std::string older) {
    readBoth(path, std::move(newer), std::move(older));
}

void Recording::readBoth(const std::string& path, std::string newer, std::string older) {
    texts[0] = std::move(older);
    texts[1] = std::move(newer);
    // An older file may be left of another process: only what this one goes on from belongs to it.
    TraceEvent head;
    std::istringstream beginning(texts[1].substr(0, 1024));
    const bool isContinued =
        TraceReader(beginning).next(head) && head.phase == 'M' && numberOf(head, "part", 1) > 1;
    if (isContinued && !texts[0].empty()) {
        read(path + ".old", texts[0]);
    }
    read(path, texts[1]);
    if (all.empty()) {
        throw NotReplayable(path + ": no calls are in it");
    }
}

void Recording::read(const std::string& path, const std::string& text) {
    const std::string_view whole(text);
    bool hasHead = false;
    for (std::size_t from = 0; from < whole.size();) {
        const std::size_t end = whole.find('\n', from);
        if (end == std::string_view::npos) {
            break;  // the process ended while it wrote
        }
        const std::string_view line = whole.substr(from, end - from);
        from = end + 1;
        ++lines;
        ended = line == "{}]";
        TraceEvent event;
        if (line.empty() || line == "[" || ended) {
            continue;
        }
        const std::string where = path + ", line " + std::to_string(lines) + ": ";
        if (!TraceReader::parse(line, event)) {
            throw NotReplayable(where + "is no event of a timeline");
        }
        if (event.phase == 'M' && event.name == "sonolet_trace") {
            hasHead = true;
            const auto replayable = event.arguments.find("replayable");
            if (replayable == event.arguments.end() || *replayable != true) {
                throw NotReplayable(path + ": was not recorded with --replayable "
                                           "(SONOLET_TRACE_REPLAYABLE=1)");
            }
            if (numberOf(event, "bits", 0) > static_cast<int>(sizeof(void*) * 8)) {
                throw NotReplayable(path + ": is of a 64-bit process, this one has 32 bits");
            }
            if (numberOf(event, "part", 1) != ++parts) {
                throw NotReplayable(path + ": its beginning was dropped, the files of the timeline "
                                           "were full (SONOLET_TRACE_SIZE)");
            }
        } else if (event.phase == 'i' && event.name.rfind("lost ", 0) == 0) {
            throw NotReplayable(where + event.name + ": the disk was too slow for them");
        } else if (event.phase == 'X' || event.phase == 'B' || event.phase == 'E') {
            if (!hasHead) {
                break;
            }
            add(event, line);
            if (all.back().function == Fn::count) {
                throw NotReplayable(where + "nobody knows the call " + event.call);
            }
        }
    }
    if (!hasHead) {
        throw NotReplayable(path + ": is no timeline of the layer");
    }
}

void Recording::add(const TraceEvent& event, std::string_view line) {
    const auto of = std::find_if(open.begin(), open.end(),
                                 [&](const auto& each) { return each.first == event.thread; });
    std::vector<Fn>& calls =
        of != open.end() ? of->second : open.emplace_back(event.thread, std::vector<Fn>()).second;
    Step step{functionNamed(event.call), event.phase, event.thread, lines, line};
    if (event.phase == 'E') {
        step.function = calls.empty() ? Fn::count : calls.back();
        if (!calls.empty()) {
            calls.pop_back();
        }
    } else if (event.phase == 'B') {
        calls.push_back(step.function);
    }
    all.push_back(step);
}

TraceEvent Recording::event(const Step& step) {
    TraceEvent event;
    TraceReader::parse(step.text, event);
    return event;
}

double Recording::seconds() const {
    const TraceEvent last = event(all.back());
    return (last.time + last.duration) / 1e6;
}
