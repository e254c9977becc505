#ifndef SONOLET_LAYER_REPLAY_REPLAYER_H
#define SONOLET_LAYER_REPLAY_REPLAYER_H

#include "replay/Recording.h"
#include "replay/Turns.h"
#include "replay/Twins.h"
#include "tap/Call.h"

#include <exception>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <unordered_map>
#include <vector>

// Does to the plug-in what the recording says was done, and compares what it does.
//
// It stands where the recorder stood: between the layer's functions, which make values of calls,
// and host, library, backend, log and system, whose functions here (Host.cpp, Library.cpp,
// Device.cpp) ask for answers. At the first difference the process ends.
//
// Threads: one for each of the recording; drive() runs on it. The process's exit handlers run on
// the first. Errors: a difference is told on standard output, exit code 1; what cannot be replayed,
// with its line, on standard error, exit code 2.
class Replayer final : public Watcher {
public:
    // What calls into the plug-in as the arguments say.
    using Invoke = std::function<void(const nlohmann::json& in)>;

    Replayer(const Recording& itsRecording, std::string itsProgram);

    // How a call into the plug-in is made. REQUIRES: before the first one.
    void invoke(Fn function, Invoke how) { invocations[function] = std::move(how); }

    // This thread is the one of these steps from now on.
    void enter(Turns::Line& line);
    // Makes the calls of this thread that lead into the plug-in, up to one that the plug-in makes
    // by itself, or the end.
    void drive();
    // The last word: everything has been done, or what is missing is the difference. Does not
    // return.
    [[noreturn]] void finish();

    // The recorded results of the call out of the plug-in that this thread is in. What the
    // recording has inside it is done before.
    nlohmann::json answered();
    // The first of them.
    template <class T>
    T answered() {
        return reading([this] { return answered().at(0).get<T>(); });
    }
    // Of the call that this thread makes next: what the recording says of it when it is this one;
    // null when it is another.
    nlohmann::json argumentsOfNext() const;
    nlohmann::json answerOfNext(Fn function) const;
    // What this thread's innermost call into the plug-in will answer, as it is recorded.
    nlohmann::json resultsOfThis() const;

    // Tells a difference that is not one of calls, and ends.
    [[noreturn]] void differ(const std::string& expected, const std::string& seen);
    // The step under way does not come to its end.
    [[noreturn]] void stuck();
    // With the line that this thread has read last.
    [[noreturn]] void refuse(const std::string& reason);

    // What makes something of a recorded value. When the value is not as the layer writes it, that
    // is told and the process ends: nothing is thrown through the plug-in.
    template <class Read>
    auto reading(Read read) {
        try {
            return read();
        } catch (const NotReplayable& error) {
            refuse(error.what());
        } catch (const std::exception& error) {
            refuse(std::string("is not what the layer writes of such a call: ") + error.what());
        }
    }

    void began(Call& call) noexcept override;
    void ended(Call& call, const Value* results, unsigned count) noexcept override;

    Turns turns;
    Twins twins;

private:
    TraceEvent read(std::size_t step) const;
    void perform();
    void compareCall(const Call& call);
    void compareReturn(const Value* results, unsigned count);
    nlohmann::json told(const Value* values, unsigned count, const nlohmann::json& expected);
    bool isSame(Fn function, const nlohmann::json& seen, const nlohmann::json& expected) const;
    std::string text(const Step& step) const;
    // Nothing more is known of this thread.
    [[noreturn]] void rest();
    [[noreturn]] void end(int code, const std::string& words);

    const Recording& recording;
    const std::vector<Step>& steps;
    const std::string program;
    std::unordered_map<Fn, Invoke> invocations;
};

#endif
