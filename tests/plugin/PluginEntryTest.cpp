#include "PluginTest.h"

#include <string>
#include <vector>

namespace {

using PluginEntryTest = PluginTest;

}  // namespace

TEST_F(PluginEntryTest, LoadingTellsItOnceAndHandsOutTheRecord) {
    log.reset();
    testing::internal::CaptureStderr();
    const struct jsplugin_capabilities& record = FakeHost::load();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "====== SONOLET LOADED ======\n");
    EXPECT_STREQ(record.global_names[0], "Spotify");
    EXPECT_EQ(record.global_names[1], nullptr);
    EXPECT_EQ(record.object_types[0], nullptr);
    EXPECT_EQ(record.global_setter, nullptr);
    EXPECT_EQ(record.allow_access("http", "anywhere", 80), 1);
    record.destroy(page);
    ASSERT_EQ(log.lines.size(), 1U);
    EXPECT_EQ(log.lines[0].text, "====== spotify_interface plugin loaded ======");
    EXPECT_EQ(log.lines[0].file, "Src/main");
    EXPECT_EQ(log.lines[0].line, 54);
    EXPECT_EQ(log.lines[0].level, 2);
    log.threshold = 3;
    FakeHost::load();
    EXPECT_EQ(log.lines.size(), 1U) << "a line below the threshold was written";
}

TEST_F(PluginEntryTest, ContextsOfTheLogAreMadeAtLoad) {
    EXPECT_TRUE(log.knows("Sonolet", "Src/main", 18));
    EXPECT_TRUE(log.knows("Sonolet", "Src/Logger", 107));
    EXPECT_TRUE(log.knows("Sonolet", "Src/jspp/../Logger", 107));
    EXPECT_TRUE(log.knows("Sonolet", "Src/jspp/_detail/object_impl", 16));
    const std::size_t known = log.contexts.size();
    createSession();
    call("Spotify.Sonolet", "version");
    EXPECT_EQ(log.contexts.size(), known) << "a context was made after load";
}

TEST_F(PluginEntryTest, OneGlobalThatMayBeCachedAndNoOther) {
    const Answer root = host->global(page, "Spotify");
    EXPECT_EQ(root.code, JSP_GET_VALUE_CACHE);
    EXPECT_EQ(host->global(page, "Spotify"), root);
    EXPECT_NE(host->global(host->open(), "Spotify"), root);
    for (const char* name : {"spotify", "Sonolet", "window", ""}) {
        EXPECT_EQ(host->global(page, name).code, JSP_GET_NO_VALUE) << name;
    }
    host->refusesObjects = true;
    EXPECT_EQ(host->global(host->open(), "Spotify"), raised("Create object failed"));
}

TEST_F(PluginEntryTest, EachDocumentGetsItsTwoTicksAndItsUnloadListenerInOrder) {
    EXPECT_EQ(host->lifecycle,
              (std::vector<std::string>{"poll 250", "poll 100", "unload listener"}));
    host->advance(10000);
    EXPECT_EQ(host->intervals(page), (std::vector<unsigned>{250, 100})) << "a tick ended";
    EXPECT_TRUE(spotify.callsTo("sp_session").empty()) << "the tick before the session did work";
}

TEST_F(PluginEntryTest, AnEmbeddedElementGetsNothing) {
    char type[] = "type";
    char value[] = "application/x-sonolet";
    jsplugin_attr attributes[] = {{type, value}};
    jsplugin_getter* getter = nullptr;
    jsplugin_setter* setter = nullptr;
    jsplugin_destructor* destructor = nullptr;
    jsplugin_gc_trace* trace = nullptr;
    jsplugin_notify* notify = nullptr;
    jsplugin_obj* element = host->pageObject(page);
    host->plugin().handle_object(page, element, 1, attributes, &getter, &setter, &destructor,
                                 &trace, &notify, &notify, &notify);
    EXPECT_EQ(getter, nullptr);
    EXPECT_EQ(element->plugin_private, nullptr);
}

TEST_F(PluginEntryTest, TheSessionIsReleasedOnceWhenTheProcessExits) {
    EXPECT_EXIT(
        {
            createSession();
            host.reset();
            exit(0);
        },
        testing::ExitedWithCode(0), "released 1 of 1 sessions");
}
