#include "replay/Replayer.h"

#include "tools/Follow.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <mutex>
#include <utility>

using nlohmann::json;

namespace {

// Of the thread that asks.
struct Self {
    Turns::Line* line = nullptr;
    std::size_t read = 0;             // the step that was taken apart last
    std::vector<std::size_t> inside;  // calls into the plug-in, by the step of their beginning
    std::vector<json> marks;          // what is still to be marked in this row of gc_mark
};
thread_local Self self;

std::string listOf(const json& values) {
    std::string text;
    for (const json& value : values) {
        text += (text.empty() ? "" : ", ") + readable(value);
    }
    return text;
}

std::string wordsOf(const std::string& name, const json& in) {
    return name + "(" + listOf(in) + ")";
}

std::string returnOf(const std::string& name, const json& out) {
    return "return from " + name + (out.empty() ? "" : " = " + listOf(out));
}

// Argument 1 is the plug-in's own and new: its address may have been another thing's before.
bool bringsOwn(Fn function) {
    return function == Fn::requestBackend || function == Fn::sp_playlist_add_callbacks ||
           function == Fn::sp_playlistcontainer_add_callbacks;
}

}  // namespace

Replayer::Replayer(const Recording& itsRecording, std::string itsProgram)
    : turns(itsRecording.steps()), recording(itsRecording), steps(itsRecording.steps()),
      program(std::move(itsProgram)) {}

TraceEvent Replayer::read(std::size_t step) const {
    self.read = step;
    return Recording::event(steps[step]);
}

// ---- Calls into the plug-in ----

void Replayer::enter(Turns::Line& line) {
    self.line = &line;
}

void Replayer::drive() {
    while (!self.line->hasEnded() && steps[self.line->next()].goesIn()) {
        perform();
    }
}

void Replayer::perform() {
    const std::size_t step = turns.make(*self.line);
    const TraceEvent event = read(step);
    const auto how = invocations.find(steps[step].function);
    if (how == invocations.end()) {
        refuse(std::string(infoOf(steps[step].function).name) + " cannot be called here");
    }
    self.inside.push_back(step);
    reading([&] { how->second(event.in()); });
}

json Replayer::resultsOfThis() const {
    const std::size_t step = self.inside.back();
    return steps[step].phase == 'X' ? read(step).out() : json::array();
}

// ---- Calls of the plug-in ----

json Replayer::answered() {
    std::size_t step = turns.make(*self.line);
    if (steps[step].phase == 'B') {
        turns.pass();
        drive();
        if (self.line->hasEnded()) {
            rest();
        }
        step = turns.make(*self.line);
        if (steps[step].phase != 'E') {
            self.read = step;
            refuse("the call around this one does not end");
        }
    }
    return read(step).out();
}

json Replayer::argumentsOfNext() const {
    return self.line->hasEnded() ? json() : read(self.line->next()).in();
}

json Replayer::answerOfNext(Fn function) const {
    const bool isNext = self.line != nullptr && !self.line->hasEnded() &&
                        steps[self.line->next()].function == function;
    return isNext ? read(self.line->next()).out() : json();
}

// ---- Comparison ----

json Replayer::told(const Value* values, unsigned count, const json& expected) {
    json all = json::array();
    for (unsigned i = 0; i < count; ++i) {
        all.push_back(twins.told(values[i], i < expected.size() ? expected[i] : json()));
    }
    return all;
}

// Of a line of the log the source's line may change. What a trace marks is one set: the plug-in has
// it in tables whose order follows from addresses.
bool Replayer::isSame(Fn function, const json& seen, const json& expected) const {
    if (function == Fn::gc_mark) {
        std::vector<json>& marks = self.marks;
        if (marks.empty()) {
            const auto& row = self.line->steps;
            for (std::size_t i = self.line->at;
                 i < row.size() && steps[row[i]].function == Fn::gc_mark; ++i) {
                marks.push_back(Recording::event(steps[row[i]]).in());
            }
        }
        const auto found = std::find(marks.begin(), marks.end(), seen);
        const bool isOneOfThem = found != marks.end();
        if (isOneOfThem) {
            marks.erase(found);
        }
        return isOneOfThem;
    }
    if (function == Fn::KlogPrintf && seen.size() == 4 && expected.size() == 4) {
        return seen[0] == expected[0] && seen[3] == expected[3];
    }
    return seen == expected;
}

void Replayer::began(Call& call) noexcept {
    if (infoOf(call.function).caller != Party::Plugin) {
        return;
    }
    reading([&] { compareCall(call); });
}

void Replayer::ended(Call& call, const Value* results, unsigned count) noexcept {
    if (infoOf(call.function).caller == Party::Plugin) {
        if (call.outer == nullptr) {
            turns.pass();
        }
        return;
    }
    reading([&] { compareReturn(results, count); });
}

