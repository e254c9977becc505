#include "calls/Story.h"

#include <algorithm>
#include <cctype>

namespace {

constexpr std::size_t mostCauses = 512;
constexpr std::size_t mostInterests = 4096;

// "playlist_renamed", "PlaylistRenamed", "onPlaylistRenamed" and "PlaylistRenamedEvent" are one.
std::string keyOf(std::string_view name) {
    std::string key;
    for (const char c : name) {
        if (std::isalnum(static_cast<unsigned char>(c)) != 0) {
            key += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        }
    }
    constexpr std::string_view event = "event";
    if (key.size() > event.size() &&
        key.compare(key.size() - event.size(), event.size(), event) == 0) {
        key.resize(key.size() - event.size());
    }
    return key;
}

std::string numberKey(std::int64_t registration) {
    return "#" + std::to_string(registration);
}

bool hasPart(std::string_view name, std::string_view part) {
    return name.find(part) != std::string_view::npos;
}

}  // namespace

void Story::follow(const Event& event, std::string_view member) {
    arrows.clear();
    mark.clear();
    title.clear();
    const Place place{event.head.thread, event.head.began};
    if (event.is(Fn::count)) {
        mark = event.text(0);
        return;
    }
    const FunctionInfo& function = infoOf(event.head.function);
    if (function.caller == Party::Host) {
        followScript(event, member);
    } else if (event.is(Fn::call_function)) {
        followListener(event, place);
    } else if (function.caller == Party::Library) {
        followLibrary(event, place);
    }
    followSound(event, place);
    countHandles(event);
    if (event.is(Fn::KlogPrintf) && event.hasArguments() && event.integer(0) >= 5) {
        mark = "log: " + std::string(event.text(3));
    } else if (event.hasResults() && function.callee == Party::Library &&
               hasPart(function.name, "sp_session_player_")) {
        mark = std::string(function.name + sizeof "sp_session_player" - 1 + 1);
        if (event.resultInteger(0) != 0) {
            mark += " fails: error " + std::to_string(event.resultInteger(0));
        }
    }
}

// ---- Events ----

void Story::listen(const void* function, const std::string& key, std::string_view name) {
    if (function == nullptr || interests.size() >= mostInterests) {
        return;
    }
    std::vector<Interest>& ofFunction = interests[function];
    const auto found = std::find_if(ofFunction.begin(), ofFunction.end(),
                                    [&](const Interest& each) { return each.key == key; });
    if (found == ofFunction.end()) {
        ofFunction.push_back({key, std::string(name), lastCause});
    }
}

void Story::remember(std::string key, const Place& place) {
    causes.push_back({std::move(key), ++lastCause, place});
    if (causes.size() > mostCauses) {
        causes.pop_front();
    }
}

void Story::followScript(const Event& event, std::string_view member) {
    if (!event.hasArguments()) {
        return;
    }
    if (event.is(Fn::init)) {
        mark = "document opens";
    } else if (event.is(Fn::unload)) {
        mark = "document unloads";
    } else if (event.is(Fn::document_gc_trace)) {
        mark = "collection";
    } else if (event.is(Fn::setter) && event.text(1).substr(0, 2) == "on") {
        listen(event.pointer(2), keyOf(event.text(1).substr(2)), event.text(1).substr(2));
    } else if (event.is(Fn::call)) {
        offered.clear();
        for (std::size_t i = 3; i < event.arguments.size(); ++i) {
            if (event.pointer(i) != nullptr) {
                offered.push_back(event.pointer(i));
            }
        }
        if (member == "addEventListener") {
            listen(event.pointer(4), keyOf(event.text(3)), event.text(3));
        }
    }
}

void Story::followListener(const Event& event, const Place& place) {
    const auto found = event.hasArguments() ? interests.find(event.pointer(2)) : interests.end();
    if (found == interests.end()) {
        return;
    }
    const Cause* first = nullptr;
    Interest* of = nullptr;
    for (Interest& interest : found->second) {
        const auto cause = std::find_if(causes.begin(), causes.end(), [&](const Cause& each) {
            return each.number > interest.after && each.name == interest.key;
        });
        if (cause != causes.end() && (first == nullptr || cause->number < first->number)) {
            first = &*cause;
            of = &interest;
        }
    }
    title = of != nullptr ? of->name : found->second.front().name;
    if (of != nullptr) {
        of->after = first->number;
        arrows.push_back({title, first->place, place});
        if (of->key.front() == '#') {
            interests.erase(found);  // a query ends once
        }
    }
}

