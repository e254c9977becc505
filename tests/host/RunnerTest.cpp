// The host's executable, with the probe as plug-in.

#include "../fakes/Folder.h"
#include "Command.h"

using testing::AllOf;
using testing::AnyOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

Outcome runHost(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), HOST_EXECUTABLE);
    return run(arguments, {});
}

// Runs a page script as `shell` says, with the command in its arguments; messages name it
// "page.js".
Outcome runPage(const std::string& script,
                const std::vector<std::string>& options = {},
                const std::string& shell = "exec \"$@\"") {
    const Folder folder;
    folder.write("page.js", script);
    std::vector<std::string> command{"/bin/sh", "-c",
                                     "cd \"$0\" && set -- " HOST_EXECUTABLE " --plugin " HOST_PROBE
                                     " --audio null page.js \"$@\" && " +
                                         shell,
                                     folder.path("")};
    command.insert(command.end(), options.begin(), options.end());
    return run(command, {{"PROBE_REPORT", "1"}});
}

// Sends `signal` when the page first writes, and again whenever it writes after that.
Outcome runPageUntilSignals(const std::string& script, int signal) {
    return runPage(
        script, {},
        "mkfifo out && { \"$@\" >out & } && exec 3<out && while read -r line <&3; do kill -" +
            std::to_string(signal) + " $! 2>/dev/null; done; wait $!");
}

// Sends it once.
Outcome runPageUntilSignal(const std::string& script, int signal) {
    return runPage(script, {},
                   "mkfifo out && { \"$@\" >out & } && exec 3<out && read -r line <&3 && kill -" +
                       std::to_string(signal) + " $! && cat <&3; wait $!");
}

std::string line(const std::string& text) {
    return text.substr(0, text.find('\n'));
}

TEST(RunnerTest, ABrokenRuleIsTheExitCodeWhateverThePageDoes) {
    for (const std::string end : {"close()", "throw new Error('late')"}) {
        const Outcome result = runPage("Probe.garbageType; " + end, {"--validate"});
        EXPECT_EQ(result.exitCode, 3) << result.errors;
        EXPECT_THAT(result.errors, HasSubstr("libSonolet-layer: 1 finding: rule 108 plug-in 1\n"));
    }
}

TEST(RunnerTest, TimersKeepTheirOrderUntilThePageCloses) {
    const Outcome result = runPage(R"(
        const seen = [];
        setTimeout(() => seen.push('c'), 30);
        setTimeout((...args) => seen.push(...args), 10, 'a', 'b');
        const cancelled = setTimeout(() => seen.push('cancelled'), 20);
        setTimeout(() => clearTimeout(cancelled), 1);
        let rounds = 0;
        const interval = setInterval(() => {
            seen.push(++rounds);
            if (rounds === 3) {
                clearInterval(interval);
                // Both are long due when the loop comes to them: the earlier comes first all the same.
                setTimeout(() => { seen.push('second'); console.log(seen.join()); close(); }, 3);
                setTimeout(() => seen.push('first'), 2);
                for (const end = Date.now() + 8; Date.now() < end;) {}
            }
        }, 40);
        clearTimeout(); clearTimeout(12345); clearInterval('x'); clearTimeout(interval + 1000);
        setTimeout(() => console.log('never'), 100000);
        // Each is a millisecond at least, no number too: they come in the order of their making.
        setTimeout(() => seen.push('x'), 1);
        for (const delay of [0, -5, NaN, 'soon', undefined]) {
            setTimeout(() => seen.push(String(delay)), delay);
        }
        Promise.resolve('m').then((m) => seen.push(m));
        seen.push('s');
        try { setTimeout('code') } catch (e) { seen.push(e.message) }
    )");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(line(result.errors), "probe: inits 1 unloads 1 created none destructed 0 polls 0");
    EXPECT_EQ(result.output, "s,a timer takes a function as its first argument,m,"
                             "x,0,-5,NaN,soon,undefined,a,b,c,1,2,3,first,second\n");
}

TEST(RunnerTest, WhatATimerHeldGoesOnceItHasFired) {
    const Outcome result = runPage(R"(
        const made = [];
        for (let i = 0; i < 100; ++i) {
            const late = () => {};
            made.push(new WeakRef(late));
            setTimeout(late, 1, { argument: late });
        }
        setTimeout(() => {
            gc();
            // Some may stand on the stack still.
            setTimeout(() => {
                console.log(made.filter((late) => late.deref() === undefined).length > 50);
                close();
            }, 2);
        }, 5);
    )",
                                   {"--expose-gc"});
    EXPECT_EQ(result.output, "true\n") << result.errors;
}

