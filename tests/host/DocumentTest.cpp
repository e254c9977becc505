#include "DocumentHarness.h"

namespace {

class DocumentTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(host.document->open({"file", "", 0})); }

    // Every object that the plug-in was ever given goes, once.
    void TearDown() override {
        host.document->close();
        EXPECT_EQ(host.created(), host.destructed());
        EXPECT_TRUE(DocumentHarness::probe().clean);
        EXPECT_EQ(host.document->objects().size(), 0U);
    }

    std::string eval(const std::string& script) const { return host.eval(script); }

    // The scripts run in their order.
    void expect(const std::vector<std::pair<const char*, const char*>>& cases) const {
        for (const auto& [script, expected] : cases) {
            EXPECT_EQ(eval(script), expected) << script;
        }
    }

    DocumentHarness host;
};

TEST_F(DocumentTest, CacheableAnswersAreAskedForOnceAndSwallowNoWrite) {
    expect({
        {"for (let i = 0; i < 10; ++i) { Probe.constant; Probe.echo; Probe.text; }", "first"},
        {"['constant', 'echo', 'text'].map((name) => Probe.readsOf(name))", "1,1,10"},
        {"delete Probe.constant; Probe.constant + Probe.readsOf('constant')", "44"},
        {"let sum = 0; for (let i = 0; i < 3; ++i) sum += Probe.list[i]; sum", "3"},
        {"Probe.list[1]; Probe.list[1]; Probe.list.readsOf('1')", "1"},
        {"Probe.list[3] + Array.from(Probe.list).join()", "undefined0,1,2"},
        {"2 in Probe.list && !(3 in Probe.list)", "true"},
        {"Probe.cachedText", "first"},
        {"Probe.cachedText = 'second'; Probe.cachedText", "second"},
        {"Probe.constant = 1", "throws Error: Cannot set \"constant\": it is read-only"},
        {"'use strict'; Probe.echo = 1", "throws Error: Cannot set \"echo\": it is read-only"},
        {"Probe.constant", "42"},
        {"Probe.text = 7", "throws Error: text takes a string"},
        {"Probe[3] = 7", "throws Error: Cannot set \"3\": it is read-only"},
        {"Probe.expando = 7; Probe.expando", "7"},
    });
    const int before = DocumentHarness::probe().globalReads;
    eval("Probe; Probe; globalThis.Probe");
    EXPECT_EQ(DocumentHarness::probe().globalReads, before);
}

TEST_F(DocumentTest, EveryAnswerHasItsMeaning) {
    expect({
        {"Probe.nothingThere", "undefined"},
        {"Probe.unknown", "undefined"},
        {"Probe.failing", "throws Error: failing cannot be read"},
        {"try { Probe.failing } catch (e) { e.constructor === Error }", "true"},
        {"Probe.missing()", "throws TypeError: \"missing\" is not a function"},
        {"Probe.nothing()", "undefined"},
        {"Probe.throwing()", "throws Error: thrown by the plug-in"},
        {"Probe.undefinedValue", "undefined"},
        {"Probe.nullValue", "null"},
        {"[Probe.yes, Probe.no]", "true,false"},
        {"Probe.nan", "NaN"},
        {"Probe.nullText", "undefined"},
        {"Probe.strayObject", "undefined"},
        {"Probe.garbageType", "undefined"},
        {"Probe.date instanceof Date && Probe.date.getTime()", "86400000"},
        {"Probe.brokenExpression",
         "throws TypeError: null is not an object (evaluating 'null.member')"},
        {"ProbeEmpty", "undefined"},
        {"ProbeFailing", "throws Error: no such probe"},
        {"ProbeEmpty = 5; ProbeEmpty", "5"},
    });
}

TEST_F(DocumentTest, ValuesCrossBothWaysAndNoTextBreaks) {
    expect({
        {"Probe.describe(undefined, null, true, 1.5, 'x', {}, () => 1, Probe, Probe.echo,"
         "Symbol.iterator, 5n)",
         "native 0 6 5:1 4:1.500000 3:x 2:page 2:page 1 1 0 0"},
        {"const values = [undefined, null, false, -0.5, 'y', {}, [], () => 1, Probe, Probe.make,"
         "globalThis, '', '\\u00e9\\u4e16', '\\ud83d\\ude00', 'x'.repeat(1e5)];"
         "values.every((v) => Probe.echo(v) === v)",
         "true"},
        {"let many; Probe.callWith((...args) => { many = args; }); many.length + many[0] + "
         "many[39]",
         "40argument 0argument 39"},
        {"Probe.echo('a\\ud83db\\ude00\\ud83d') === 'a\\ufffdb\\ufffd\\ufffd'", "true"},
        {"Probe.echo('a\\0b') === 'a\\ufffdb'", "true"},
        {"Probe.brokenText.startsWith('a\\ufffd\\ufffd(z\\ufffd')", "true"},
        {"Probe['\\ud800'] === undefined && Probe['a\\0'] === undefined", "true"},
        // `in` asks the plug-in.
        {"['text', 'constant', 'echo', 'nothingThere', 'nullValue'].every((name) => name in Probe)",
         "true"},
        {"['unknown', 'failing', 'then', '0', Symbol.iterator].some((name) => name in Probe)",
         "false"},
        // What was found absent by `in` is thrown by a read, and the other way round.
        {"Object.getPrototypeOf(Probe).hasOwnProperty('failing') + ('toString' in Probe)", "1"},
        {"'failing' in Probe; Probe.unknown; Probe.failing",
         "throws Error: failing cannot be read"},
    });
}

