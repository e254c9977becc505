#include "validate/HostRules.h"

#include <algorithm>
#include <initializer_list>
#include <string>

namespace {

// A poll this much later than its interval has been forgotten. The backend has one second and a
// half of sound, and the framework's events wait as long.
constexpr std::uint64_t latest = 3000000000;  // ns
constexpr std::size_t mostDestroyed = 100000;

bool isOneOf(std::int64_t code, std::initializer_list<int> codes) {
    return std::find(codes.begin(), codes.end(), code) != codes.end();
}

const void* first(const Call& call) {
    return call.arguments[0].u.pointer;
}

}  // namespace

// ---- Calls ----

void HostRules::began(const Call& call) {
    switch (call.function) {
    case Fn::init: {
        Document& document = documents[first(call)];
        if (document.isOpen && !document.isUnloaded) {
            findings.add(115, Party::Host, &call, call.arguments[0]);
        }
        document = Document();
        document.isOpen = true;
        objects.erase(first(call));
        break;
    }
    case Fn::gc_trace:
        use(call, 0, Party::Host);
        break;
    case Fn::getter:
    case Fn::setter:
        ++callsFromScript;
        use(call, 0, Party::Host);
        if (call.function == Fn::setter) {
            checkValue(call, call.arguments[2], Party::Host);
        }
        break;
    case Fn::call:
        ++callsFromScript;
        use(call, 1, Party::Host);
        checkArguments(call, 2, Party::Host);
        break;
    case Fn::destructor:
        beganDestructor(call);
        break;
    case Fn::poll:
        beganPoll(call);
        break;
    case Fn::unload:
        beganUnload(call);
        break;
    case Fn::create_function:
    case Fn::create_object:
    case Fn::add_poll_function:
    case Fn::add_unload_listener:
        use(call, 0, Party::Plugin);
        checkMaking(call);
        break;
    case Fn::call_function:
        use(call, 0, Party::Plugin);
        use(call, 1, Party::Plugin);
        use(call, 2, Party::Plugin);
        checkArguments(call, 3, Party::Plugin);
        break;
    case Fn::gc_mark:
        use(call, 0, Party::Plugin);
        if (!call.isInside(Fn::document_gc_trace) && !call.isInside(Fn::gc_trace)) {
            findings.add(116, Party::Plugin, &call, call.arguments[0]);
        }
        break;
    default:
        break;
    }
}

void HostRules::ended(const Call& call, const Value* results, unsigned count) {
    switch (call.function) {
    case Fn::getter:
    case Fn::global_getter:
    case Fn::setter:
    case Fn::global_setter:
    case Fn::call:
        checkAnswer(call, results, count);
        break;
    case Fn::poll:
        if (!isOneOf(results[0].u.integer, {0, 1})) {
            findings.add(107, Party::Plugin, &call, call.arguments[0],
                         "answer " + std::to_string(results[0].u.integer));
        }
        endedPoll(call, results[0].u.integer != 0);
        break;
    case Fn::unload:
        documents[first(call)].isUnloaded = true;
        break;
    case Fn::destroy:
        documents.erase(first(call));
        break;
    case Fn::create_function:
    case Fn::create_object:
        if (count > 1 && results[1].u.pointer == nullptr) {
            findings.add(108, Party::Host, &call, call.arguments[0], "no object");
        } else if (count > 1) {
            // Another object of another life was here.
            findings.forget(results[1].u.pointer);
            objects[results[1].u.pointer] = {documentOf(first(call)), false};
        }
        break;
    case Fn::add_poll_function:
        if (results[0].u.integer == 0) {
            Poll& poll = documents[documentOf(first(call))].polls[call.arguments[2].u.pointer];
            poll = Poll();
            poll.interval = static_cast<std::uint64_t>(call.arguments[1].u.integer) * 1000000;
        }
        break;
    case Fn::add_unload_listener:
        if (results[0].u.integer == 0) {
            documents[documentOf(first(call))].unloads[call.arguments[1].u.pointer] = false;
        }
        break;
    default:
        break;
    }
}

// ---- Objects ----

const void* HostRules::documentOf(const void* object) const {
    const auto found = objects.find(object);
    return found != objects.end() ? found->second.document : object;
}

void HostRules::use(const Call& call, unsigned argument, Party blame) {
    const auto found = objects.find(call.arguments[argument].u.pointer);
    if (found != objects.end() && found->second.isDestroyed) {
        findings.add(104, blame, &call, call.arguments[argument]);
    }
}

void HostRules::beganDestructor(const Call& call) {
    Object& object = objects[first(call)];
    if (object.isDestroyed) {
        findings.add(105, Party::Host, &call, call.arguments[0]);
    }
    for (const Call* around = call.outer; around != nullptr; around = around->outer) {
        const bool isOn =
            (around->function == Fn::getter || around->function == Fn::setter ||
             around->function == Fn::call) &&
            (first(*around) == first(call) ||
             (around->function == Fn::call && around->arguments[1].u.pointer == first(call)));
        if (isOn) {
            findings.add(106, Party::Host, &call, call.arguments[0],
                         std::string("inside ") + infoOf(around->function).name);
            break;
        }
    }
    object.isDestroyed = true;
    if (objects.size() > mostDestroyed) {
        for (auto each = objects.begin(); each != objects.end();) {
            each = each->second.isDestroyed ? objects.erase(each) : std::next(each);
        }
        objects[first(call)].isDestroyed = true;
    }
}