TEST(RunnerTest, AnUncaughtExceptionSaysWhereAndEndsThePage) {
    const std::pair<const char*, const char*> cases[] = {
        {"let a = 1;\n  null.member;", "page.js:2:7: uncaught TypeError: null is not an object"},
        {"\nsetTimeout(() => { throw new RangeError('mine') }, 1)",
         "page.js:2:40: uncaught RangeError: mine"},
        {"Probe.listen(() => { throw new Error('heard') });\nProbe.startPoll(5);",
         "page.js:1:37: uncaught Error: heard"},
        {"Promise.reject(new Error('refused'))", "page.js:1:25: uncaught Error: refused"},
        {"let a = 1;\nlet let = 2;", "page.js:2: uncaught SyntaxError: "},
        {"throw 'a text'", "uncaught a text"},
        {"import { a } from './a.js'",
         "page.js:1: uncaught SyntaxError: Unexpected token '{'. import call expects one or two "
         "arguments.\n    (a page of sonolet-host is a classic script, which has no modules)\n"},
        {"throw { toString() { throw 1 } }", "uncaught an exception without a text"},
        {"Probe.throwing()", "page.js:1:15: uncaught Error: thrown by the plug-in"},
    };
    for (const auto& [script, expected] : cases) {
        const Outcome result = runPage(script);
        EXPECT_EQ(result.exitCode, 1) << script;
        EXPECT_THAT(result.errors, StartsWith(expected));
        EXPECT_THAT(result.errors, HasSubstr("unloads 1"));
    }
    const Outcome stack = runPage("function inner() { throw new Error('deep') }\n"
                                  "function outer() { inner() }\nouter()");
    EXPECT_THAT(stack.errors, HasSubstr("    at inner@page.js:1:35\n    at outer@page.js:2:25\n"));
    const std::string begin = "page.js:1:16: uncaught Error: ";
    EXPECT_THAT(runPage("throw new Error('x'.repeat(1e8))").errors,
                StartsWith(begin + std::string(10000 - 7, 'x') +
                           "... (the first 10000 of 100000007 characters)\n    at "));
}

TEST(RunnerTest, AWrongCommandLineIsOneClearLineAndHelpNamesEveryOption) {
    const std::pair<std::vector<std::string>, const char*> cases[] = {
        {{}, "sonolet-host: no page given (sonolet-host [options] PAGE.js)"},
        {{"none.js"}, "sonolet-host: none.js: No such file or directory"},
        {{"/tmp"}, "sonolet-host: /tmp: is a folder, not a page script"},
        {{"a.js", "b.js"}, "sonolet-host: one page at a time: \"a.js\" and then \"b.js\""},
        {{"--loud", "a.js"}, "sonolet-host: unknown option --loud (--help lists them)"},
        {{"--validate=3", "a.js"}, "sonolet-host: --validate takes no value, not \"3\""},
        {{"--speed", "0", "a.js"}, "sonolet-host: --speed takes a number above 0, not \"0\""},
        {{"--for=1x", "a.js"}, "sonolet-host: --for takes a number above 0, not \"1x\""},
        {{"--for"}, "sonolet-host: --for takes a number above 0, not \"\""},
        {{"--audio", "wav:", "a.js"},
         "sonolet-host: --audio takes auto, wav:FILE or null, not \"wav:\""},
        {{"--music", "/none", "a.js"}, "sonolet-host: --music: no folder \"/none\""},
        {{"--log", "loud", "a.js"},
         "sonolet-host: --log takes trace, error, none or a number from 0 to 100, not \"loud\""},
        {{"--plugin", "/none.so", "--audio", "null", "/dev/null"},
         "sonolet-host: /none.so: cannot open shared object file: No such file or directory"},
        {{"--plugin", HOST_KELLOG, "--audio", "null", "/dev/null"},
         "sonolet-host: " HOST_KELLOG ": no symbol jsplugin_capabilities"},
    };
    for (const auto& [arguments, expected] : cases) {
        const Outcome result = runHost(arguments);
        EXPECT_EQ(result.exitCode, 2) << expected;
        EXPECT_EQ(result.errors, std::string(expected) + '\n');
        EXPECT_EQ(result.output, "");
    }
    const std::string help = runHost({"--help"}).output;
    for (const char* const option :
         {"--music DIR", "--audio", "wav:FILE", "--for SECONDS", "--help", "--plugin FILE",
          "--speed N", "--log LEVEL", "--expose-gc", "--stress-gc", "--version"}) {
        EXPECT_THAT(help, HasSubstr(option));
    }
    EXPECT_EQ(runHost({"--version"}).output, "sonolet-host 1.0\n");
}

