#include "Command.h"
#include "Place.h"
#include "WebDriver.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using testing::HasSubstr;

namespace {

// For the body of every function that runs in the page. Keys go where the focus is.
constexpr const char* helpers = R"js(
    const find = (selector) => document.querySelector(selector);
    const text = (selector) => find(selector) ? find(selector).textContent : '';
    const until = (look) => new Promise((resolve, reject) => {
        const end = performance.now() + 100000;
        const poll = () => {
            const seen = look();
            seen ? resolve(seen) : performance.now() < end ? setTimeout(poll, 20)
                : reject(`nothing for ${look}; there is ${document.body.innerText}`);
        };
        poll();
    });
    const press = (...keys) => keys.forEach((key) => document.activeElement.dispatchEvent(
        new KeyboardEvent('keydown', { key, bubbles: true, cancelable: true })));
    const fill = (selector, value) => {
        find(selector).value = value;
        find(selector).dispatchEvent(new Event('input'));
    };
    const signIn = (password) => {
        fill('#name', 'listener');
        fill('#password', password);
        find('#signin-button').click();
    };
    const focused = () => document.activeElement.getAttribute('aria-label') ||
        document.activeElement.textContent;
)js";

// The player in a browser, as a person uses it.
class Player : public testing::Test {
protected:
    Player() { page.open("file://" PLAYER_DIR "/index.html"); }

    std::string evaluate(const std::string& body) { return page.evaluate(helpers + body); }

    // Signs in and, when the library has been read, goes to a place of the player.
    void enter(const std::string& address) {
        const std::string outcome =
            evaluate("await until(() => !find('#signin').hidden); signIn('listener');"
                     "await until(() => find('.card')); location.hash = '" +
                     address + "'; return 'there';");
        ASSERT_EQ(outcome, R"("there")");
    }

    // Another process of the same user; what it prints.
    static std::string playlist(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), BIN_DIR "/sonolet-playlist");
        const Outcome outcome = run(arguments, {});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
        return outcome.output.substr(0, outcome.output.find('\n'));
    }

    Place place{std::string("player") +
                testing::UnitTest::GetInstance()->current_test_info()->name()};
    WebDriver page{{"--audio", "null"}};
};

TEST_F(Player, SaysThatThePasswordIsWrongAndLetsTryAgain) {
    EXPECT_EQ(evaluate("await until(() => !find('#signin').hidden); signIn('wrong');"
                       "await until(() => text('#signin-error'));"
                       "return [text('#signin-error'), find('#app').hidden, focused()];"),
              R"(["The name or the password is wrong.",true,""])");
    EXPECT_EQ(evaluate("signIn('listener'); return until(() => !find('#app').hidden);"), "true");
}

TEST_F(Player, PlaysAndSeeksWhatASearchFinds) {
    enter("#/home");
    EXPECT_THAT(evaluate("fill('#search', 'far ban');"
                         "await until(() => find('.track'));"
                         "find('.track').click();"
                         "await until(() => text('#position') > '0:00');"
                         "return text('#bar-text');"),
                HasSubstr("The Far Bank"));
    // There, and on from there.
    EXPECT_EQ(evaluate("fill('#seek', 10000); find('#seek').dispatchEvent(new Event('change'));"
                       "return until(() => text('#position') > '0:10');"),
              "true");
}

TEST_F(Player, ShowsAtOnceWhatIsChangedElsewhere) {
    const std::string link = playlist({"new", "Evening"});
    enter("#/playlist/" + link);
    EXPECT_EQ(evaluate("return until(() => text('#main').includes('Nothing here yet'));"), "true");
    playlist({"add", "Evening", "Moored", "Kettle Song", "Salt Wind"});
    EXPECT_EQ(evaluate("await until(() => find('[aria-rowindex=\"3\"]'));"
                       "find('[aria-rowindex=\"3\"]').focus();"
                       "return text('.facts');"),
              R"("3 tracks")");
    // The focus stays on its track.
    playlist({"remove", "Evening", "0"});
    playlist({"rename", "Evening", "Late evening"});
    EXPECT_EQ(evaluate("await until(() => text('.facts') === '2 tracks' &&"
                       "    text('.hero h1') === 'Late evening' &&"
                       "    text('#lists') === 'Late evening');"
                       "return focused();"),
              R"("Salt Wind, Low Tide Quartet, Harbour Weather, 0:14")");
    playlist({"remove", "Late evening"});
    EXPECT_EQ(evaluate("return until(() => !text('#lists').includes('Late evening'));"), "true");
}

