#include "record/Scribe.h"

#include "calls/Json.h"
#include "calls/ValueText.h"

#include <fcntl.h>
#include <unistd.h>

#include <ctime>
#include <fstream>

namespace {

constexpr std::size_t mostLines = 256U << 10U;        // bytes
constexpr std::uint64_t levelsInterval = 100000000;   // ns
constexpr std::uint64_t memoryInterval = 1000000000;  // ns
constexpr std::uint64_t longestIdle = 60000000000;    // ns
constexpr std::uint64_t memoryStep = 256U << 10U;     // bytes

constexpr const char* partyNames[] = {"host", "plugin", "library", "backend", "log", "system"};

std::string commandOf(std::uint32_t thread) {
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/comm");
    std::string name;
    std::getline(file, name);
    return name;
}

// Of the process, in bytes; 0 when the system does not tell.
std::uint64_t residentBytes() {
    std::ifstream file("/proc/self/statm");
    std::uint64_t all = 0;
    std::uint64_t resident = 0;
    file >> all >> resident;
    return resident * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

bool isOk(const Event& event) {
    return event.resultInteger(0) == 0;
}

}  // namespace

Scribe::Scribe(TraceFile& traceFile, bool isWholeTrace)
    : file(traceFile), isWhole(isWholeTrace), process(getpid()), names(!isWholeTrace) {
    beginFile();
}

// ---- Files and batches ----

void Scribe::beginFile() {
    char date[32] = "";
    const std::time_t now = std::time(nullptr);
    std::tm utc = {};
    if (gmtime_r(&now, &utc) != nullptr) {
        std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%SZ", &utc);
    }
    std::string head = "[\n{\"ph\":\"M\",\"name\":\"sonolet_trace\",\"pid\":";
    json::integer(head, process);
    head += ",\"args\":{\"version\":1,\"bits\":";
    json::integer(head, static_cast<std::int64_t>(sizeof(void*) * 8));
    head += ",\"date\":\"";
    head += date;
    head += "\",\"part\":";
    json::integer(head, ++parts);
    head += isWhole ? ",\"replayable\":true}},\n" : "}},\n";
    head += "{\"ph\":\"M\",\"name\":\"process_name\",\"pid\":";
    json::integer(head, process);
    head += ",\"args\":{\"name\":";
    json::text(head, commandOf(static_cast<std::uint32_t>(process)));
    head += "}},\n";
    file.write(head);
    std::string known;
    known.swap(lines);
    for (const auto& [thread, name] : threads) {
        tellThreadName(thread, name);
    }
    lines += known;
}

void Scribe::write(const char* records, std::size_t size) {
    const char* const end = records + size;
    while (records != end) {
        event(records);
        if (lines.size() >= mostLines) {
            flush();
        }
    }
}

void Scribe::tellLost(std::size_t calls) {
    tellHeld();
    begin("i", static_cast<std::uint32_t>(process), idleTo);
    *out += ",\"s\":\"p\",\"cat\":\"mark\",\"name\":\"lost ";
    json::integer(*out, static_cast<std::int64_t>(calls));
    *out += " calls\"},\n";
}

void Scribe::endOfBatch(std::uint64_t now) {
    if (idleTimes > 0 && idleTo - idleFrom > longestIdle) {
        tellIdle();
    }
    counters(now);
    flush();
}

void Scribe::flush() {
    if (lines.empty()) {
        return;
    }
    file.write(lines);
    lines.clear();
    if (file.turn()) {
        beginFile();
    }
}

void Scribe::finish() {
    tellHeld();
    tellIdle();
    file.write(lines + "{}]\n");
    lines.clear();
    file.close();
}

// ---- Events ----

void Scribe::event(const char*& from) {
    Event event;
    from = event.read(from);
    const std::string_view member =
        event.is(Fn::call) ? names.memberOf(event.pointer(1)) : std::string_view();
    const std::string memberName(member);
    const std::string name = names.follow(event);
    follower.follow(event, memberName);
    const std::uint32_t thread = event.head.thread;
    if (threads.count(thread) == 0 && !event.is(Fn::count)) {
        tellHeld();
        const Party caller = infoOf(event.head.function).caller;
        tellThread(thread, caller == Party::Library   ? "library"
                           : caller == Party::Backend ? "backend"
                                                      : "script");
    }
    if (quiet.thread != 0 && (thread != quiet.thread || !isQuiet(event))) {
        tellHeld();
    }
    const bool mayBeQuiet = !isWhole && (event.is(Fn::poll) || event.is(Fn::document_gc_trace));
    if (quiet.thread == 0 && mayBeQuiet && event.head.phase == Phase::Begin) {
        quiet.thread = thread;
        quiet.isCollection = event.is(Fn::document_gc_trace);
        quiet.began = event.head.began;
        out = &quiet.held;
    }
    const bool isNothing = !isWhole && quiet.thread == 0 && event.head.phase == Phase::Whole &&
                           (event.is(Fn::poll) || event.is(Fn::gc_trace)) &&
                           (event.is(Fn::gc_trace) || event.resultInteger(0) == 1);
    if (isNothing) {
        quiet.thread = thread;
        quiet.began = event.head.began;
        endQuiet(event);
        return;
    }
    if (quiet.thread == 0) {
        tellIdle();
    } else {
        holdBack(event);
    }
    line(event, name);
    story(event);
    if (quiet.thread != 0 && mayBeQuiet && event.head.phase == Phase::End) {
        endQuiet(event);
    }
}

bool Scribe::isQuiet(const Event& event) const {
    if (event.is(Fn::gc_mark)) {
        return quiet.isCollection;
    }
    if (event.head.phase == Phase::End) {
        return quiet.isCollection || event.resultInteger(0) == 1;
    }
    return event.is(Fn::sp_session_process_events) && event.head.phase == Phase::Whole &&
           isOk(event);
}

// A collection is like the last one when it marks the same objects.
void Scribe::holdBack(const Event& event) {
    if (quiet.isCollection) {
        json::address(quiet.content, event.pointer(0));
    }
}

void Scribe::endQuiet(const Event& event) {
    const bool isNew = quiet.isCollection && quiet.content != lastCollection;
    if (isNew) {
        lastCollection = quiet.content;
        tellHeld();
        return;
    }
    if (idleTimes++ == 0) {
        idleFrom = quiet.began;
        idleThread = quiet.thread;
    }
    idleTo = event.head.ended;
    quiet = {};
    out = &lines;
}

void Scribe::tellHeld() {
    out = &lines;
    if (quiet.thread != 0) {
        tellIdle();
        lines += quiet.held;
        quiet = {};
    }
}

void Scribe::tellIdle() {
    if (idleTimes == 0) {
        return;
    }
    begin("X", idleThread, idleFrom);
    *out += ",\"dur\":";
    json::microseconds(*out, idleTo - idleFrom);
    *out += ",\"cat\":\"idle\",\"name\":\"idle\",\"args\":{\"times\":";
    json::integer(*out, static_cast<std::int64_t>(idleTimes));
    *out += "}},\n";
    idleTimes = 0;
}

// ---- Lines ----

void Scribe::begin(const char* phase, std::uint32_t thread, std::uint64_t time) {
    *out += "{\"ph\":\"";
    *out += phase;
    *out += "\",\"pid\":";
    json::integer(*out, process);
    *out += ",\"tid\":";
    json::integer(*out, thread);
    *out += ",\"ts\":";
    json::microseconds(*out, time);
}

void Scribe::tellThread(std::uint32_t thread, std::string_view role) {
    const std::string command = commandOf(thread);  // empty: the thread has ended
    const std::string name = std::string(role) + (command.empty() ? "" : " (" + command + ")");
    threads.emplace(thread, name);
    tellThreadName(thread, name);
}

void Scribe::tellThreadName(std::uint32_t thread, const std::string& name) {
    begin("M", thread, 0);
    *out += ",\"name\":\"thread_name\",\"args\":{\"name\":";
    json::text(*out, name);
    *out += "}},\n";
}

void Scribe::line(const Event& event, const std::string& name) {
    if (event.is(Fn::count)) {
        return;  // a mark has a line of its own kind
    }
    const Phase phase = event.head.phase;
    if (phase == Phase::End) {
        begin("E", event.head.thread, event.head.ended);
    } else {
        begin(phase == Phase::Begin ? "B" : "X", event.head.thread, event.head.began);
    }
    if (phase == Phase::Whole) {
        *out += ",\"dur\":";
        json::microseconds(*out, event.head.ended - event.head.began);
    }
    if (phase != Phase::End) {
        const FunctionInfo& function = infoOf(event.head.function);
        *out += ",\"cat\":\"";
        *out += partyNames[static_cast<int>(function.caller)];
        *out += '>';
        *out += partyNames[static_cast<int>(function.callee)];
        *out += "\",\"name\":";
        json::text(*out, follower.title.empty() ? name : "on " + follower.title);
    }
    arguments(event, name);
    *out += "},\n";
}

void Scribe::arguments(const Event& event, const std::string& name) {
    *out += ",\"args\":{";
    std::size_t before = out->size();
    const char* const function = infoOf(event.head.function).name;
    if (event.hasArguments()) {
        if (name != function || !follower.title.empty()) {
            *out += "\"call\":\"";
            *out += function;
            *out += "\",";
        }
        values("in", event.arguments);
    }
    if (event.hasResults() && !event.results.empty()) {
        *out += out->size() > before ? "," : "";
        values("out", event.results);
    }
    *out += '}';
}

void Scribe::values(const char* name, const std::vector<Value>& all) {
    *out += '"';
    *out += name;
    *out += "\":[";
    for (std::size_t i = 0; i < all.size(); ++i) {
        *out += i > 0 ? "," : "";
        if (isWhole && all[i].tag == Tag::Secret) {
            secret(all[i]);
        } else {
            appendValue(*out, all[i]);
        }
    }
    *out += ']';
}

void Scribe::secret(const Value& value) {
    *out += "{\"secret\":";
    json::integer(*out, names.numberOf(storedText(value)));
    *out += ",\"bytes\":";
    json::integer(*out, value.size);
    *out += '}';
}

void Scribe::story(const Event& event) {
    for (const Story::Arrow& arrow : follower.arrows) {
        ++lastArrow;
        const auto end = [&](const char* phase, const Story::Place& place) {
            begin(phase, place.thread, place.time);
            *out += ",\"cat\":\"flow\",\"id\":";
            json::integer(*out, static_cast<std::int64_t>(lastArrow));
            *out += ",\"name\":";
            json::text(*out, arrow.name);
            *out += *phase == 'f' ? ",\"bp\":\"e\"},\n" : "},\n";
        };
        end("s", arrow.from);
        end("f", arrow.to);
    }
    if (!follower.mark.empty()) {
        begin("i", event.head.thread, event.head.began);
        *out += ",\"s\":\"p\",\"cat\":\"mark\",\"name\":";
        json::text(*out, follower.mark);
        *out += "},\n";
    }
}

void Scribe::counters(std::uint64_t now) {
    const auto counter = [&](const char* name, std::uint64_t level) {
        begin("C", static_cast<std::uint32_t>(process), now);
        *out += ",\"name\":\"";
        *out += name;
        *out += "\",\"args\":{\"value\":";
        json::integer(*out, static_cast<std::int64_t>(level));
        *out += "}},\n";
    };
    if (quiet.thread != 0) {
        return;  // once it is known what to make of what is held back
    }
    const Story::Levels& levels = follower.levels();
    const bool isNew =
        !(levels == told) || names.living() != toldObjects || names.wrappers() != toldWrappers;
    if (now - levelsAt >= levelsInterval && isNew) {
        levelsAt = now;
        if (levels.ringBytes != told.ringBytes) {
            counter("ring bytes", static_cast<std::uint64_t>(levels.ringBytes));
        }
        if (levels.waitingRequests != told.waitingRequests) {
            counter("requests waiting", static_cast<std::uint64_t>(levels.waitingRequests));
        }
        if (levels.handles != told.handles) {
            counter("handles held", static_cast<std::uint64_t>(levels.handles));
        }
        if (names.living() != toldObjects) {
            counter("script objects", names.living());
        }
        if (names.wrappers() != toldWrappers) {
            counter("wrappers", names.wrappers());
        }
        told = levels;
        toldObjects = names.living();
        toldWrappers = names.wrappers();
    }
    if (now - memoryAt >= memoryInterval) {
        memoryAt = now;
        const std::uint64_t memory = residentBytes();
        if (memory > toldMemory + memoryStep || memory + memoryStep < toldMemory) {
            toldMemory = memory;
            counter("memory bytes", memory);
        }
    }
}