TEST(RunnerTest, TooLittleForAnEngineIsOneLine) {
    const std::pair<const char*, const char*> cases[] = {
        {"ulimit -n 6", "sonolet-host: only "},
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // they take terabytes
        sizeof(void*) == 8
            ? std::pair("ulimit -v 3000000", "sonolet-host: the script engine takes 6144 MiB of ")
            : std::pair("ulimit -v 200000", "sonolet-host: the script engine takes 256 MiB of "),
#endif
    };
    for (const auto& [limit, expected] : cases) {
        const Outcome result = runPage("close()", {}, limit + std::string(" && exec \"$@\""));
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_THAT(result.errors, StartsWith(expected));
        EXPECT_EQ(result.errors.find('\n'), result.errors.size() - 1);
    }
}

TEST(RunnerTest, AReloadStartsAFreshDocument) {
    const Outcome result = runPage(R"(
        console.log(Probe.inits, typeof leftover);
        globalThis.leftover = 1;
        Probe.make(); Probe.echo; Probe.listen(() => {});
        Probe.startPoll(1000);
        setInterval(() => console.log('late timer'), 1);
        if (Probe.inits < 3) {
            location.reload();
            console.log('to the end');
        } else {
            close();
        }
    )");
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_EQ(result.output, "1 undefined\nto the end\n2 undefined\nto the end\n3 undefined\n");
    // Probe, its four functions and one object made, three times.
    EXPECT_EQ(line(result.errors), "probe: inits 3 unloads 3 created 18 destructed 18 polls 0");
}

TEST(RunnerTest, APageImportsScriptsFromItsFolder) {
    const Folder folder;
    folder.write("parts/one.js", "'use strict'; var one = 1; function two() { return one + 1; }");
    folder.write("parts/bad.js", "\nthrow new Error('of its own')");
    const auto errorsOf = [&](const std::string& script) {
        const std::string page = folder.write("parts/page.js", script);
        return runHost({"--plugin", HOST_PROBE, "--audio", "null", "--for", "20", page}).errors;
    };
    EXPECT_EQ(errorsOf("importScripts('one.js'); if (one + two() === 3) { close(); }"), "");
    EXPECT_THAT(errorsOf("importScripts('one.js', 'bad.js')"),
                AllOf(HasSubstr("parts/bad.js:2:16: uncaught Error: of its own"),
                      HasSubstr("parts/page.js:1:14")));
    EXPECT_THAT(errorsOf("importScripts('none.js')"),
                HasSubstr("parts/none.js: No such file or directory"));
}

TEST(RunnerTest, ForAndSpeedCountPageTime) {
    const Outcome result = runPage("let n = 0; setInterval(() => { ++n; }, 1000);"
                                   "Probe.listen(() => console.log(n)); Probe.startPoll(100000);",
                                   {"--for", "300", "--speed", "100"});
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    // A poll every 100 ms, of the page and not of the clock; on a busy machine many are late.
    const std::size_t at = result.errors.find("polls ");
    ASSERT_NE(at, std::string::npos) << result.errors;
    const int polls = std::stoi(result.errors.substr(at + 6));
    EXPECT_LE(polls, 3000);
    EXPECT_GE(polls, 100);
    const std::string last =
        result.output.substr(result.output.rfind('\n', result.output.size() - 2) + 1);
    EXPECT_LE(std::stoi(last), 300);
    EXPECT_GE(std::stoi(last), 30);
}

TEST(RunnerTest, ASignalUnloadsThePageInOrder) {
    for (const int signal : {SIGINT, SIGTERM}) {
        const Outcome result = runPageUntilSignal("Probe.make(); console.log('ready');", signal);
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(line(result.errors), "probe: inits 1 unloads 1 created 3 destructed 3 polls 0");
    }
    // A script without end is no obstacle to a second one.
    EXPECT_EQ(runPageUntilSignals("for (;;) { console.log('busy'); }", SIGINT).exitCode,
              128 + SIGINT);
}

