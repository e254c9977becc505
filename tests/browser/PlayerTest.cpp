#include "MusicServer.h"
#include "PlayerPage.h"

using testing::HasSubstr;

namespace {

class Player : public PlayerPage {};

TEST_F(Player, SaysWhoMaySignInAndThatThePasswordIsWrongAndLetsTryAgain) {
    EXPECT_THAT(evaluate("await until(() => !find('#signin').hidden);"
                         "return until(() => text('#signin-hint'));"),
                HasSubstr("sign in as listener, with the password listener"));
    EXPECT_EQ(evaluate("signIn('wrong');"
                       "await until(() => text('#signin-error'));"
                       "return [text('#signin-error'), find('#app').hidden, focused(),"
                       "    find('#name').value];"),
              R"(["The name or the password is wrong.",true,"","listener"])");
    page.reload();
    EXPECT_EQ(evaluate("await until(() => !find('#signin').hidden);"
                       "return [find('#name').value, document.activeElement.id];"),
              R"(["listener","password"])");
    EXPECT_EQ(evaluate("signIn('listener'); return until(() => !find('#app').hidden);"), "true");
}

TEST_F(Player, LoadsTheViewAgainWhenTheConnectionIsBack) {
    enter("#/album/Ines Orrell/Small Hours");
    EXPECT_EQ(evaluate("await until(() => find('[aria-rowindex=\"3\"]'));"
                       "const { connection } = await import('./music/session.js');"
                       "connection.emit(true);"  // nothing was lost
                       "find('[aria-rowindex=\"3\"]').focus();"
                       "const before = find('.view');"
                       "connection.emit(false);"
                       "const told = !find('#connection').hidden && find('.view') === before;"
                       "connection.emit(true);"
                       "await until(() => find('.view') !== before && find('.track'));"
                       "await until(() => focused().startsWith('Before the Birds'));"
                       "return [told, find('#connection').hidden];"),
              "[true,true]");
}

TEST_F(Player, DrawsACoverForWhatHasNone) {
    EXPECT_EQ(evaluate(R"js(
        const { artwork, coloursOf } = await import('./music/artwork.js');
        const luminance = (colour) => [.2126, .7152, .0722].reduce((sum, part, i) => sum + part *
            (colour[i] <= .04045 ? colour[i] / 12.92 : ((colour[i] + .055) / 1.055) ** 2.4), .05);
        const pictures = new Set();
        let least = 99;
        for (let i = 0; i < 200; ++i) {
            const [one, other] = coloursOf(`Album ${i}`).map(luminance);
            least = Math.min(least, Math.max(one, other) / Math.min(one, other));
            pictures.add(artwork(`Album ${i}`, 60).toDataURL());
            pictures.add(artwork(`Album ${i}`, 60).toDataURL());
        }
        return [pictures.size, least > 2.95];
    )js"),
              "[200,true]");
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

TEST_F(Player, LeadsFromTheSearchFieldIntoTheAnswerAndKeepsBothTheSame) {
    enter("#/home");
    EXPECT_EQ(evaluate(R"js(
        const { connection } = await import('./music/session.js');
        const answered = (word) => until(() => find(`[aria-label="Tracks found for ${word}"]`));
        const seen = [];
        // Enter comes before the answer to the last letter.
        for (const [from, ...typed] of [['#/albums', 'f', 'salt'], ['#/search/fog', 'f', 'salt']]) {
            await goTo(from);
            find('#search').focus();
            typed.forEach((word) => fill('#search', word));
            press('Enter');
            await answered('salt');
            await until(() => !find('.view[aria-busy]'));
            seen.push(find('.view').contains(document.activeElement));
        }
        // The view comes again, and an earlier one, while the field has the focus.
        find('#search').focus();
        const before = find('.view');
        connection.emit(false);
        connection.emit(true);
        await until(() => find('.view') !== before);
        await answered('salt');
        seen.push(find('#search').value);
        await goTo('#/search/fog');
        await goTo('#/albums');
        find('#search').focus();
        history.back();
        await answered('fog');
        return [...seen, find('#search').value].join();
    )js"),
              R"("true,true,salt,fog")");
}

// A server of music that others have written, in place of the folder.
class Served {
protected:
    // No other thread is there before the browser, nor after it. NOLINTBEGIN(concurrency-mt-unsafe)
    Served() { setenv("SONOLET_SERVER", server.url().c_str(), 1); }
    ~Served() { unsetenv("SONOLET_SERVER"); }
    // NOLINTEND(concurrency-mt-unsafe)

private:
    const MusicServer server{WORK_DIR "/served", MUSIC_DIR};
};
class ServedPlayer : Served, public PlayerPage {};

TEST_F(ServedPlayer, PlaysWhatTheServerFindsAndShowsItsAlbums) {
    EXPECT_THAT(evaluate("await until(() => !find('#signin').hidden); signIn('listener');"
                         "await until(() => !find('#app').hidden);"
                         "fill('#search', 'far ban');"
                         "await until(() => find('.track'));"
                         "find('.track').click();"
                         "await until(() => text('#position') > '0:00');"
                         "return text('#bar-text');"),
                HasSubstr("The Far Bank"));
    EXPECT_EQ(evaluate("await goTo('#/album/The Paper Ferries/Lanterns on the Water');"
                       "await until(() => find('[aria-rowindex=\"4\"]'));"
                       "return [...document.querySelectorAll('.track-title')].map((one) =>"
                       "    one.textContent);"),
              R"(["Ropes and Tar","Slow Crossing","The Far Bank","Moored"])");
}

TEST_F(Player, StartsTheNextTrackWithinTheEventThatEndsOne) {
    enter("#/album/Ines Orrell/Small Hours?play");
    // The page's listener comes first: what it does not call before this one, it calls later.
    EXPECT_EQ(evaluate(R"js(
        const titles = [...await until(() => find('.track.sounding') && find('[aria-rowindex="3"]') &&
            document.querySelectorAll('.track-title'))].map((one) => one.textContent);
        const { Session, Sonolet } = Spotify;
        const calls = [];
        for (const name of ['playerPrefetch', 'playerLoad', 'playerPlay']) {
            const real = Session[name];
            Object.defineProperty(Session, name, { value: (...given) => {
                calls.push(name);
                return real.apply(Session, given);
            } });
        }
        Sonolet.addEventListener('TrackComplete', () => calls.push('TrackComplete'));
        const toItsEnd = async () => { // which loads it anew
            await until(() => text('#position') > '0:00');
            fill('#seek', find('#seek').max - 6000);
            find('#seek').dispatchEvent(new Event('change'));
            calls.length = 0;
        };
        const seen = () => [calls.slice(0, calls.indexOf('TrackComplete') + 1).join(),
            titles.indexOf(text('.bar-title'))].join();
        await toItsEnd();
        await until(() => calls.includes('TrackComplete'));
        const first = seen();
        // What comes before the track that is ready is made ready in its place.
        await toItsEnd();
        await until(() => calls.includes('playerPrefetch'));
        find('[aria-rowindex="1"]').focus();
        press('ContextMenu');
        document.activeElement.click();
        await until(() => calls.includes('TrackComplete'));
        return [first, seen()];
    )js"),
              R"(["playerLoad,playerPlay,playerPrefetch,playerLoad,playerPlay,TrackComplete,1",)"
              R"("playerLoad,playerPlay,playerPrefetch,playerPrefetch,playerLoad,playerPlay,)"
              R"(TrackComplete,0"])");
}

