#include "PluginTest.h"

#include <string>
#include <thread>
#include <vector>

namespace {

class EventTest : public PluginTest {
protected:
    EventTest() {
        createSession();
        session = find("Spotify.Session");
        listener = host->function(page);
    }

    Answer add(jsplugin_obj* function, const char* event = "LogMessage") {
        return host->call(session, "addEventListener", {event, function});
    }
    Answer remove(jsplugin_obj* function, const char* event = "LogMessage") {
        return host->call(session, "removeEventListener", {event, function});
    }
    void raise(const char* text) { spotify.callbacks().log_message(spotify.session(), text); }
    int callsAfterRaising() {
        host->calls.clear();
        raise("x");
        tick();
        return static_cast<int>(host->calls.size());
    }

    jsplugin_obj* session = nullptr;
    jsplugin_obj* listener = nullptr;
};

}  // namespace

TEST_F(EventTest, AFunctionIsCalledAsOftenAsItWasAddedAndNotYetRemoved) {
    EXPECT_EQ(add(listener), nothing());
    EXPECT_EQ(add(listener), nothing());
    add(host->function(page));
    add(listener, "LoggedIn");
    EXPECT_EQ(callsAfterRaising(), 3);
    EXPECT_EQ(remove(listener), nothing());
    EXPECT_EQ(callsAfterRaising(), 2);
    remove(listener);
    remove(listener);
    remove(host->function(page));
    remove(listener, "NeverRaised");
    EXPECT_EQ(callsAfterRaising(), 1);
}

TEST_F(EventTest, TheHandlerFollowsTheListenersAndTheLastOneSetCounts) {
    jsplugin_obj* handler = host->function(page);
    EXPECT_EQ(host->get(session, "onLogMessage"), valued(Value::null()));
    EXPECT_EQ(host->set(session, "onLogMessage", host->function(page)), stored());
    EXPECT_EQ(host->set(session, "onLogMessage", handler), stored());
    add(listener);
    EXPECT_EQ(host->get(session, "onLogMessage"), valued(handler));
    EXPECT_EQ(host->set(session, "onLogMessage", 5), (Answer{JSP_PUT_EXCEPTION, "Not an object"}));
    ASSERT_EQ(callsAfterRaising(), 2);
    EXPECT_EQ(host->calls[0].function, listener);
    EXPECT_EQ(host->calls[1].function, handler);
}

TEST_F(EventTest, ListenerFunctionsCheckTheirArguments) {
    for (const char* name : {"addEventListener", "removeEventListener"}) {
        EXPECT_EQ(host->call(session, name), failed("Not enough arguments"));
        EXPECT_EQ(host->call(session, name, {"E"}), failed("Not enough arguments"));
        EXPECT_EQ(host->call(session, name, {5, listener}), failed("Not a string"));
        EXPECT_EQ(host->call(session, name, {"E", "f"}), failed("Not an object"));
    }
}

TEST_F(EventTest, EveryAttributeKeepsItsOwnHandlerAndTheRootIsADispatcherToo) {
    const std::vector<std::pair<const char*, std::vector<const char*>>> attributes = {
        {"Spotify.Session",
         {"PlayTokenLost", "LoggedIn", "StreamingError", "ConnectionError", "UserinfoUpdated",
          "LoggedOut", "LogMessage", "MessageToUser", "EndOfTrack", "MetaDataUpdated",
          "CredentialsBlobUpdated", "ShowTrialWelcome"}},
        {"Spotify.Sonolet", {"TrackProgress", "Error", "LogMessage", "TrackComplete"}}};
    for (const auto& [path, events] : attributes) {
        std::vector<jsplugin_obj*> handlers;
        for (const char* event : events) {
            handlers.push_back(host->function(page));
            EXPECT_EQ(host->set(find(path), std::string("on") + event, handlers.back()), stored());
        }
        for (std::size_t i = 0; i < events.size(); ++i) {
            EXPECT_EQ(host->get(find(path), std::string("on") + events[i]), valued(handlers[i]))
                << path << ' ' << events[i];
        }
    }
    for (const char* missing : {"onOfflineStatusUpdated", "onOfflineError", "onMetadataUpdated"}) {
        EXPECT_EQ(host->set(session, missing, listener).code, JSP_PUT_READ_ONLY) << missing;
    }
    EXPECT_EQ(call("Spotify", "addEventListener", {"Any", listener}), nothing());
    EXPECT_EQ(call("Spotify", "removeEventListener", {"Any", listener}), nothing());
}

