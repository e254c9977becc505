#include "PluginTest.h"
#include "jspp/call_parameters.h"
#include "jspp/event_dispatcher.h"
#include "jspp/interface.h"
#include "jspp/number_array.h"
#include "jspp/object.h"
#include "jspp/string_array.h"

namespace {

// One member of every kind that the framework knows.
class Probe final : public jspp::event_dispatcher<jspp::interface> {
public:
    Probe() {
        ++alive;
        _register();
        _function("kinds", &Probe::kinds, "nsbo");
        _function("silent", &Probe::silent, "");
        _function("fail", &Probe::fail, "");
        _function("failOddly", &Probe::failOddly, "");
        _function("date", &Probe::date, "s");
        _function("probe", &Probe::probe, "o");
        _function("callBack", &Probe::callBack, "o");
        _attribute_get("text", &Probe::getText);
        _attribute_set("text", &Probe::setText);
        _attribute_get("silence", &Probe::getSilence);
        _attribute_get("failure", &Probe::getFailure);
        _attribute_get("self", &Probe::getSelf);
        _attribute_get("fresh", &Probe::getFresh);
        _enum("MINUS", -1);
        _string("STRING", "constant");
        _boolean("YES", true);
    }
    ~Probe() override { --alive; }

    Probe(const Probe&) = delete;
    Probe& operator=(const Probe&) = delete;

    using interface::_child;
    using interface::_enum;
    using interface::_function;
    using interface::_remove;

    void kinds(jspp::function_context& context) {
        text = std::to_string(context.integer(0));
        text += context.string(1);
        text += context.boolean(2) ? "true" : "false";
        context.return_object(context.object(3));
    }
    void silent(jspp::function_context&) const {}
    void fail(jspp::function_context&) { throw std::runtime_error("failure"); }
    void failOddly(jspp::function_context&) { throw 7; }
    void date(jspp::function_context& context) { context.return_js_date(context.string(0)); }
    void probe(jspp::function_context& context) {
        context.return_interface(context.interface_of<Probe>(0), false);
    }
    void callBack(jspp::function_context& context) const {
        context.object(0).call(jspp::call_parameters());
        context.return_string(text + ", still");
    }
    void getText(jspp::result_context& context) const {
        context.return_string("overwritten");
        context.return_string(text);
    }
    void setText(jspp::parameter_context& context) { text = context.string(0); }
    void getSilence(jspp::result_context&) {}
    void getFailure(jspp::result_context&) { throw std::runtime_error("no reading"); }
    void getSelf(jspp::result_context& context) const {
        context.return_interface(self.lock(), true);
    }
    void getFresh(jspp::result_context& context) {
        context.return_interface(orvo::shared_ptr<interface>(new Probe), false);
    }

    static int alive;
    orvo::weak_ptr<interface> self;
    std::string text = "first";
};
int Probe::alive = 0;

class ScriptObjectTest : public PluginTest {
protected:
    ScriptObjectTest() : probe(new Probe) {
        probe->self = orvo::shared_ptr<jspp::interface>(probe);
        object = show(page);
        function = host->function(page);
    }
    void TearDown() override {
        host.reset();
        probe.reset();
        EXPECT_EQ(Probe::alive, 0);
        PluginTest::TearDown();
    }
    jsplugin_obj* show(jsplugin_obj* document) { return probe->create_object(document, probe); }
    jsplugin_obj* fresh() { return host->get(object, "fresh").value.object; }

    orvo::shared_ptr<Probe> probe;
    jsplugin_obj* object = nullptr;
    jsplugin_obj* function = nullptr;  // the page's
};

}  // namespace