TEST(RunnerTest, NoScriptKeepsAPageFromEnding) {
    const char* const reloading = "console.log('on'); location.reload()";
    const char* const stopped = "sonolet-host: page.js: a script went on a second too long";
    const char* const lost = "sonolet-host: page.js: the page does not come to an end";
    const struct {
        Outcome outcome;
        int exitCode;
        const char* errors;
    } cases[] = {
        {runPage(reloading, {"--for", "0.1"}), 0, "probe: "},
        {runPageUntilSignal(reloading, SIGINT), 0, "probe: "},
        {runPage("try { for (;;); } finally { console.log('never'); }", {"--for", "0.1"}), 1,
         stopped},
        {runPageUntilSignal("console.log('on'); Promise.resolve().then(() => { for (;;); })",
                            SIGTERM),
         1, stopped},
        {runPageUntilSignal("console.log('on'); (async () => { for (;;) await 0; })()", SIGINT), 1,
         lost},
    };
    for (const auto& each : cases) {
        const std::string& errors = each.outcome.errors;
        EXPECT_EQ(each.exitCode, each.outcome.exitCode) << errors;
        // Later engines stop promises without end too.
        const char* const also = each.errors == lost ? stopped : each.errors;
        EXPECT_THAT(errors, AnyOf(StartsWith(each.errors), StartsWith(also)));
        EXPECT_THAT(each.outcome.output, Not(HasSubstr("never")));
        // As any page that ends, but for the one that is lost.
        EXPECT_NE(errors.find("probe: ") != std::string::npos, errors.find(lost) == 0);
    }
}

TEST(RunnerTest, TheEngineCollectsByItselfBeforeDeadObjectsPileUp) {
    const Outcome result = runPage(R"(
        let made = 0, most = 0;
        const interval = setInterval(() => {
            for (let i = 0; i < 1000; ++i) {
                const object = Probe.make();
                object.hold(() => object);
            }
            made += 1000;
            most = Math.max(most, Probe.live);
            if (made === 120000) { console.log(most); close(); }
        }, 100);
    )",
                                   {"--speed", "10"});
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_LE(std::stoi(result.output), 60000);
}

TEST(RunnerTest, ConsoleShowsWhatItIsGiven) {
    const Outcome result = runPage(R"(
        console.log('a', 1, -0, 2n, null, undefined, true, Symbol('s'));
        console.log({ a: [1, 'x', { b: { c: { d: 1 } } }], f() {}, get g() { throw 1 } });
        const circle = { name: 'circle' }; circle.self = circle; console.log(circle);
        console.log('%s is %d%%, %o', 'x', 5, { y: 1 }, 'more');
        console.info(Probe, Probe.make(), Probe.echo);
        console.log(new Proxy({}, { get() { throw 1 }, ownKeys() { throw 2 } }));
        console.log(Object.create(null), [,1], new Map());
        console.table([{ id: 1, name: 'a' }, { id: 20 }]);
        console.log();
        console.warn('to the other'); console.error('stream');
        close();
    )");
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_EQ(result.output,
              "a 1 -0 2n null undefined true Symbol(s)\n"
              "{ a: [1, \"x\", { b: { c: [Object] } }], f: [Function f], g: [Getter] }\n"
              "{ name: \"circle\", self: [Circular] }\n"
              "x is 5%, { y: 1 } more\n"
              "NativeObject { make: [Function make], echo: [Function echo] } NativeObject {} "
              "[Function echo]\n"
              "[object that cannot be shown]\n"
              "{} [undefined, 1] Map {}\n"
              "   id  name\n0  1   \"a\"\n1  20\n"
              "\n");
    EXPECT_THAT(result.errors, StartsWith("to the other\nstream\n"));

    const Outcome full = runPage("console.log('lost'); close()", {}, "exec \"$@\" >/dev/full");
    EXPECT_EQ(full.exitCode, 2);
    EXPECT_THAT(full.errors, HasSubstr("sonolet-host: standard output: not all"));
}

TEST(RunnerTest, TheOptionsReachThePluginAndThePage) {
    EXPECT_EQ(runPage("console.log(Probe.music, typeof gc, window === globalThis); close()",
                      {"--music", "/usr", "--expose-gc"})
                  .output,
              "/usr function true\n");
    EXPECT_EQ(runPage("console.log(typeof gc); close()").output, "undefined\n");
    const char* const many = "(() => { for (let i = 0; i < 100; ++i) Probe.make(); })();"
                             "console.log(Probe.live < 50); close()";
    EXPECT_EQ(runPage(many).output, "false\n");
    EXPECT_EQ(runPage(many, {"--stress-gc"}).output, "true\n");
}

}  // namespace