TEST_F(EventTest, CallsQueuedDuringATickWaitForTheNext) {
    int inner = 0;
    jsplugin_obj* restless = host->function(page, [&](const std::vector<Value>&) {
        ++inner;
        raise("again");
        remove(listener);  // its call of this tick is queued already
    });
    add(restless);
    add(listener);
    raise("first");
    tick();
    EXPECT_EQ(inner, 1);
    EXPECT_EQ(host->callsOf(listener), 1);
    tick();
    EXPECT_EQ(inner, 2);
    EXPECT_EQ(host->callsOf(listener), 1 + 1) << "raised before the listener was removed";
    tick();
    EXPECT_EQ(host->callsOf(listener), 2);
}

TEST_F(EventTest, UnloadingDropsQueuedCallsAndListenersAlsoForALaterDocumentAtTheAddress) {
    jsplugin_obj* elsewhere = host->open();
    jsplugin_obj* survivor = host->function(elsewhere);
    host->call(host->find(elsewhere, "Spotify.Session"), "addEventListener",
               {"LogMessage", survivor});
    add(listener);
    host->set(session, "onLogMessage", listener);
    raise("queued");
    host->unload(page);
    raise("after");
    host->reopen(page);
    host->recycle(listener, page);  // and the function's address comes back as well
    tick();
    EXPECT_EQ(host->callsOf(listener), 0);
    EXPECT_EQ(host->callsOf(survivor), 2);

    session = find("Spotify.Session");
    EXPECT_EQ(host->get(session, "onLogMessage"), valued(Value::null()));
    add(listener);
    host->calls.clear();
    raise("fresh");
    tick();
    EXPECT_EQ(host->callsOf(listener), 1) << "the earlier document's listener was called as well";
    EXPECT_EQ(log.count(5, "jspp::object::call_delayedIllegal Spotify object called, returning."),
              0);
}

TEST_F(EventTest, ADocumentThatGoesDuringItsTickEndsTheTick) {
    jsplugin_obj* last =
        host->function(page, [&](const std::vector<Value>&) { host->unload(page); });
    add(last);
    add(listener);
    raise("x");
    tick();
    EXPECT_EQ(host->callsOf(last), 1);
    EXPECT_EQ(host->callsOf(listener), 0);
    tick();
    EXPECT_EQ(host->calls.size(), 1U);
    EXPECT_EQ(log.count(5, "jspp::object::callIllegal Spotify object called, returning."), 0)
        << "what is skipped at the tick is not told";
}

TEST_F(EventTest, FunctionsHeldNativelySurviveCollectionWhileTheyAreHeld) {
    jsplugin_obj* elsewhere = host->open();
    jsplugin_obj* other = host->function(elsewhere);
    host->call(host->find(elsewhere, "Spotify.Session"), "addEventListener", {"E", other});
    jsplugin_obj* handler = host->function(page);
    add(listener);
    host->set(session, "onLoggedIn", handler);
    // Between event and tick the queue alone holds the function.
    jsplugin_obj* queued = host->function(page);
    add(queued);
    raise("x");
    remove(queued);
    host->collectGarbage(page);
    EXPECT_TRUE(host->alive(listener) && host->alive(handler) && host->alive(queued));
    tick();
    EXPECT_EQ(host->callsOf(queued), 1);
    remove(listener);
    host->set(session, "onLoggedIn", host->function(page));
    host->collectGarbage(page);
    EXPECT_FALSE(host->alive(listener) || host->alive(handler) || host->alive(queued));
    EXPECT_TRUE(host->alive(other));
}

TEST_F(EventTest, AnEventFromAForeignThreadArrivesAtTheTickOnTheScriptThread) {
    std::thread::id ranOn;
    add(host->function(page, [&](const std::vector<Value>& arguments) {
        ranOn = std::this_thread::get_id();
        EXPECT_EQ(arguments, std::vector<Value>{"from afar"});
    }));
    std::thread([&] { raise("from afar"); }).join();
    EXPECT_TRUE(host->calls.empty());
    tick();
    EXPECT_EQ(ranOn, std::this_thread::get_id());
}