TEST_F(ScriptObjectTest, EachKindOfMemberAnswersWithItsOwnCodeUntilItIsRemoved) {
    EXPECT_EQ(host->get(object, "text"), valued("first"));
    EXPECT_EQ(host->get(object, "silence").code, JSP_GET_NO_VALUE);
    EXPECT_EQ(host->get(object, "failure"), raised("no reading"));
    EXPECT_EQ(host->get(object, "MINUS"), cached(-1));
    EXPECT_EQ(host->get(object, "STRING"), cached("constant"));
    EXPECT_EQ(host->get(object, "YES"), cached(true));
    EXPECT_EQ(host->get(object, "self"), cached(object));
    EXPECT_EQ(host->get(object, "missing").code, JSP_GET_NO_PROPERTY);
    EXPECT_EQ(host->set(object, "text", "second"), stored());
    EXPECT_EQ(host->set(object, "text", 5), refused("Not a string"));
    EXPECT_EQ(probe->text, "second") << "a refused value changed the attribute";
    EXPECT_EQ(host->set(object, "silence", 5).code, JSP_PUT_READ_ONLY);
    EXPECT_EQ(host->call(object, "silent"), nothing());
    EXPECT_EQ(host->call(object, "failOddly"), failed("JSPP: Unknown exception type"));
    EXPECT_EQ(host->call(object, "date", {"86400000"}),
              returned(Value("new Date(86400000)", JSP_TYPE_EXPRESSION)));

    EXPECT_THROW(probe->_enum("text", 1), std::runtime_error);
    EXPECT_THROW(probe->_function("MINUS", &Probe::silent, ""), std::runtime_error);
    jsplugin_obj* silent = host->get(object, "silent").value.object;
    probe->_remove("text");
    probe->_remove("silent");
    EXPECT_EQ(host->get(object, "text").code, JSP_GET_NO_PROPERTY);
    EXPECT_EQ(host->set(object, "text", "x").code, JSP_PUT_READ_ONLY);
    EXPECT_EQ(host->invoke(object, silent).code, JSP_CALL_NO_FUNCTION);
    probe->_enum("text", 1);
    EXPECT_EQ(host->get(object, "text"), cached(1));
}

TEST_F(ScriptObjectTest, ArgumentsAreCheckedInOrderWithTheirMessages) {
    const std::pair<Values, const char*> failures[] = {
        {{}, "Not enough arguments"},
        {{1, "s", 1}, "Not a boolean"},
        {{1, "s", true}, "Not enough arguments"},
        {{1, "s", true, Value::null()}, "Not an object"}};
    for (const auto& [arguments, message] : failures) {
        EXPECT_EQ(host->call(object, "kinds", arguments), failed(message));
    }
    EXPECT_EQ(host->call(object, "fail"), failed("failure"));
    EXPECT_EQ(host->call(object, "probe", {Value()}), failed("Not an interface"));
    EXPECT_EQ(host->call(object, "kinds", {1.9, "\u00e4", true, function}), returned(function));
    EXPECT_EQ(probe->text, "1\u00e4true");
}

TEST_F(ScriptObjectTest,
       OnlyPlainObjectsOfThisFrameworkAreInterfacesAsArgumentsAndForTornOffCalls) {
    jsplugin_obj* silent = host->get(object, "silent").value.object;
    for (jsplugin_obj* other : {function, host->foreignObject(page), silent}) {
        EXPECT_EQ(host->call(object, "probe", {other}), failed("Not a jspp interface"));
        EXPECT_EQ(host->invoke(other, silent), failed("Not a jspp interface"));
    }
    EXPECT_EQ(host->invoke(nullptr, silent), failed("Not a jspp interface"));
    EXPECT_EQ(host->invoke(page, silent), failed("Not a jspp interface"));
    EXPECT_EQ(host->invoke(find("Spotify"), silent).code, JSP_CALL_NO_FUNCTION);
    EXPECT_EQ(host->invoke(object, silent), nothing());
    EXPECT_EQ(host->call(object, "probe", {find("Spotify")}),
              failed("Parameter is not of the requested interface type."));
    EXPECT_EQ(host->call(object, "probe", {object}), returned(object));
}

TEST_F(ScriptObjectTest, OneScriptObjectPerDocumentAndAFreshOneAfterCollectionOrUnloading) {
    jsplugin_obj* second = host->open();
    jsplugin_obj* elsewhere = show(second);
    EXPECT_EQ(show(page), object);
    EXPECT_NE(elsewhere, object);
    host->collect(object);
    object = show(page);
    EXPECT_EQ(host->get(object, "text"), valued("first"));
    EXPECT_EQ(show(second), elsewhere) << "collecting in one document disturbed the other";
    EXPECT_THROW(show(nullptr), std::runtime_error);

    host->unload(page);
    host->reopen(page);
    jsplugin_obj* later = show(page);
    EXPECT_NE(later, object) << "a script object of the unloaded document was handed out";
    host->collect(object);  // late: the sweep comes after the new document
    EXPECT_EQ(show(page), later) << "the late destructor took the new object's place away";
}

