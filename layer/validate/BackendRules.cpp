#include "validate/BackendRules.h"

#include <cmath>
#include <string>

namespace {

constexpr std::size_t mostReleased = 64;

}  // namespace

void BackendRules::began(const Call& call) {
    if (call.function == Fn::requestBackend) {
        const Value& client = call.arguments[1];
        findings.forget(client.u.pointer);
        for (auto each = backends.begin();
             backends.size() > mostReleased && each != backends.end();) {
            each = each->second.isReleased ? backends.erase(each) : std::next(each);
        }
        backends[client.u.pointer] = {};
        if (call.arguments[2].u.integer == 0) {
            findings.add(309, Party::Plugin, &call, client, "no client");
        }
        return;
    }
    if (call.function == Fn::handleEvent) {
        beganEvent(call);
        return;
    }
    if (call.function == Fn::getDRMBackend) {
        return;
    }
    const auto found = backends.find(call.arguments[0].u.pointer);
    if (found == backends.end() || found->second.isReleased) {
        findings.add(302, Party::Plugin, &call, call.arguments[0]);
        return;
    }
    if (call.function == Fn::setSource && call.arguments[2].u.integer < 0) {
        findings.add(309, Party::Plugin, &call, call.arguments[0], "no source");
    } else if (call.function == Fn::writeData) {
        beganWrite(call, found->second);
    } else if (call.function == Fn::releaseBackend) {
        beganRelease(call, found->second);
    }
}

void BackendRules::ended(const Call& call, const Value* results) {
    const auto found =
        backends.find(call.arguments[call.function == Fn::requestBackend ? 1 : 0].u.pointer);
    if (found == backends.end()) {
        return;
    }
    if (call.function == Fn::releaseBackend) {
        // What was not answered is the client's to free.
        found->second.isReleased = true;
        found->second.waiting.clear();
    } else if (call.function == Fn::requestBackend && results[0].u.integer == 0) {
        found->second.isReleased = true;
    } else if (call.function == Fn::handleEvent && results[0].u.integer == 0) {
        found->second.waiting.erase(call.arguments[1].u.pointer);
    } else if (call.function == Fn::getPosition) {
        const double position = results[0].u.number;
        if (std::isnan(position) || position < 0) {
            findings.add(310, Party::Backend, &call, call.arguments[0], std::to_string(position));
        }
    }
}

void BackendRules::beganEvent(const Call& call) {
    const auto found = backends.find(call.arguments[0].u.pointer);
    if (found == backends.end() || found->second.isReleased) {
        findings.add(303, Party::Backend, &call, call.arguments[0]);
        return;
    }
    if (call.arguments[1].u.pointer == nullptr) {
        findings.add(308, Party::Backend, &call, call.arguments[0], "no event");
    } else if (call.count > 4) {
        const std::int64_t size = call.arguments[4].u.integer;
        if (size == 0 || call.arguments[5].u.pointer == nullptr) {
            findings.add(308, Party::Backend, &call, call.arguments[0]);
        }
        Backend& backend = found->second;
        backend.waiting[call.arguments[1].u.pointer] = {++backend.lastRequest, size};
    }
}

void BackendRules::beganWrite(const Call& call, Backend& backend) {
    const Value& about = call.arguments[0];
    const std::int64_t size = call.arguments[2].u.integer;
    const auto request = backend.waiting.find(call.arguments[1].u.pointer);
    if (request == backend.waiting.end()) {
        findings.add(304, Party::Plugin, &call, about);
    } else {
        if (size > request->second.size) {
            findings.add(305, Party::Plugin, &call, about,
                         std::to_string(size) + " bytes of " +
                             std::to_string(request->second.size));
        }
        backend.lastAnswered = request->second.number;
        backend.waiting.erase(request);
    }
    if (backend.hasEnded && size > 0) {
        findings.add(307, Party::Plugin, &call, about);
    }
    backend.hasEnded = backend.hasEnded || call.arguments[3].u.integer == 1;
}

void BackendRules::beganRelease(const Call& call, Backend& backend) {
    for (const auto& [event, request] : backend.waiting) {
        if (request.number < backend.lastAnswered) {
            findings.add(306, Party::Plugin, &call, call.arguments[0],
                         "request " + std::to_string(request.number) + " of " +
                             std::to_string(backend.lastRequest));
        }
    }
}
