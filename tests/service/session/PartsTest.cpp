// The parts of a session by themselves: what is told, in which order, and what ends it.

#include "../../fakes/Test.h"
#include "objects/Shelf.h"
#include "session/LateAnswers.h"

namespace sonolet::test {
namespace {

using namespace service;

// What the program is told; its functions have no data of their own.
std::string told;
int wakings = 0;

sp_session_callbacks everything() {
    told.clear();
    wakings = 0;
    sp_session_callbacks callbacks{};
    callbacks.log_message = [](sp_session*, const char* line) { told += std::string(line) + '|'; };
    callbacks.notify_main_thread = [](sp_session*) { ++wakings; };
    callbacks.logged_out = [](sp_session*) { told += "out|"; };
    return callbacks;
}

TEST(SessionParts, EventsComeInOrderAndWhatTheyPostWaits) {
    Callbacks callbacks(everything(), nullptr);
    callbacks.post([&] { callbacks.log("later"); });
    callbacks.post([] { throw std::runtime_error("broken"); });
    callbacks.post([&] { callbacks.raise(&sp_session_callbacks::logged_out); });
    callbacks.post([&] { callbacks.raise(&sp_session_callbacks::logged_in, SP_ERROR_OK); });
    EXPECT_EQ(wakings, 1) << "once is enough";
    callbacks.handleEvents();
    EXPECT_EQ(told, "out|");
    callbacks.orLog("Not kept", [] { throw std::runtime_error("full"); });
    callbacks.handleEvents();
    EXPECT_EQ(told, "out|later|broken|Not kept: full|");

    callbacks.post([&] { callbacks.silence(); });
    callbacks.log("unheard");
    callbacks.handleEvents();
    callbacks.raise(&sp_session_callbacks::logged_out);
    callbacks.close();
    callbacks.log("unheard");
    callbacks.handleEvents();
    EXPECT_EQ(told, "out|later|broken|Not kept: full|");
    EXPECT_EQ(callbacks.deliver({}, nullptr, 7), 7) << "nobody wants sound: all of it is taken";
}

TEST(SessionParts, AnswersComeLateAndInOrder) {
    for (const auto& [spec, late] : {std::pair("", false), {"slow=1h", true}}) {
        Callbacks callbacks(everything(), nullptr);
        LateAnswers answers(callbacks, std::make_shared<Faults>(spec));
        for (const char* text : {"one|", "two|"}) {
            answers.answer([text] { told += text; });
        }
        callbacks.handleEvents();
        EXPECT_EQ(told, late ? "" : "one|two|") << spec;
        EXPECT_EQ(answers.untilNext().has_value(), late) << spec;
        answers.release();
        answers.clear();
        callbacks.handleEvents();
        EXPECT_EQ(answers.untilNext(), std::nullopt) << "nobody waits any more";
        EXPECT_EQ(told, late ? "" : "one|two|");
    }
    Callbacks callbacks(everything(), nullptr);
    LateAnswers answers(callbacks, std::make_shared<Faults>("slow=10ms"));
    for (const char* text : {"one|", "two|"}) {
        answers.answer([text] { told += text; });
    }
    while (told.size() < 8) {
        answers.release();
        callbacks.handleEvents();
    }
    EXPECT_EQ(told, "one|two|");
}

// A list is read as its handle is made, from a file that may be damaged.
TEST(Shelf, KeepsNothingOfAHandleThatCouldNotBeMade) {
    Shelf<int, service::Handle> shelf;
    const auto fail = []() -> service::Handle* { throw std::runtime_error("the file is damaged"); };
    EXPECT_THROW(shelf.get(1, fail), std::runtime_error);
    EXPECT_FALSE(shelf.find(1));
    EXPECT_TRUE(shelf.all().empty());
}

}  // namespace
}  // namespace sonolet::test