// As X has them. The one key to play and to pause comes as "MediaPlay".
TEST_F(Player, ObeysTheKeysOfKeyboardsAndRemoteControls) {
    enter("#/album/Ines Orrell/Small Hours?play");
    evaluate("await until(() => find('.track.sounding') && find('[aria-rowindex=\"3\"]'));"
             "find('[aria-rowindex=\"1\"]').focus();"
             "window.titles = [...document.querySelectorAll('.track-title')].map((one) =>"
             "    one.textContent);"
             "window.now = (await import('./music/playback.js')).now;");
    // There is no window manager that gives the focus.
    ASSERT_EQ(run({"/usr/bin/xdotool", "search", "--onlyvisible", "--limit", "1", "--class",
                   "sonolet-browser", "windowfocus"},
                  {})
                  .exitCode,
              0);
    const struct {
        const char *key, *look;
    } cases[] = {
        {"XF86AudioPlay", "now.status === 'paused'"},
        {"XF86AudioPlay", "now.status === 'playing'"},
        {"XF86AudioNext", "text('.bar-title') === titles[1]"},
        {"XF86AudioForward", "now.position > 9000"},
        {"XF86AudioRewind", "now.position < 9000"},
        {"XF86AudioPrev", "text('.bar-title') === titles[0]"},
        {"XF86AudioStop", "now.status === 'stopped'"},
        {"Menu", "text('.dialog h2') === titles[0]"},
        {"XF86Search", "document.activeElement.id === 'search' && !find('.dialog')"},
        {"XF86HomePage", "location.hash === '#/home'"},
        {"XF86Back", "location.hash.startsWith('#/album')"},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.key);
        EXPECT_EQ(run({"/usr/bin/xdotool", "key", one.key}, {}).exitCode, 0);
        EXPECT_EQ(evaluate("return Boolean(await until(() => " + std::string(one.look) + "));"),
                  "true");
    }
}