TEST_F(Player, ShowsTenThousandTracksWithAFewRows) {
    enter("#/home");
    const std::string link = playlist({"new", "Long"});
    std::vector<std::string> some = {"add", "Long"};
    for (int i = 0; i < 1000; ++i) {
        some.insert(some.end(), {"Moored", "Kettle Song"});
    }
    for (int i = 0; i < 5; ++i) {
        playlist(some);
    }
    playlist({"add", "Long", "Salt Wind"});
    EXPECT_EQ(evaluate("location.hash = '#/playlist/" + link +
                       "';"
                       "await until(() => find('.track'));"
                       "const rows = () => document.querySelectorAll('#main [role=row]').length;"
                       "let most = rows();"
                       "for (let i = 1; i <= 20; ++i) {"
                       "    const before = find('.track').dataset.index;"
                       "    find('#main').scrollTop = i / 20 * find('#main').scrollHeight;"
                       "    await until(() => find('.track').dataset.index !== before);"
                       "    most = Math.max(most, rows());"
                       "}"
                       "return [most < 40, text('[aria-rowindex=\"10001\"] .track-title')];"),
              R"([true,"Salt Wind"])");
    // Who has scrolled away from the focused row stays there when the list changes.
    EXPECT_EQ(evaluate("find('.track').focus({ preventScroll: true });"
                       "window.row = document.activeElement.dataset.index;"
                       "find('#main').scrollTop = 300000;"
                       "return find('#main').scrollTop;"),
              "300000");
    playlist({"add", "Long", "Salt Wind"});
    EXPECT_EQ(
        evaluate("await until(() => text('.facts') === '10,002 tracks');"
                 "return [find('#main').scrollTop, document.activeElement.dataset.index === row];"),
        "[300000,true]");
}

TEST_F(Player, IsUsedWithTheArrowKeysAlone) {
    enter("#/album/Ines Orrell/Small Hours");
    EXPECT_THAT(evaluate("await until(() => find('.track') && focused() === 'Play');"
                         "press('ArrowDown', 'ArrowDown', 'Enter');"
                         "await until(() => find('.track.sounding'));"
                         "return text('.track.sounding');"),
                HasSubstr("Streetlight Waltz"));
    // Within the row, out of it and back.
    EXPECT_EQ(
        evaluate("const seen = [];"
                 "for (const key of ['ArrowRight', 'ArrowRight', 'ArrowLeft', 'ArrowLeft',"
                 "    'ArrowLeft', 'ArrowRight', 'ArrowDown', 'ArrowDown']) {"
                 "    press(key);"
                 "    const at = document.activeElement;"
                 "    seen.push(at.closest('.sidebar') ? 'sidebar' : at.closest('.bar') ? 'bar'"
                 "        : at.dataset.index || focused());"
                 "}"
                 "return seen.join();"),
        R"("Star,More,Star,1,sidebar,1,2,bar")");
    // Past a button that has nothing to do, and from nowhere to something.
    EXPECT_EQ(evaluate("location.hash = '#/playing';"
                       "(await until(() => find('.queue .track'))).focus();"
                       "press('ArrowRight');"
                       "const beside = focused();"
                       "document.activeElement.blur();"
                       "press('ArrowDown');"
                       "return [beside, document.activeElement !== document.body];"),
              R"(["Remove from the queue",true])");
}

}  // namespace