TEST_F(ScriptObjectTest, RefusalsByTheHostReachScriptAsMessages) {
    host->refusesFunctions = true;
    EXPECT_EQ(host->get(object, "silent"),
              raised("Couldn't create JS function using create_function"));
    host->refusesObjects = true;
    EXPECT_EQ(host->get(object, "fresh"), raised("Create object failed"));
    EXPECT_EQ(Probe::alive, 1) << "the object that found no script object was leaked";
}

TEST_F(ScriptObjectTest, CollectionInsideEveryHostCallIsHarmless) {
    // Everything the host is asked to make may first sweep away an object of the same class, whose
    // destructor takes the same locks, and read other members of the calling object.
    for (const char* name : {"fresh", "silent"}) {
        jsplugin_obj* victim = fresh();
        jsplugin_obj* itsFunction = host->get(victim, "silent").value.object;
        bool swept = false;
        host->duringCallbacks = [&] {
            host->collect(itsFunction);
            host->collect(victim);
            host->set(object, "text", host->get(object, "STRING").value);
            host->collectGarbage(page);
            swept = true;
        };
        host->get(object, name);
        host->duringCallbacks = nullptr;
        EXPECT_TRUE(swept) << name;
    }
    EXPECT_EQ(probe->text, "constant");
}

TEST_F(ScriptObjectTest, AnObjectMayBeDestroyedInsideACallOnIt) {
    for (const char* name : {"fresh", "silent"}) {
        jsplugin_obj* victim = fresh();
        host->duringCallbacks = [&] { host->collect(victim); };
        EXPECT_EQ(host->get(victim, name), raised("Not a jspp interface"));
        host->duringCallbacks = nullptr;
        EXPECT_EQ(Probe::alive, 1);
    }
    jsplugin_obj* victim = fresh();
    jsplugin_obj* end = host->function(page, [&](const Values&) { host->collect(victim); });
    EXPECT_EQ(host->call(victim, "callBack", {end}), returned("first, still"));
    EXPECT_EQ(Probe::alive, 1);
}

TEST_F(ScriptObjectTest, AfterItsDocumentHasGoneAnObjectKnowsPlainValuesAlone) {
    probe->_child("child", orvo::shared_ptr<jspp::interface>(new Probe));
    jsplugin_obj* session = find("Spotify.Session");
    jsplugin_obj* silent = host->get(object, "silent").value.object;
    host->unload(page);
    bool isHostCalled = false;
    host->duringCallbacks = [&] { isHostCalled = true; };
    EXPECT_EQ(host->set(object, "text", "second"), stored());
    EXPECT_EQ(host->get(object, "text"), valued("second"));
    EXPECT_EQ(host->get(object, "MINUS"), cached(-1));
    EXPECT_EQ(host->get(session, "onLoggedIn"), valued(Value::null()));
    EXPECT_EQ(host->set(object, "missing", 1).code, JSP_PUT_READ_ONLY);
    for (const char* name : {"silent", "self", "fresh", "child"}) {
        EXPECT_EQ(host->get(object, name), raised("Not a jspp interface")) << name;
    }
    EXPECT_EQ(host->set(session, "onLoggedIn", function), refused("Not a jspp interface"));
    EXPECT_EQ(host->invoke(object, silent), failed("Not a jspp interface"));
    EXPECT_FALSE(isHostCalled);
    EXPECT_EQ(registrySize(), 0U);
}

TEST_F(ScriptObjectTest, WhatACallOrItsDocumentMissesAtTheTickIsToldOrDropped) {
    const auto queue = [&] {
        jspp::call_parameters parameters;
        parameters.add(orvo::shared_ptr<Probe>(new Probe));
        jspp::object(function, page).call_delayed(parameters);
        tick();
    };
    host->refusesObjects = true;
    queue();
    EXPECT_EQ(log.count(5, "_js_global_functions::js_document_interval: Create object failed"), 1);
    host->refusesObjects = false;
    host->duringCallbacks = [&] { host->unload(page); };  // while the argument is made
    queue();
    EXPECT_TRUE(host->calls.empty()) << "called in a document that has gone";
}