TEST_F(Player, ShowsAtOnceWhatIsChangedElsewhere) {
    const std::string link = playlist({"new", "Evening"});
    enter("#/playlist/" + link);
    EXPECT_EQ(evaluate("return until(() => text('#main').includes('Nothing here yet'));"), "true");
    playlist({"add", "Evening", "Moored", "Kettle Song", "Salt Wind"});
    EXPECT_EQ(evaluate("await until(() => find('[aria-rowindex=\"3\"]'));"
                       "find('[aria-rowindex=\"3\"]').focus();"
                       "return text('.facts');"),
              R"("listener · 3 tracks")");
    playlist({"describe", "Evening", "For when it rains"});
    playlist({"message", "Evening", "1", "with you"});
    playlist({"move", "Evening", "1", "0"});
    EXPECT_EQ(evaluate("return until(() => text('.description') === 'For when it rains' &&"
                       "    text('[aria-rowindex=\"1\"]').startsWith('Kettle Song') &&"
                       "    text('[aria-rowindex=\"1\"]').includes('with you'));"),
              "true");
    // The focus stays on its track.
    playlist({"remove", "Evening", "1"});
    playlist({"rename", "Evening", "Late evening"});
    EXPECT_EQ(evaluate("await until(() => text('.facts') === 'listener · 2 tracks' &&"
                       "    text('.hero h1') === 'Late evening' &&"
                       "    text('#lists') === 'Late evening');"
                       "return focused();"),
              R"("Salt Wind, Low Tide Quartet, Harbour Weather, 0:14")");
    playlist({"remove", "Late evening"});
    EXPECT_EQ(evaluate("return until(() => !text('#lists').includes('Late evening'));"), "true");
}

