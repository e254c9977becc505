#include "validate/LibraryRules.h"

#include <string>
#include <string_view>

namespace {

constexpr std::uint64_t longestQuery = 60000000000;  // ns
constexpr int longestChain = 16;                     // of lenders

std::string_view nameOf(const Call& call) {
    return infoOf(call.function).name;
}

bool has(const Call& call, std::string_view part) {
    return nameOf(call).find(part) != std::string_view::npos;
}

bool isOfListOrImage(Fn function) {
    return (function >= Fn::tracks_added && function <= Fn::container_loaded) ||
           function == Fn::image_loaded;
}

bool mayComeAnytime(Fn function) {
    return function == Fn::music_delivery || function == Fn::end_of_track ||
           function == Fn::log_message || function == Fn::notify_main_thread;
}

// The number that the layer has given to a registration: the last argument.
std::int64_t registrationOf(const Call& call) {
    return call.arguments[call.count - 1].u.integer;
}

}  // namespace

void LibraryRules::began(const Call& call) {
    if (infoOf(call.function).caller == Party::Library) {
        beganCallback(call);
        return;
    }
    const bool isRelease = has(call, "_release") && call.function != Fn::sp_session_release;
    for (unsigned i = 0; i < call.count; ++i) {
        // Whether too much is given back is a question of its own.
        if (call.arguments[i].tag == Tag::Handle && !(isRelease && i == 0)) {
            checkHandle(call, call.arguments[i]);
        }
    }
    if (isRelease) {
        give(call);
    } else if (call.function == Fn::sp_session_process_events) {
        for (const Call* around = call.outer; around != nullptr; around = around->outer) {
            if (infoOf(around->function).caller == Party::Library) {
                findings.add(207, Party::Plugin, &call, call.arguments[0]);
                break;
            }
        }
    } else if (call.function == Fn::sp_session_player_play && call.arguments[1].u.integer != 0) {
        mayDeliver = true;
    } else if (call.function == Fn::sp_session_release) {
        endSession(call);
    } else if (has(call, "_remove_")) {
        const auto found = registrations.find(registrationOf(call));
        if (found == registrations.end() || found->second.isTakenAway) {
            findings.add(212, Party::Plugin, &call, call.arguments[0]);
        } else {
            found->second.isTakenAway = true;
        }
    } else if (call.function == Fn::sp_playlist_subscribers_free) {
        const void* const record = call.arguments[0].u.pointer;
        if (record == nullptr || subscribers.erase(record) == 0) {
            findings.add(219, Party::Plugin, &call, {});
        }
    } else if (startsQuery(call.function)) {
        queries[registrationOf(call)] = {nullptr, clock.now(), false};
    } else if (has(call, "_add_callbacks") || has(call, "_add_load_callback")) {
        registrations[registrationOf(call)] = {};
    }
}

void LibraryRules::ended(const Call& call, const Value* results, unsigned count) {
    if (call.function == Fn::music_delivery) {
        --deliveriesUnderWay;
        const std::int64_t taken = results[0].u.integer;
        if (taken < 0 || taken > call.arguments[3].u.integer) {
            findings.add(216, Party::Plugin, &call, call.arguments[0],
                         std::to_string(taken) + " of " +
                             std::to_string(call.arguments[3].u.integer));
        }
    } else if (infoOf(call.function).callee == Party::Library) {
        endedFunction(call, results, count);
    }
}

// ---- Handles ----

bool LibraryRules::isValid(const void* handle, int depth) const {
    const auto found = handles.find(handle);
    if (found == handles.end() || depth > longestChain) {
        return depth > longestChain;
    }
    if (found->second.owned > 0) {
        return true;
    }
    const auto lender = handles.find(found->second.lender);
    return lender != handles.end() && lender->second.life == found->second.lendersLife &&
           isValid(found->second.lender, depth + 1);
}

void LibraryRules::checkHandle(const Call& call, const Value& value) {
    const auto kind = static_cast<HandleKind>(value.kind);
    if (value.u.pointer == nullptr) {
        findings.add(202, Party::Plugin, &call, value, handleNames[value.kind]);
        return;
    }
    const auto found = handles.find(value.u.pointer);
    if (kind == HandleKind::Session && (found == handles.end() || found->second.owned == 0)) {
        findings.add(206, Party::Plugin, &call, value);
    } else if (found == handles.end()) {
        findings.add(203, Party::Plugin, &call, value, "never given");
    } else if (found->second.kind != kind) {
        findings.add(203, Party::Plugin, &call, value,
                     std::string("it is of kind ") +
                         handleNames[static_cast<int>(found->second.kind)]);
    } else if (!isValid(value.u.pointer)) {
        findings.add(203, Party::Plugin, &call, value, "given back before");
    }
}