void Replayer::compareCall(const Call& call) {
    const char* const name = infoOf(call.function).name;
    const json nothing = json::array();
    if (self.line == nullptr) {
        self.read = std::max<std::size_t>(turns.made(), 1) - 1;
        refuse(std::string(name) + " comes from a thread that the plug-in has made");
    }
    if (self.line->hasEnded()) {
        if (!recording.isWhole()) {
            rest();
        }
        differ("nothing more", wordsOf(name, told(call.arguments, call.count, nothing)));
    }
    const Step& step = steps[self.line->next()];
    const bool isThis = step.function == call.function && step.phase != 'E';
    const json expected = isThis ? read(self.line->next()).in() : nothing;
    if (isThis && bringsOwn(call.function) && expected.size() > 1) {
        twins.pair(Twins::address(expected[1]), call.arguments[1].u.pointer);
    }
    const json seen = told(call.arguments, call.count, expected);
    if (!isThis || !isSame(call.function, seen, expected)) {
        differ(text(step), wordsOf(name, seen));
    }
    if (call.outer != nullptr) {
        turns.pass();
    }
    if (call.function == Fn::threshold) {
        answered();
    }
}

void Replayer::compareReturn(const Value* results, unsigned count) {
    std::size_t step = self.inside.back();
    const std::string name = Recording::event(steps[step]).name;
    if (steps[step].phase == 'B') {
        const bool isKnown = !self.line->hasEnded();
        if (!isKnown && !recording.isWhole()) {
            rest();
        }
        if (!isKnown || steps[self.line->next()].phase != 'E') {
            differ(isKnown ? text(steps[self.line->next()]) : "nothing more",
                   returnOf(name, told(results, count, json::array())));
        }
        turns.pass();
        step = turns.make(*self.line);
    }
    const json expected = read(step).out();
    const json seen = told(results, count, expected);
    if (seen != expected) {
        differ(returnOf(name, expected), returnOf(name, seen));
    }
    self.inside.pop_back();
    turns.pass();
}

// ---- Ends ----

std::string Replayer::text(const Step& step) const {
    const TraceEvent event = Recording::event(step);
    if (step.phase == 'E') {
        const std::size_t inside = self.inside.empty() ? 0 : self.inside.back();
        return returnOf(Recording::event(steps[inside]).name, event.out());
    }
    return wordsOf(infoOf(step.function).name, event.in());
}

void Replayer::differ(const std::string& expected, const std::string& seen) {
    const bool hasNext = self.line != nullptr && !self.line->hasEnded();
    const std::size_t at = hasNext               ? self.line->next()
                           : self.inside.empty() ? steps.size() - 1
                                                 : self.inside.back();
    const TraceEvent event = Recording::event(steps[at]);
    std::string words = "difference at ";
    char time[32];
    std::snprintf(time, sizeof time, "%.6f", event.time / 1e6);
    words += std::string(time) + " s, call " + std::to_string(at + 1) + " of " +
             std::to_string(steps.size()) + ", thread " + std::to_string(event.thread) + ", line " +
             std::to_string(steps[at].line) + "\n";
    if (!self.inside.empty()) {
        const TraceEvent inside = Recording::event(steps[self.inside.back()]);
        words += "  inside    " + readable(inside) + "\n";
    }
    const json& in = event.in();
    if (!in.empty() && in[0].is_object()) {
        words += "  object    " + readable(in[0]) + "\n";
    }
    end(1, words + "  expected  " + expected + "\n  seen      " + seen + "\n");
}

void Replayer::stuck() {
    const std::size_t made = turns.made();
    const Step& step = steps[made > 0 ? made - 1 : 0];
    end(1, "difference in line " + std::to_string(step.line) + ", thread " +
               std::to_string(step.thread) + "\n  expected  " +
               (made < steps.size() ? text(steps[made]) : "the end") +
               "\n  seen      nothing: " + Recording::event(step).name + " does not come back\n");
}

void Replayer::refuse(const std::string& reason) {
    std::fprintf(stderr, "%s: line %zu: %s\n", program.c_str(), steps[self.read].line,
                 reason.c_str());
    end(2, "");
}

void Replayer::rest() {
    turns.pass();
    turns.awaitEnd();
    finish();
}

void Replayer::finish() {
    static thread_local bool isFinishing = false;
    if (!std::exchange(isFinishing, true)) {
        drive();
    }
    if (!self.line->hasEnded() && recording.isWhole()) {
        differ(text(steps[self.line->next()]), "the end of the process");
    }
    if (self.line->hasEnded()) {
        turns.awaitEnd();
    }
    char words[160];
    std::snprintf(words, sizeof words,
                  "no difference: %zu calls and returns of %zu threads, %.3f s%s\n", turns.made(),
                  turns.inOrder().size(), recording.seconds(),
                  recording.isWhole() ? "" : "; the recording ends inside a call");
    end(0, words);
}

void Replayer::end(int code, const std::string& words) {
    static std::mutex& mutex = *new std::mutex;
    mutex.lock();  // for good: the first word is the last
    std::fputs(words.c_str(), stdout);
    std::fflush(nullptr);
    _exit(code);
}