TEST_F(ScriptObjectTest, ScriptObjectsParentsAndQueuedCallsKeepNativeObjectsAlive) {
    jsplugin_obj* once = fresh();
    probe->_child("child", orvo::shared_ptr<jspp::interface>(new Probe));
    jsplugin_obj* child = host->get(object, "child").value.object;
    EXPECT_EQ(host->get(object, "child"), valued(child));
    EXPECT_EQ(Probe::alive, 3);
    host->collect(once);
    host->collect(child);
    EXPECT_EQ(Probe::alive, 2) << "its parent owns the child";
    {
        jspp::call_parameters parameters;
        parameters.add(orvo::shared_ptr<Probe>(new Probe));
        jspp::object(function, page).call_delayed(parameters);
    }
    EXPECT_EQ(Probe::alive, 3);
    host->unload(page);
    EXPECT_EQ(Probe::alive, 2) << "what the queue held stayed";
}

TEST_F(ScriptObjectTest, ValuesOfEveryKindReachAListenerAndNothingReachesAClosedDocument) {
    const jspp::object handle(function, page);
    jspp::call_parameters parameters;
    parameters.add(1.5);
    parameters.add(-2);
    parameters.add(true);
    parameters.add(std::string("text").c_str());
    parameters.add(static_cast<const char*>(nullptr));
    parameters.add(handle);
    parameters.add_null();
    parameters.add_undefined();
    parameters.add(probe);
    parameters.add(jspp::object());
    handle.call(parameters);
    handle.call_delayed(jspp::call_parameters());
    ASSERT_EQ(host->calls.size(), 1U) << "a delayed call ran at once";
    tick();
    ASSERT_EQ(host->calls.size(), 2U);
    EXPECT_EQ(host->calls[0].arguments,
              (Values{1.5, -2, true, "text", "", function, Value::null(), {}, object, {}}));
    EXPECT_EQ(host->calls[0].thisObject, nullptr);
    EXPECT_EQ(host->calls[0].document, page);
    EXPECT_TRUE(host->calls[1].arguments.empty());

    log.reset();
    jspp::object().call(parameters);
    host->close(page);
    handle.call(parameters);
    handle.call_delayed(parameters);
    EXPECT_EQ(host->calls.size(), 2U);
    EXPECT_EQ(log.count(5, "jspp::object::callIllegal Spotify object called, returning."), 2);
    EXPECT_EQ(log.count(5, "jspp::object::call_delayedIllegal Spotify object called, returning."),
              1);
    EXPECT_EQ(log.lines.back().file, "Src/jspp/_detail/object_impl");
}

TEST_F(ScriptObjectTest, ArraysOfNumbersAloneCanBeWrittenWithinTheirBounds) {
    const orvo::shared_ptr<jspp::number_array> numbers(
        new jspp::number_array(std::vector<double>{1, 2.5, 3}));
    const orvo::shared_ptr<string_array> strings(new string_array(Strings{"a", "b", "c"}));
    jsplugin_obj* number = numbers->create_object(page, numbers);
    jsplugin_obj* string = strings->create_object(page, strings);
    EXPECT_EQ(host->call(string, "item", {2.9}), returned("c"));
    EXPECT_EQ(host->call(number, "item", {2.9}), returned(3));
    EXPECT_EQ(host->get(string, "3"), raised("Invalid index"));
    EXPECT_EQ(host->get(number, "1x"), raised("bad_lexical_cast"));
    EXPECT_EQ(host->set(string, "0", "x").code, JSP_PUT_READ_ONLY);
    EXPECT_EQ(host->set(number, "0", 5), stored());
    EXPECT_EQ(host->set(number, "0", "5"), refused("Not a number"));
    EXPECT_EQ(host->set(number, "3", 5), refused("Out of bounds array access"));
    EXPECT_EQ(host->set(number, "length", 5), refused("bad_lexical_cast"));
    EXPECT_EQ(host->get(number, "0"), valued(5));
}
