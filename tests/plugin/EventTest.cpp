#include "PluginTest.h"

namespace {

class EventTest : public PluginTest {
protected:
    EventTest() {
        createSession();
        listener = host->function(page);
    }

    Answer add(jsplugin_obj* function, const char* event = "LogMessage") {
        return session("addEventListener", {event, function});
    }
    Answer remove(jsplugin_obj* function, const char* event = "LogMessage") {
        return session("removeEventListener", {event, function});
    }
    Answer set(const char* attribute, const Value& value) {
        return host->set(find("Spotify.Session"), attribute, value);
    }
    Answer handler() { return host->get(find("Spotify.Session"), "onLogMessage"); }
    // The other document's function hears the session's messages too.
    jsplugin_obj* listenElsewhere() {
        jsplugin_obj* elsewhere = host->open();
        jsplugin_obj* function = host->function(elsewhere);
        host->call(host->find(elsewhere, "Spotify.Session"), "addEventListener",
                   {"LogMessage", function});
        return function;
    }
    void raise(const char* text) { spotify.callbacks().log_message(spotify.session(), text); }
    // The functions that the event reaches at the next tick, in order.
    std::vector<jsplugin_obj*> reached() {
        host->calls.clear();
        raise("x");
        tick();
        std::vector<jsplugin_obj*> functions;
        for (const FakeHost::Call& made : host->calls) {
            functions.push_back(made.function);
        }
        return functions;
    }

    jsplugin_obj* listener = nullptr;
};

}  // namespace

TEST_F(EventTest, AFunctionIsCalledAsOftenAsItWasAddedAndTheHandlerLast) {
    using Functions = std::vector<jsplugin_obj*>;
    jsplugin_obj* other = host->function(page);
    jsplugin_obj* last = host->function(page);
    EXPECT_EQ(handler(), valued(Value::null()));
    EXPECT_EQ(set("onLogMessage", other), stored());
    EXPECT_EQ(set("onLogMessage", last), stored());
    EXPECT_EQ(handler(), valued(last));
    EXPECT_EQ(add(listener), nothing());
    add(other);
    add(listener);
    add(listener, "LoggedIn");
    EXPECT_EQ(reached(), (Functions{listener, other, listener, last}));
    EXPECT_EQ(remove(listener), nothing());
    EXPECT_EQ(reached(), (Functions{other, listener, last})) << "the oldest entry goes";
    remove(listener);
    remove(listener);
    remove(other, "NeverRaised");
    EXPECT_EQ(reached(), (Functions{other, last}));
    EXPECT_EQ(remove(listener, ""), nothing());
    EXPECT_EQ(call("Spotify", "addEventListener", {"Any", listener}), nothing());
}

TEST_F(EventTest, CallsQueuedDuringATickWaitForTheNext) {
    int inner = 0;
    add(host->function(page, [&](const Values&) {
        ++inner;
        raise("again");
        remove(listener);  // its call of this tick is queued already
    }));
    add(listener);
    raise("first");
    for (const int heard : {1, 2, 2}) {
        tick();
        EXPECT_EQ(host->callsOf(listener), heard) << "raised before or after it was removed";
    }
    EXPECT_EQ(inner, 3);
}

TEST_F(EventTest, UnloadingDropsQueuedCallsAndListenersAlsoForALaterDocumentAtTheAddress) {
    jsplugin_obj* survivor = listenElsewhere();
    add(listener);
    set("onLogMessage", listener);
    raise("queued");
    host->unload(page);
    raise("after");
    host->reopen(page);
    host->recycle(listener, page);  // and the function's address comes back as well
    tick();
    EXPECT_EQ(host->callsOf(listener), 0);
    EXPECT_EQ(host->callsOf(survivor), 2);
    EXPECT_EQ(handler(), valued(Value::null()));
    add(listener);
    reached();
    EXPECT_EQ(host->callsOf(listener), 1) << "the earlier document's listener was called as well";
    EXPECT_EQ(log.count(5, "jspp::object::call_delayedIllegal Spotify object called, returning."),
              0);
}

TEST_F(EventTest, ADocumentThatGoesDuringItsTickEndsTheTick) {
    add(host->function(page, [&](const Values&) { host->unload(page); }));
    add(listener);
    EXPECT_EQ(reached().size(), 1U);
    EXPECT_EQ(reached().size(), 0U);
    EXPECT_EQ(log.count(5, "jspp::object::callIllegal Spotify object called, returning."), 0)
        << "what is skipped at the tick is not told";
}

TEST_F(EventTest, FunctionsHeldNativelySurviveCollectionWhileTheyAreHeld) {
    jsplugin_obj* other = listenElsewhere();
    jsplugin_obj* handler = host->function(page);
    jsplugin_obj* queued = host->function(page);  // between event and tick by the queue alone
    add(listener);
    set("onLoggedIn", handler);
    add(queued);
    raise("x");
    remove(queued);
    host->collectGarbage(page);
    ASSERT_TRUE(host->alive(listener) && host->alive(handler) && host->alive(queued));
    tick();
    EXPECT_EQ(host->callsOf(queued), 1);
    remove(listener);
    set("onLoggedIn", host->function(page));
    host->collectGarbage(page);
    EXPECT_FALSE(host->alive(listener) || host->alive(handler) || host->alive(queued));
    EXPECT_TRUE(host->alive(other));
}