void Story::followLibrary(const Event& event, const Place& place) {
    if (!event.hasArguments()) {
        return;
    }
    if (completesQuery(event.head.function)) {
        remember(numberKey(event.integer(1)), place);
    } else if (!event.is(Fn::music_delivery) && !event.is(Fn::get_audio_buffer_stats)) {
        remember(keyOf(infoOf(event.head.function).name), place);
    }
    if (event.is(Fn::connection_error) || event.is(Fn::streaming_error)) {
        mark =
            std::string(infoOf(event.head.function).name) + " " + std::to_string(event.integer(1));
    } else if (event.is(Fn::end_of_track) || event.is(Fn::play_token_lost)) {
        mark = infoOf(event.head.function).name;
    }
}

// ---- Sound ----

void Story::followSound(const Event& event, const Place& place) {
    const auto restart = [this] {
        deliveries.clear();
        delivered = written = 0;
        now.ringBytes = 0;
    };
    if (startsQuery(event.head.function) && event.hasArguments() && !event.arguments.empty()) {
        for (const void* const function : offered) {
            listen(function, numberKey(event.integer(event.arguments.size() - 1)),
                   infoOf(event.head.function).name + sizeof "sp_" - 1);
        }
    } else if (event.is(Fn::sp_session_player_load) && event.hasResults()) {
        restart();
    } else if (event.is(Fn::music_delivery)) {
        deliver(event, place);
    } else if (event.is(Fn::handleEvent) && event.hasArguments()) {
        if (event.integer(2) == 1) {
            requests[event.pointer(1)] = place;
        } else if (event.integer(2) == 4) {
            remember("trackcomplete", place);
            mark = "played to the end";
        } else if (event.integer(2) == 22) {
            mark = "underrun";
        }
    } else if (event.is(Fn::getPosition)) {
        remember("trackprogress", place);
    } else if (event.is(Fn::writeData) && event.hasArguments()) {
        const auto request = requests.find(event.pointer(1));
        if (request != requests.end()) {
            arrows.push_back({"request", request->second, place});
            requests.erase(request);
        }
        written += static_cast<std::uint64_t>(std::max<std::int64_t>(0, event.integer(2)));
        // By the header of the stream more is written than was delivered: no arrow leads back.
        while (!deliveries.empty() && deliveries.front().begin < written &&
               deliveries.front().place.time <= place.time) {
            arrows.push_back({"sound", deliveries.front().place, place});
            deliveries.pop_front();
        }
        if (event.integer(3) == 1) {
            mark = "end of stream written";
        }
    } else if (event.is(Fn::releaseBackend) && event.hasResults()) {
        requests.clear();
        restart();
    }
    now.ringBytes = static_cast<std::int64_t>(delivered) - static_cast<std::int64_t>(written);
    now.waitingRequests = static_cast<std::int64_t>(requests.size());
}

void Story::deliver(const Event& event, const Place& place) {
    if (event.arguments.size() > 1) {
        const Value& format = event.arguments[1];
        if (format.tag == Tag::Integers && format.size == 3 && format.u.pointer != nullptr) {
            bytesPerFrame = 2 * std::max(1, static_cast<const int*>(format.u.pointer)[2]);
        }
    }
    const std::int64_t taken = event.hasResults() ? event.resultInteger(0) : 0;
    if (taken > 0) {
        deliveries.push_back({delivered, place});
        delivered += static_cast<std::uint64_t>(taken * bytesPerFrame);
    }
}

void Story::countHandles(const Event& event) {
    const FunctionInfo& function = infoOf(event.head.function);
    if (!event.hasResults() || function.callee != Party::Library) {
        return;
    }
    const std::string_view name = function.name;
    if (hasPart(name, "_add_ref") ||
        (hasPart(name, "_create") && event.resultPointer(0) != nullptr)) {
        ++now.handles;
    } else if (hasPart(name, "_release") && !event.is(Fn::sp_session_release)) {
        --now.handles;
    }
}