TEST_F(DocumentTest, ObjectsStandWhatPagesDoToThem) {
    expect({
        {"Probe.constant; Object.keys(Probe).length", "0"},
        {"let names = ''; for (const name in Probe) names += name; names", ""},
        {"`${Probe}` + Probe.toString()", "[object NativeObject][object NativeObject]"},
        {"Probe instanceof Object && Probe.echo instanceof Function", "true"},
        {"typeof Probe + typeof Probe.echo", "objectfunction"},
        {"Probe.describe.call({}, 1)", "page 4:1.000000"},
        {"const f = Probe.describe; f()", "none"},
        {"'use strict'; Probe.describe.call(undefined)", "none"},
        {"Probe.describe.call(5)", "page"},
        {"String(Probe.echo).startsWith('function')", "true"},
        {"new Probe.echo()", "throws TypeError: function is not a constructor (evaluating 'new "
                             "Probe.echo()')"},
        {"const child = Object.create(Probe); child.constant", "42"},
        {"child.own = 1; [child.own, Probe.own]", "1,"},
        {"new Proxy(Probe, {}).constant = 7",
         "throws Error: Cannot set \"constant\": it is read-only"},
        {"new Proxy(Probe, {}).text = 7", "throws Error: text takes a string"},
        {"({ ...Probe }).constant", "undefined"},
        {"const frozen = Object.freeze(Probe.make()); frozen.text + frozen.constant", "first42"},
        {"const bare = Object.setPrototypeOf(Probe.make(), null); bare.text + bare.toString",
         "firstundefined"},
        {"bare.__proto__ = Probe; Probe.echo(bare) === bare", "true"},
        // What all objects share is nobody's to change.
        {"Object.setPrototypeOf(Object.getPrototypeOf(Probe), null)",
         "throws TypeError: Attempted to assign to readonly property."},
        {"const own = Probe.make();"
         "Object.defineProperty(own, 'constant', { value: 1 }); own.constant",
         "1"},
        {"Object.prototype.injected = 3; Probe.injected", "3"},
        {"delete Object.prototype.injected; Probe.injected", "undefined"},
        {"new Proxy(Probe, {}).text", "first"},
        {"const named = Probe.named; [typeof named, named(7), named.constant, named.text = 'x',"
         "named.text, Probe.named === named, Probe.echo(named) === named, named.call.length]",
         "function,7,42,x,x,true,true,1"},
        {"named instanceof Function && named.echo(1) + named.describe(named)", "1native 1"},
        {"const fresh = Probe.make(); fresh.constant; fresh.expando = 1; Reflect.ownKeys(fresh)",
         "expando,constant"},
        {"const many = Probe.make(); for (let i = 0; i < 5000; ++i) many['n' + i % 2500];"
         "for (const name of ['n7', 'n2400', 'text']) many[name];"
         "[many.readsOf('n7'), many.readsOf('n2400'), many.readsOf('text'), many.text]",
         "3,3,1,first"},
    });
    EXPECT_EQ(eval("let resolved; Promise.resolve(Probe).then((v) => { resolved = v; })"),
              "[object Promise]");
    EXPECT_EQ(eval("resolved === Probe"), "true");
}

TEST_F(DocumentTest, AScriptThatReplacesTheEnginesFunctionsChangesNothing) {
    eval("Object.defineProperty = Reflect.get = Reflect.has = () => { throw new Error('mine'); };"
         "WeakRef.prototype.deref = () => ({}); WeakMap.prototype.set = undefined;"
         "globalThis.Error = globalThis.TypeError = globalThis.WeakRef = undefined;");
    EXPECT_EQ(eval("Probe.constant + Probe.readsOf('constant')"), "43");
    EXPECT_EQ(eval("Probe.failing"), "throws Error: failing cannot be read");
    EXPECT_EQ(eval("Probe.missing()"), "throws TypeError: \"missing\" is not a function");
    host.collectAll();
    EXPECT_EQ(eval("Probe.echo(Probe) === Probe"), "true");
}

