#include "PlayerPage.h"

namespace {

class Layout : public PlayerPage {};

// Up and down and to the sides, through view, sidebar, bar and back.
constexpr const char* walk = R"js(
    const lost = [];
    for (const [view, ...keys] of [
        ['#/home', 'Down', 'Down', 'Right', 'Down', 'Up', 'Up', 'Left', 'Left', 'Down', 'Right'],
        ['#/album/Ines Orrell/Small Hours', 'Down', 'Down', 'Right', 'Down', 'Down', 'Up', 'Up'],
        ['#/playing', 'Down', 'Right', 'Right', 'Down', 'Left', 'Left', 'Up', 'Up'],
        ['#/search/o', 'Down', 'Down', 'Down', 'Down', 'Down', 'Down', 'Up', 'Up', 'Up', 'Up', 'Up'],
    ]) {
        document.activeElement.blur();
        await goTo(view);
        lost.push(hidden() && `${view}: ${hidden()}`);
        if (view.startsWith('#/album')) { // all of its head and three tracks
            const bar = find('.bar').getBoundingClientRect().top;
            lost.push(...['.hero h1', '.hero .button', '[aria-rowindex="3"]'].filter((one) =>
                find(one).getBoundingClientRect().bottom > bar));
        }
        keys.forEach((key, at) => {
            press(`Arrow${key}`);
            lost.push(hidden() && `${view} ${keys.slice(0, at + 1)}: ${hidden()}`);
        });
    }
    const cut = ['.top', '.main', '.bar'].filter((box) =>
        find(box).scrollWidth > find(box).clientWidth + 1);
    return lost.filter(Boolean).concat(cut, find('.bar').offsetHeight * 6 > innerHeight ? 'bar' : []);
)js";

TEST_F(Layout, KeepsTheFocusInViewAtEverySizeAndShowsAnAlbumsTracks) {
    enter("#/album/Ines Orrell/Small Hours?play");
    evaluate("await until(() => find('.track.current')); find('#repeat').click();");
    const struct {
        int width, height;
        bool margins;
    } screens[] = {{640, 480, true},
                   {800, 480, false},
                   {1024, 600, false},
                   {1280, 720, true},
                   {1920, 1080, false}};
    for (const auto& screen : screens) {
        page.resize(screen.width, screen.height);
        const std::string margins = screen.margins ? "margins" : "no margins";
        SCOPED_TRACE(std::to_string(screen.width) + 'x' + std::to_string(screen.height) + ", " +
                     margins);
        // As the menu sets them.
        EXPECT_EQ(evaluate("const on = () => document.documentElement.dataset.margins === 'on';"
                           "if (on() !== " +
                           std::string(screen.margins ? "true" : "false") +
                           ") {"
                           "    find('#menu').click();"
                           "    find('.menu-item:nth-child(2)').click();"
                           "}"
                           "const box = find('#app').getBoundingClientRect();"
                           "return [on(), Math.round(box.left / innerWidth * 100),"
                           "    Math.round((innerHeight - box.bottom) / innerHeight * 100)];"),
                  screen.margins ? "[true,5,5]" : "[false,0,0]");
        EXPECT_EQ(evaluate(walk), "[]");
    }
}

}  // namespace