// A reference that the plug-in owns from here on.
void LibraryRules::take(const Call& call, const Value& result) {
    Handle& handle = handles[result.u.pointer];
    if (!isValid(result.u.pointer) || static_cast<std::uint8_t>(handle.kind) != result.kind) {
        findings.forget(result.u.pointer);
        handle = {static_cast<HandleKind>(result.kind), 0, nullptr, ++lastLife, 0};
    }
    ++handle.owned;
    (void)call;
}

void LibraryRules::lend(const void* handle, HandleKind kind, const void* lender) {
    if (handle == nullptr) {
        return;
    }
    const auto lenders = handles.find(lender);
    const std::uint64_t lendersLife = lenders != handles.end() ? lenders->second.life : 0;
    Handle& lent = handles[handle];
    if (!isValid(handle) || lent.kind != kind) {
        lent = {kind, 0, nullptr, ++lastLife, 0};
    }
    // A chain that leads back to itself would keep nothing valid.
    for (const void* each = lender; each != nullptr;) {
        if (each == handle) {
            return;
        }
        const auto next = handles.find(each);
        each = next != handles.end() ? next->second.lender : nullptr;
    }
    lent.lender = lender;
    lent.lendersLife = lendersLife;
}

void LibraryRules::give(const Call& call) {
    const Value& value = call.arguments[0];
    if (value.u.pointer == nullptr) {
        findings.add(202, Party::Plugin, &call, value, handleNames[value.kind]);
        return;
    }
    const auto found = handles.find(value.u.pointer);
    if (found == handles.end() || found->second.owned == 0) {
        findings.add(204, Party::Plugin, &call, value);
        return;
    }
    if (--found->second.owned == 0) {
        for (auto each = queries.begin(); each != queries.end();) {
            const bool isDone = each->second.handle == value.u.pointer && each->second.isAnswered;
            each = isDone ? queries.erase(each) : std::next(each);
        }
    }
}

// What a callback brings is borrowed from what it is about.
void LibraryRules::lendArguments(const Call& call) {
    const Value& subject = call.arguments[0];
    for (unsigned i = 1; i < call.count; ++i) {
        const Value& value = call.arguments[i];
        if (value.tag == Tag::Handle) {
            lend(value.u.pointer, static_cast<HandleKind>(value.kind), subject.u.pointer);
        } else if (value.tag == Tag::Handles && value.u.pointer != nullptr) {
            for (std::uint32_t k = 0; k < value.size; ++k) {
                lend(static_cast<const void* const*>(value.u.pointer)[k],
                     static_cast<HandleKind>(value.kind), subject.u.pointer);
            }
        }
    }
}

void LibraryRules::endSession(const Call& call) {
    for (const auto& [handle, state] : handles) {
        // A link is a few words that go with the session; the plug-in leaves it at that.
        if (state.owned > 0 && state.kind != HandleKind::Session &&
            state.kind != HandleKind::Link) {
            findings.add(205, Party::Plugin, &call,
                         Value::of(Tag::Handle, handle, 0, static_cast<std::uint8_t>(state.kind)),
                         std::to_string(state.owned) + " times");
        }
    }
    handles.clear();
    queries.clear();
    session = nullptr;
    hasSessionEnded = true;
    mayDeliver = false;
}

// ---- Callbacks ----

void LibraryRules::beganCallback(const Call& call) {
    const Value& subject = call.arguments[0];
    if (hasSessionEnded && session == nullptr) {
        findings.add(209, Party::Library, &call, subject);
        return;
    }
    if (!mayComeAnytime(call.function) && !call.isInside(Fn::sp_session_process_events) &&
        call.function != Fn::get_audio_buffer_stats) {
        findings.add(208, Party::Library, &call, subject, "outside sp_session_process_events");
    }
    lendArguments(call);
    if (completesQuery(call.function)) {
        const auto found = queries.find(registrationOf(call));
        const bool isKnown = found != queries.end() && !found->second.isAnswered;
        const auto handle = handles.find(subject.u.pointer);
        const bool isReleased = handle == handles.end() || handle->second.owned == 0;
        if (!isKnown || isReleased) {
            findings.add(210, Party::Library, &call, subject,
                         isReleased ? "it was released" : "a second time");
        }
        if (found != queries.end()) {
            found->second.isAnswered = true;
        }
    } else if (isOfListOrImage(call.function)) {
        const auto found = registrations.find(registrationOf(call));
        if (found == registrations.end() || found->second.isTakenAway) {
            findings.add(211, Party::Library, &call, subject);
        }
    } else if (call.function == Fn::music_delivery) {
        beganDelivery(call);
    }
}