TEST_F(DocumentTest, OnePageFunctionHasOneHandle) {
    EXPECT_EQ(eval("const f = () => 1, g = () => 2; Probe.listen(f); Probe.listen(f)"), "1");
    host.collectAll();
    EXPECT_EQ(eval("Probe.listen(f) + '' + Probe.listen(g)"), "12");
}

TEST_F(DocumentTest, WhatThePluginMarksLivesAndGoesWithItsHolder) {
    eval("var calls = 0, heard = [], held = [], kept = [];"
         "var alive = (refs) => refs.filter((r) => r.deref() !== undefined).length;"
         "for (let i = 0; i < 50; ++i) {"
         "    const f = () => { calls += i; }; heard.push(new WeakRef(f)); Probe.listen(f);"
         "    const native = Probe.make(); kept.push(native);"
         // Each holds the other.
         "    const g = () => native; held.push(new WeakRef(g)); native.hold(g); }");
    host.collectAll();
    host.collectAll();
    EXPECT_EQ(eval("[alive(heard), alive(held), Probe.fire(), calls]"), "50,50,0,1225");
    const int before = host.destructed();
    eval("Probe.unlisten(); kept = []");
    host.collectAll();
    EXPECT_LE(std::stoi(eval("alive(heard)")), 5);
    EXPECT_LE(std::stoi(eval("alive(held)")), 5);
    EXPECT_GE(host.destructed() - before, 45);
    // The records are gone with them: what is left are Probe and its functions.
    EXPECT_LE(host.document->objects().size(), 25U);
}

TEST_F(DocumentTest, AnObjectThatDiedIsMintedAnew) {
    // The plug-in keeps the object without marking it, and the engine has collected its script
    // object, finalized or not.
    int anew = 0;
    for (int i = 0; i < 40; ++i) {
        eval("(() => { const made = Probe.make(); made.text = 'round " + std::to_string(i) +
             "'; made.expando = 1; Probe.remember(made); })()");
        host.document->letGo();
        host.collect();
        const std::string text = eval("var object = Probe.again(); object && object.text");
        if (text != "null") {
            ++anew;
            ASSERT_EQ(text, "round " + std::to_string(i));
            ASSERT_EQ(eval("Probe.again() === object && object.describe(object)"), "native 1");
            // The finalizer of the old script object must not destruct the new one's.
            host.collectAll();
            ASSERT_EQ(eval("object.text"), text);
            ASSERT_EQ(eval("Probe.again() === object"), "true");
        }
        eval("object = undefined");
    }
    EXPECT_GT(anew, 0);
    host.collectAll();
    EXPECT_GE(host.destructed(), 35);
}

TEST_F(DocumentTest, NeitherAPageNorAScriptThatRunsForLongGrows) {
    const char* const round =
        "(() => { for (let i = 0; i < 500; ++i) {"
        "    const made = Probe.make(); made.hold(() => made); Probe.describe({}, () => i, made);"
        "    made.text; made.constant; } })()";
    for (int i = 0; i < 20; ++i) {
        eval(round);
        host.collectAll();
    }
    EXPECT_LE(host.document->objects().size(), 200U);
    EXPECT_GE(host.created(), 10000);
    EXPECT_LE(host.created() - host.destructed(), 200);
    eval("for (let i = 0; i < 60000; ++i) { Probe.describe({}); }");
    EXPECT_LE(host.document->objects().size(), 10000U);
}

TEST_F(DocumentTest, AScriptMayEndTheStackAnywhere) {
    expect({
        // The depth first: where the engine has no JIT, all of a stack of objects takes seconds.
        {"let most = 0; function pad(n, end) { ++most; n > 0 ? pad(n - 1, end) : end(); }"
         "try { pad(Infinity); } catch (e) {} const depth = most - 2000;"
         "const made = []; function deep() { made.push(Probe.make().text); deep(); }"
         "for (let i = 0; i < 48; i += 3) { try { pad(depth + i, deep); } catch (e) {"
         "made.push(e.name); } } made.includes('first') && made.includes('RangeError')",
         "true"},
        {"Probe.make().text", "first"},
    });
}

// On a browser's thread, whose own sources rank below.
TEST(GlibScheduler, LeavesOthersTheThreadAlthoughATaskIsAlwaysLate) {
    GlibScheduler scheduler;
    int runs = 0;
    bool othersRan = false;
    scheduler.schedule(Scheduler::Delay(1), [&] {
        if (++runs == 1) {
            const GSourceFunc other = [](gpointer ran) -> gboolean {
                *static_cast<bool*>(ran) = true;
                return G_SOURCE_REMOVE;
            };
            g_idle_add_full(G_PRIORITY_LOW, other, &othersRan, nullptr);
        }
        const gint64 end = g_get_monotonic_time() + 2000;
        while (g_get_monotonic_time() < end) {
        }
        return true;
    });
    while (runs < 100 && !othersRan) {
        g_main_context_iteration(nullptr, TRUE);
    }
    EXPECT_TRUE(othersRan);
}

