#ifndef SONOLET_TESTS_BROWSER_PLAYERPAGE_H
#define SONOLET_TESTS_BROWSER_PLAYERPAGE_H

#include "Command.h"
#include "Place.h"
#include "WebDriver.h"

// For the body of every function that runs in the page. Keys go where the focus is.
inline constexpr const char* playerHelpers = R"js(
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
    const goTo = async (address) => {
        const before = find('.view');
        location.hash = address;
        await until(() => find('.view') !== before && !find('.view[aria-busy]'));
    };
    // Where the focus is, unless all of it is seen; '' then.
    const hidden = () => {
        const at = document.activeElement;
        const { left, top, right, bottom } = at.getBoundingClientRect();
        const [x, y, inset] = [(left + right) / 2, (top + bottom) / 2, 3];
        const seen = [[x, y], [x, top + inset], [x, bottom - inset], [left + inset, y],
            [right - inset, y]].every((point) => {
            const there = document.elementFromPoint(...point);
            return there && at !== document.body && (at.contains(there) || there.contains(at));
        });
        return seen ? '' : at === document.body ? 'nothing has it' : `${focused()} (${[left, top, right, bottom].map(Math.round)})`;
    };
    const focused = () => document.activeElement.getAttribute('aria-label') ||
        document.activeElement.textContent;
)js";

// The player in a browser, as a person uses it.
class PlayerPage : public testing::Test {
protected:
    PlayerPage() { page.open("file://" PLAYER_DIR "/index.html"); }

    std::string evaluate(const std::string& body) { return page.evaluate(playerHelpers + body); }

    // Signs in and, when all twelve tunes have been read, goes to a place of the player.
    void enter(const std::string& address) {
        const std::string outcome =
            evaluate("await until(() => !find('#signin').hidden); signIn('listener');"
                     "await until(() => find('.card'));"
                     "while (12 !== await new Promise((told) => Spotify.Search.create("
                     "    'year:1000-2999', 0, 1, 0, 0, 0, 0, 0, 0, 0,"
                     "    (found) => told(found.totalTracks())))) {}"
                     "location.hash = '" +
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

#endif