TEST_F(Player, SortsAPlaylistAndPlaysItSoAndKeepsItsOwnOrder) {
    enter("#/home");
    const std::string link = playlist({"new", "Evening"});
    playlist({"add", "Evening", "Moored", "Kettle Song", "Salt Wind"});
    evaluate("location.hash = '#/playlist/" + link + "';");
    const std::string titles =
        "[...document.querySelectorAll('.track-title')].map((one) => one.textContent[0]).join('')";
    EXPECT_EQ(evaluate("await until(() => find('[aria-rowindex=\"3\"]'));"
                       "const seen = [" +
                       titles +
                       "];"
                       "for (let i = 0; i < 3; ++i) {"
                       "    find('[data-column=Title]').click();"
                       "    await new Promise(requestAnimationFrame);"
                       "    seen.push(" +
                       titles +
                       ");"
                       "}"
                       "find('[data-column=Title]').click();"
                       "await new Promise(requestAnimationFrame);"
                       "window.lately = [];"  // it is seen for a moment
                       "new MutationObserver(() => lately.push(text('.lately'))).observe("
                       "    find('#main'), { subtree: true, childList: true });"
                       "return [seen.join(), text('.facts')];"),
              R"(["MKS,KMS,SMK,MKS","listener · 3 tracks"])");
    // A change elsewhere is told and comes in its place.
    playlist({"add", "Evening", "Before the Birds"});
    EXPECT_EQ(evaluate("await until(() => text('.facts').endsWith('4 tracks') &&"
                       "    lately.includes('Just now: 1 track added'));"
                       "find('.track').click();"
                       "await until(() => find('.track.current') &&"
                       "    text('#bar-text').startsWith('Before'));"
                       "find('#toggle').click();"
                       "return [" +
                       titles + ", text('#bar-text').slice(0, 16)];"),
              R"(["BKMS","Before the Birds"])");
    // The queue is as it was seen; its rows go up and down, with the focus.
    EXPECT_EQ(evaluate("await goTo('#/playing');"
                       "await until(() => find('[aria-rowindex=\"3\"]'));"
                       "const seen = [" +
                       titles +
                       "];"
                       "find('[aria-rowindex=\"1\"]').focus();"
                       "document.activeElement.dispatchEvent(new KeyboardEvent('keydown',"
                       "    { key: 'ArrowDown', altKey: true, bubbles: true, cancelable: true }));"
                       "await until(() => " +
                       titles +
                       " === 'MKS' && focused().startsWith('Kettle'));"
                       "seen.push(focused().split(',')[0]);"
                       "const row = find('[aria-rowindex=\"3\"] .track-lead');"
                       "const at = row.getBoundingClientRect();"
                       "const point = (type, y) => row.dispatchEvent(new PointerEvent(type,"
                       "    { clientX: at.left + 5, clientY: at.top + 5 + y, bubbles: true }));"
                       "point('pointerdown', 0);"
                       "point('pointermove', -60);"
                       "point('pointermove', -2 * at.height - 40);"
                       "point('pointerup', -2 * at.height - 40);"
                       "await until(() => " +
                       titles +
                       " === 'SMK');"
                       "await goTo('#/recent');"
                       "await until(() => find('.track-title').textContent);"
                       "return [...seen, text('.track-title')];"),
              R"(["KMS","Kettle Song","Before the Birds"])");
}

TEST_F(Player, SortsAllThatASearchFindsAndAnArtistsTracks) {
    enter("#/home");
    EXPECT_EQ(evaluate(R"js(
        const { SearchTracks } = await import('./music/tracklist.js');
        SearchTracks.page = 5; // of twelve
        const shown = (selector) => Array.from(document.querySelectorAll(selector), (one) =>
            one.textContent);
        const seen = [];
        for (const address of ['#/search/year:1000-2999', '#/artist/Low Tide Quartet']) {
            await goTo(address);
            await until(() => find('.track-title bdi'));
            const count = find('.tracks').getAttribute('aria-rowcount');
            find('[data-column=Time]').click();
            await until(() => find('[data-column=Time][aria-pressed=true]'));
            find('[data-column=Time]').click();
            const backwards = await until(() => {
                const times = shown('.track-time');
                return !times.includes('') && times.length > 2 && times[0] > times[times.length - 1] &&
                    times;
            });
            seen.push(count, backwards.every((time, at) => at === 0 || backwards[at - 1] >= time));
        }
        return seen.join();
    )js"),
              R"("12,true,3,true")");
}

TEST_F(Player, ListsAllAlbumsAndArtistsWithLettersToJumpBy) {
    enter("#/albums");
    EXPECT_EQ(
        evaluate("await until(() => text('.facts') === '4 albums' && find('.track'));"
                 "const letters = text('.letters');"
                 "find('.track').focus();"
                 "press('w');"
                 "const typed = focused().split(',')[0];"
                 "press('ArrowRight');"
                 "const letter = focused();"
                 "press('ArrowLeft');"
                 "document.activeElement.click();"
                 "const jumped = focused().split(',')[0];"
                 "press('Enter');"
                 "await until(() => text('.hero h1') === jumped);"
                 "await goTo('#/artists');"
                 "return [letters, typed, letter, jumped, text('.facts'), text('.letters')];"),
        R"(["HLSW","Winter Sampler","To W","Small Hours","4 artists","ILPV"])");
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
        evaluate("await until(() => text('.facts') === 'listener · 10,002 tracks');"
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