// The plug-in's `fire` has its arguments on its stack while the first listener makes garbage or
// collects it, and passes them on to the second one.
TEST_F(DocumentTest, AListenerThatIsLongOrCollectsDoesNotGrowAndItsCallerKeepsWhatItHas) {
    std::size_t sizeInside = 0;
    host.define("measure", [&] { sizeInside = host.document->objects().size(); });
    host.define("collectAll", [this] { host.collectAll(); });
    for (const std::string body :
         {"for (let i = 0; i < 30000; ++i) {"
          "    const made = Probe.make(); made.describe({}, () => i, made);"
          "} measure();",
          "collectAll();"}) {
        EXPECT_EQ(eval("{ let got; Probe.unlisten(); Probe.listen(() => { " + body +
                       " }); Probe.listen((a, b) => { got = a.x + b.text; });"
                       "Probe.fire({ x: 'page ' }, Probe.make()) + got }"),
                  "0page first");
    }
    EXPECT_LE(sizeInside, 20000U);
    EXPECT_GE(host.destructed(), 40000);
}

TEST_F(DocumentTest, WhatAListenerThrowsGoesToTheReporter) {
    EXPECT_EQ(eval("let later = 0; Probe.listen(() => { throw new RangeError('mine'); });"
                   "Probe.listen(() => { ++later; }); Probe.fire() + later"),
              "1");
    ASSERT_EQ(host.errors.size(), 1U);
    EXPECT_EQ(host.errors[0], "RangeError: mine");
    // A page object that is no function is refused.
    EXPECT_EQ(eval("Probe.unlisten(); Probe.listen({}); Probe.fire()"), "1");
}

TEST_F(DocumentTest, APollStopsWhenItAnswersZero) {
    const int before = DocumentHarness::probe().polls;
    EXPECT_EQ(eval("let ticks = 0; Probe.listen(() => { ++ticks; }); Probe.startPoll(3)"), "0");
    ASSERT_TRUE(host.waitUntil([&] { return DocumentHarness::probe().polls == before + 3; }));
    // Were it still to run, it would be long before this one is due.
    bool later = false;
    host.scheduler.schedule(Scheduler::Delay(1000), [&] {
        later = true;
        return false;
    });
    ASSERT_TRUE(host.waitUntil([&] { return later; }));
    EXPECT_EQ(DocumentHarness::probe().polls, before + 3);
    EXPECT_EQ(eval("ticks"), "3");
}

TEST_F(DocumentTest, ADocumentClosedInsideAPollIsClosedAfterIt) {
    int destructedInside = -1;
    host.define("closeDocument", [&] {
        host.document->close();
        destructedInside = host.destructed();
    });
    const int unloads = DocumentHarness::probe().unloads;
    const int polls = DocumentHarness::probe().polls;
    eval("Probe.listen(closeDocument); Probe.startPoll(100)");
    ASSERT_TRUE(host.waitUntil([&] { return DocumentHarness::probe().unloads == unloads + 1; }));
    EXPECT_EQ(destructedInside, 0);
    EXPECT_EQ(host.created(), host.destructed());
    EXPECT_EQ(DocumentHarness::probe().polls, polls + 1);
    EXPECT_EQ(DocumentHarness::probe().destroys - host.atStart.destroys, 1);
}

TEST_F(DocumentTest, ScriptThatOutlivesTheDocumentFindsItsObjectsEmpty) {
    eval("var object = Probe.make(), echo = Probe.echo; object.constant");
    host.document->close();
    EXPECT_EQ(host.created(), host.destructed());
    EXPECT_EQ(eval("[object.text, object.constant, echo(1), 'text' in object, typeof Probe]"),
              ",42,,false,object");
    EXPECT_EQ(eval("object.text = 1; ProbeEmpty"), "undefined");
}

TEST(DocumentAccessTest, ARefusedPageSeesNothingOfThePlugin) {
    DocumentHarness host;
    DocumentHarness::probe().allowsAccess = false;
    EXPECT_FALSE(host.document->open({"http", "example.org", 80}));
    DocumentHarness::probe().allowsAccess = true;
    EXPECT_STREQ(DocumentHarness::probe().protocolAsked, "http");
    EXPECT_EQ(host.eval("'Probe' in globalThis"), "false");
    EXPECT_EQ(DocumentHarness::probe().inits, host.atStart.inits);
    host.document->close();
    EXPECT_EQ(DocumentHarness::probe().destroys, host.atStart.destroys);
}

}  // namespace
