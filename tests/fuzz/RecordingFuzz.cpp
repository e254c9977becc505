// Recordings that are to be replayed: whatever a file has, it is refused with a reason or every
// step of it can be made, and its values become those of this process or are refused.

#include "Input.h"
#include "replay/Turns.h"
#include "replay/Twins.h"

#include <exception>
#include <map>

namespace {

// What the replay's host, library and device make of a value, by turns: at most one of these takes
// it, the others refuse.
void takenAs(Twins& twins, const nlohmann::json& value) {
    const auto attempt = [&](auto take) {
        try {
            take();
        } catch (const std::exception&) {
        }
    };
    attempt([&] {
        const auto* const object = twins.object(value);
        require((object == nullptr) == (Twins::address(value) == 0), "an object is lost");
    });
    attempt([&] {
        const char* const text = twins.text(value);
        require(text == nullptr || std::string(text).size() <= mostBytes, "a text has no end");
    });
    attempt([&] { twins.bytes(value); });
    attempt([&] {
        const jsplugin_value slot = twins.slot(value);
        require(slot.type != JSP_TYPE_NULL || value.is_null() || value.contains("type"),
                "a value is lost");
    });
}

void replay(const Recording& recording) {
    Turns turns(recording.steps());
    Twins twins;
    std::map<std::int64_t, int> depths;
    std::size_t steps = 0;
    for (Turns::Line* const line : turns.inOrder()) {
        require(!line->hasEnded(), "a thread without a step");
        steps += line->steps.size();
    }
    require(steps == recording.steps().size(), "steps are lost");
    for (const Step& step : recording.steps()) {
        const std::size_t made = turns.make(turns.line(step.thread));
        turns.pass();
        require(&recording.steps()[made] == &step, "steps are out of order");
        require(step.function != Fn::count, "a call that nobody knows");
        int& depth = depths[step.thread];
        depth += step.phase == 'B' ? 1 : step.phase == 'E' ? -1 : 0;
        require(depth >= 0, "more ends than beginnings");
        const TraceEvent event = Recording::event(step);
        require(event.phase == step.phase && event.thread == step.thread, "another event");
        for (const auto* const values : {&event.in(), &event.out()}) {
            for (const nlohmann::json& value : *values) {
                takenAs(twins, value);
            }
        }
    }
    turns.awaitEnd();
    require(turns.made() == recording.steps().size(), "steps are left");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string whole(reinterpret_cast<const char*>(data), size);
    // Two files are one behind the other with a NUL between.
    const std::size_t cut = whole.find('\0');
    try {
        replay(cut == std::string::npos
                   ? Recording("fuzz", whole, "")
                   : Recording("fuzz", whole.substr(cut + 1), whole.substr(0, cut)));
    } catch (const NotReplayable& reason) {
        require(*reason.what() != '\0', "no reason is given");
    }
    return 0;
}
