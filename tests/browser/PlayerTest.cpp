#include "PlayerPage.h"

#include <gmock/gmock.h>

using testing::HasSubstr;

namespace {

class Player : public PlayerPage {};

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