void LibraryRules::beganDelivery(const Call& call) {
    const Value& subject = call.arguments[0];
    if (++deliveriesUnderWay > 1) {
        findings.add(214, Party::Library, &call, subject);
    }
    if (!mayDeliver) {
        findings.add(215, Party::Library, &call, subject);
    }
    const Value& format = call.arguments[1];
    const auto* const numbers = static_cast<const int*>(format.u.pointer);
    const bool isFormat = format.tag == Tag::Integers && numbers != nullptr && numbers[0] == 0 &&
                          numbers[1] > 0 && numbers[2] > 0;
    if (!isFormat || call.arguments[3].u.integer < 0) {
        findings.add(217, Party::Library, &call, subject,
                     std::to_string(call.arguments[3].u.integer) + " frames");
    }
}

// ---- Results ----

void LibraryRules::endedFunction(const Call& call, const Value* results, unsigned count) {
    checkResults(call, results, count);
    const Value& result = results[0];
    switch (call.function) {
    case Fn::sp_session_create:
        if (result.u.integer == 0 && count > 1 && results[1].u.pointer != nullptr) {
            session = results[1].u.pointer;
            hasSessionEnded = false;
            handles[session] = {HandleKind::Session, 1, nullptr, ++lastLife, 0};
        }
        return;
    case Fn::sp_session_process_events:
        checkQueries(call);
        return;
    case Fn::sp_session_player_load:
    case Fn::sp_session_player_unload:
        // From now on nothing of the earlier track is in flight.
        mayDeliver = false;
        return;
    case Fn::sp_playlist_subscribers:
        if (result.u.pointer != nullptr) {
            subscribers.insert(result.u.pointer);
        }
        return;
    default:
        break;
    }
    if (has(call, "_add_ref")) {
        if (result.u.integer == 0) {
            ++handles[call.arguments[0].u.pointer].owned;
        }
    } else if (result.tag == Tag::Handle && result.u.pointer != nullptr) {
        if (has(call, "_create")) {
            take(call, result);
            if (startsQuery(call.function)) {
                queries[registrationOf(call)].handle = result.u.pointer;
            }
        } else {
            lend(result.u.pointer, static_cast<HandleKind>(result.kind),
                 call.arguments[0].u.pointer);
        }
    }
}

void LibraryRules::checkQueries(const Call& call) {
    for (auto& [number, query] : queries) {
        const auto handle = handles.find(query.handle);
        const bool isWaiting = !query.isAnswered && handle != handles.end() &&
                               handle->second.owned > 0 &&
                               clock.now() - query.askedAt > longestQuery;
        if (isWaiting) {
            query.isAnswered = true;  // told once
            findings.add(213, Party::Library, &call,
                         Value::of(Tag::Handle, query.handle, 0,
                                   static_cast<std::uint8_t>(handle->second.kind)),
                         "for a minute");
        }
    }
}

void LibraryRules::checkResults(const Call& call, const Value* results, unsigned count) {
    std::string wrong;
    const std::int64_t number = results[0].u.integer;
    if (results[0].tag == Tag::Integer) {
        const bool isCount =
            has(call, "_num_") || has(call, "_total_") || call.function == Fn::sp_track_duration;
        const bool isBelow = isCount && number < 0;
        if (isBelow || (call.function == Fn::sp_track_popularity && (number < 0 || number > 100))) {
            wrong = std::to_string(number);
        } else if (call.function == Fn::sp_session_process_events && count > 1 &&
                   results[1].u.integer < 0) {
            wrong = "to be called again in " + std::to_string(results[1].u.integer) + " ms";
        } else if (call.function == Fn::sp_session_create && number == 0 &&
                   (count < 2 || results[1].u.pointer == nullptr)) {
            wrong = "no session";
        }
    } else if (results[0].tag == Tag::Text && results[0].u.text == nullptr &&
               (call.function == Fn::sp_build_id || call.function == Fn::sp_error_message)) {
        wrong = "NULL";
    }
    if (!wrong.empty()) {
        findings.add(218, Party::Library, &call, call.count > 0 ? call.arguments[0] : Value(),
                     wrong);
    }
}