void HostRules::checkMaking(const Call& call) {
    const auto found = documents.find(documentOf(first(call)));
    if (found != documents.end() && found->second.isUnloaded) {
        findings.add(114, Party::Plugin, &call, call.arguments[0]);
    }
}

// ---- Values ----

void HostRules::checkArguments(const Call& call, unsigned count, Party blame) {
    const std::int64_t told = call.arguments[count].u.integer;
    if (told < 0 || static_cast<std::uint64_t>(told) != call.count - count - 1) {
        findings.add(109, blame, &call, call.arguments[0],
                     std::to_string(told) + " told, " + std::to_string(call.count - count - 1) +
                         " there");
    }
    for (unsigned i = count + 1; i < call.count; ++i) {
        checkValue(call, call.arguments[i], blame);
    }
}

void HostRules::checkValue(const Call& call, const Value& value, Party blame) {
    const Value& about = call.arguments[0];
    switch (value.tag) {
    case Tag::Nothing:
        findings.add(108, blame, &call, about,
                     "type " + std::to_string(static_cast<int>(value.size)));
        break;
    case Tag::Expression:
        if (blame == Party::Host) {
            findings.add(108, blame, &call, about, "type 7 is the plug-in's alone");
        }
        break;
    case Tag::Text:
        if (value.u.text == nullptr) {
            findings.add(108, blame, &call, about, "a string that is NULL");
        }
        break;
    case Tag::Object: {
        if (value.u.pointer == nullptr) {
            findings.add(108, blame, &call, about, "an object that is NULL");
            break;
        }
        const auto found = objects.find(value.u.pointer);
        if (found != objects.end() && found->second.isDestroyed) {
            if (value.kind != 0) {
                findings.add(104, blame, &call, value);
            } else {
                objects.erase(found);  // an object of the page has come to its address
            }
        }
        break;
    }
    default:
        break;
    }
}

void HostRules::checkAnswer(const Call& call, const Value* results, unsigned count) {
    const std::int64_t code = results[0].u.integer;
    const bool isGetter = call.function == Fn::getter || call.function == Fn::global_getter;
    const bool isThere = isGetter                    ? isOneOf(code, {0, 1, 2, 3, 5})
                         : call.function == Fn::call ? isOneOf(code, {0, 1, 2, 4})
                                                     : isOneOf(code, {1, 3, 4, 5});
    if (!isThere) {
        findings.add(107, Party::Plugin, &call, call.arguments[0],
                     "answer " + std::to_string(code));
    }
    if (count > 1) {
        checkValue(call, results[1], Party::Plugin);
        const bool isException = code == (call.function == Fn::call ? 4 : 5);
        if (isException && results[1].tag != Tag::Text) {
            findings.add(108, Party::Plugin, &call, call.arguments[0],
                         "an exception without a message");
        }
    }
}

// ---- Documents ----

void HostRules::beganPoll(const Call& call) {
    Document& document = documents[first(call)];
    Poll& poll = document.polls[call.arguments[1].u.pointer];
    if (poll.hasEnded || document.isUnloaded) {
        findings.add(112, Party::Host, &call, call.arguments[0],
                     poll.hasEnded ? "it answered 0" : "the document has gone");
    }
    if (poll.isRunning) {
        findings.add(111, Party::Host, &call, call.arguments[0]);
    } else if (poll.endedAt != 0 && poll.callsAt == callsFromScript) {
        // Script that was busy with the plug-in is the page's affair.
        const std::uint64_t passed = clock.now() - poll.endedAt;
        const std::uint64_t busy = clock.busy() - poll.busyAt;
        if (passed > poll.interval + latest && passed - poll.interval - latest > busy) {
            findings.add(110, Party::Host, &call, call.arguments[0],
                         std::to_string(passed / 1000000) + " ms after the last");
        }
    }
    poll.isRunning = true;
}

void HostRules::endedPoll(const Call& call, bool goesOn) {
    Document& document = documents[first(call)];
    Poll& poll = document.polls[call.arguments[1].u.pointer];
    poll.isRunning = false;
    poll.hasEnded = !goesOn;
    poll.endedAt = clock.now();
    poll.busyAt = clock.busy();
    poll.callsAt = callsFromScript;
}

void HostRules::beganUnload(const Call& call) {
    bool& wasCalled = documents[first(call)].unloads[call.arguments[1].u.pointer];
    if (wasCalled) {
        findings.add(113, Party::Host, &call, call.arguments[0]);
    }
    wasCalled = true;
}
