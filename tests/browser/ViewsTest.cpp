#include "PlayerPage.h"

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

using testing::HasSubstr;

namespace {

struct View {
    const char* name;
    const char* address;
};
constexpr View views[] = {{"home", "#/home"},
                          {"albums", "#/albums"},
                          {"artists", "#/artists"},
                          {"album", "#/album/The Paper Ferries/Lanterns on the Water"},
                          {"artist", "#/artist/Low Tide Quartet"},
                          {"search", "#/search/o"},
                          {"playlist", ""},
                          {"starred", "#/starred"},
                          {"people", "#/people"},
                          {"recent", "#/recent"},
                          {"playing", "#/playing"},
                          {"missing", "#/nothing"}};
struct Size {
    int width, height;
};
// The last one is that of Cog without a display, which has no other.
constexpr Size sizes[] = {{640, 480}, {800, 480}, {1280, 720}, {1920, 1080}, {800, 600}};

// Pictures of one size beside each other, reduced: what is compared.
class Sheet final {
public:
    static constexpr int tileWidth = 120, tileHeight = 90;

    using Picture = std::unique_ptr<GdkPixbuf, decltype(&g_object_unref)>;

    Sheet(std::size_t columns, std::size_t rows)
        : pixels(gdk_pixbuf_new(GDK_COLORSPACE_RGB,
                                0,
                                8,
                                static_cast<int>(columns) * tileWidth,
                                static_cast<int>(rows) * tileHeight),
                 g_object_unref) {
        gdk_pixbuf_fill(pixels.get(), 0);
    }
    explicit Sheet(const std::string& file)
        : pixels(gdk_pixbuf_new_from_file(file.c_str(), nullptr), g_object_unref) {}

    // Takes a PNG file in.
    void place(const std::string& png, std::size_t atColumn, std::size_t atRow) {
        const int column = static_cast<int>(atColumn), row = static_cast<int>(atRow);
        const Picture whole = decoded(png);
        gdk_pixbuf_scale(whole.get(), pixels.get(), column * tileWidth, row * tileHeight, tileWidth,
                         tileHeight, column * tileWidth, row * tileHeight,
                         static_cast<double>(tileWidth) / gdk_pixbuf_get_width(whole.get()),
                         static_cast<double>(tileHeight) / gdk_pixbuf_get_height(whole.get()),
                         GDK_INTERP_HYPER);
    }
    void save(const std::string& file) const {
        gdk_pixbuf_save(pixels.get(), file.c_str(), "png", nullptr, "compression", "9", nullptr);
    }
    bool isThere() const { return pixels != nullptr; }

    // How many of a hundred cells of a tile, each large enough for a few letters, differ visibly:
    // other fonts move letters within them, another layout moves things from one to another.
    int difference(const Sheet& other, std::size_t column, std::size_t row) const {
        constexpr int cell = 6, visible = 20;
        int cells = 0;
        int different = 0;
        for (int y = 0; y < tileHeight; y += cell) {
            for (int x = 0; x < tileWidth; x += cell, ++cells) {
                int most = 0;
                for (int channel = 0; channel < 3; ++channel) {
                    const int left = static_cast<int>(column) * tileWidth + x;
                    const int top = static_cast<int>(row) * tileHeight + y;
                    most = std::max(most, std::abs(mean(left, top, cell, channel) -
                                                   other.mean(left, top, cell, channel)));
                }
                different += most > visible ? 1 : 0;
            }
        }
        return different * 100 / cells;
    }

private:
    static Picture decoded(const std::string& png) {
        GdkPixbufLoader* const loader = gdk_pixbuf_loader_new();
        gdk_pixbuf_loader_write(loader, reinterpret_cast<const guchar*>(png.data()), png.size(),
                                nullptr);
        gdk_pixbuf_loader_close(loader, nullptr);
        Picture picture(gdk_pixbuf_copy(gdk_pixbuf_loader_get_pixbuf(loader)), g_object_unref);
        g_object_unref(loader);
        return picture;
    }
    int mean(int left, int top, int cell, int channel) const {
        const guchar* const bytes = gdk_pixbuf_read_pixels(pixels.get());
        const int stride = gdk_pixbuf_get_rowstride(pixels.get());
        const int channels = gdk_pixbuf_get_n_channels(pixels.get());
        int sum = 0;
        for (int y = top; y < top + cell; ++y) {
            for (int x = left; x < left + cell; ++x) {
                sum += bytes[y * stride + x * channels + channel];
            }
        }
        return sum / (cell * cell);
    }

    Picture pixels;
};

std::string bytesOf(const std::string& base64) {
    gsize size = 0;
    guchar* const bytes = g_base64_decode(base64.c_str(), &size);
    std::string all(reinterpret_cast<const char*>(bytes), size);
    g_free(bytes);
    return all;
}

struct Theme {
    explicit Theme(const std::string& itsName)
        : name(itsName), accepted(ACCEPTED_DIR "/" + itsName + ".png") {}

    int difference(std::size_t column, std::size_t row) const {
        return accepted.isThere() ? now.difference(accepted, column, row) : 100;
    }

    const std::string name;
    const Sheet accepted;
    Sheet now{std::size(views), std::size(sizes)};
};

class Views : public PlayerPage {
protected:
    // What every view has something to show of.
    void prepare() {
        enter("#/album/Ines Orrell/Small Hours?play");
        link = playlist({"new", "Evening"});
        playlist({"add", "Evening", "Moored", "Kettle Song", "Salt Wind", "Ropes and Tar"});
        playlist({"add", "starred", "Before the Birds", "Slow Crossing"});
        // A track that rests at its start, and a page without movement.
        evaluate("const style = document.createElement('style');"
                 "style.textContent = '* { transition: none !important;"
                 "    animation: none !important; caret-color: transparent !important; }';"
                 "document.head.append(style);"
                 "await until(() => find('.track.sounding') && text('#position') > '0:00');"
                 "find('#toggle').click();");
    }
    void show(const View& view) {
        const std::string address = *view.address == '\0' ? "#/playlist/" + link : view.address;
        ASSERT_EQ(evaluate("const { picturesShown } = await import('./music/images.js');"
                           "document.activeElement.blur();"
                           "if (location.hash !== '" +
                           address + "') { await goTo('" + address +
                           "'); }"
                           "return until(() => picturesShown() && !find('.track.loading'));"),
                  "true");
    }
    void wear(const std::string& theme) {
        evaluate("document.documentElement.dataset.theme = '" + theme +
                 "'; for (let i = 0; i < 3; ++i) { await new Promise(requestAnimationFrame); }");
    }

    // Takes the view as it is in a theme. What the window shows may be a frame behind the page: a
    // picture that is not the accepted one is taken again, and differs still if the view does.
    // After one that did, others are taken once.
    std::string picture(Theme& theme, std::size_t column, std::size_t row, bool accept) {
        std::string png;
        for (int attempt = 0; attempt < (HasFailure() ? 1 : 20); ++attempt) {
            wear(theme.name);
            png = bytesOf(page.screenshot());
            theme.now.place(png, column, row);
            if (accept || theme.difference(column, row) <= tolerated) {
                break;
            }
        }
        return png;
    }

    static constexpr int tolerated = 12;  // of a hundred cells
    std::string link;
};

// With SONOLET_SCREENSHOTS, a folder, the pictures are kept there; with SONOLET_ACCEPT they become
// what later ones are compared with. ./sonolet pictures sets them.
TEST_F(Views, LookAsTheyWereAccepted) {
    prepare();
    Theme themes[] = {Theme("light"), Theme("dark")};
    const char* const folder = std::getenv("SONOLET_SCREENSHOTS");  // NOLINT(concurrency-mt-unsafe)
    const bool accept = std::getenv("SONOLET_ACCEPT") != nullptr;   // NOLINT(concurrency-mt-unsafe)
    for (std::size_t row = WebDriver::inCog() ? std::size(sizes) - 1 : 0; row < std::size(sizes);
         ++row) {
        if (!WebDriver::inCog()) {
            page.resize(sizes[row].width, sizes[row].height);
        }
        for (std::size_t column = 0; column < std::size(views); ++column) {
            show(views[column]);
            for (Theme& theme : themes) {
                const std::string png = picture(theme, column, row, accept);
                const std::string name = std::string(views[column].name) + '-' +
                                         std::to_string(sizes[row].width) + 'x' +
                                         std::to_string(sizes[row].height) + '-' + theme.name;
                if (folder != nullptr) {
                    writeTo(std::string(folder) + '/' + name + ".png", png);
                }
                if (!accept) {
                    EXPECT_LE(theme.difference(column, row), tolerated) << name;
                }
            }
        }
    }
    for (const Theme& theme : themes) {
        theme.now.save((accept ? ACCEPTED_DIR "/" : place.file("")) + theme.name + ".png");
    }
}

TEST_F(Views, HaveNothingThatAccessibilityRulesForbid) {
    if (!std::filesystem::exists(AXE)) {
        GTEST_SKIP() << "no axe-core, which ./sonolet test brings where npm is";
    }
    prepare();
    const std::string load = "await new Promise((loaded, failed) => {"
                             "    const script = document.createElement('script');"
                             "    script.src = 'file://" AXE "';"
                             "    script.onload = loaded;"
                             "    script.onerror = () => failed('no axe-core');"
                             "    document.head.append(script);"
                             "});";
    const std::string check =
        "const { violations } = await axe.run(document, { resultTypes: ['violations'] });"
        "return violations.map(({ id, nodes }) => `${id}: ${nodes[0].html}`);";
    // It does find what is wrong.
    EXPECT_THAT(evaluate(load +
                         "const bad = document.createElement('button');"
                         "find('#main').append(bad);" +
                         check),
                HasSubstr("button-name"));
    for (const View& view : views) {
        show(view);
        for (const char* const theme : {"light", "dark"}) {
            wear(theme);
            EXPECT_EQ(
                evaluate("find('#main > button') && find('#main > button').remove();" + check),
                "[]")
                << view.name << ", " << theme;
        }
    }
    EXPECT_EQ(evaluate("find('#menu').click();" + check), "[]") << "the menu";
    EXPECT_EQ(evaluate("document.querySelectorAll('.menu-item')[2].click();" + check), "[]");
    EXPECT_EQ(evaluate("press('Escape'); find('#menu').click();"
                       "document.querySelectorAll('.menu-item')[3].click();"
                       "await until(() => !find('#signin').hidden);" +
                       check),
              "[]")
        << "the sign-in";
}

TEST_F(Views, AreReachedAndUsedByKeysAlone) {
    evaluate("await until(() => !find('#signin').hidden);");
    page.press({"l", "i", "s", "t", "e", "n", "e", "r", "Down"});
    page.press({"l", "i", "s", "t", "e", "n", "e", "r", "Enter"});
    ASSERT_EQ(evaluate("await until(() => find('.card') && !hidden()); return '';"), R"("")");
    playlist({"new", "Evening"});
    playlist({"add", "Evening", "Moored", "Kettle Song"});
    evaluate("await until(() => text('#lists') === 'Evening');");
    for (const Size size : {sizes[1], sizes[2]}) {
        SCOPED_TRACE(size.width);
        page.resize(size.width, size.height);
        const auto at = [this](const std::string& look) {
            return evaluate("await until(() => !find('.view[aria-busy]')); const seen = " + look +
                            "; await until(() => hidden() !== 'nothing has it');"
                            "return [hidden(), seen].join();");
        };
        // Each place of the sidebar, into it and back.
        evaluate("await goTo('#/people'); await goTo('#/home');");
        page.press({"Left", "Left", "Left", "Left", "Left"});
        evaluate("find('[data-view=home]').focus();");
        for (const std::string name :
             {"albums", "artists", "recent", "playing", "starred", "inbox", "people", "playlist"}) {
            page.press({"Down"});
            if (name == "playlist") {  // past the button that adds one
                evaluate("find('.tree-row').focus();");
            }
            page.press({"Enter"});
            EXPECT_EQ(at("(await until(() => location.hash.startsWith('#/" + name +
                         "')), document.activeElement.closest('.sidebar') !== null)"),
                      R"(",true")")
                << name;
            page.press({"Right"});
            EXPECT_EQ(at("document.activeElement.closest('.content') !== null"), R"(",true")")
                << name;
            page.press({"Left", "Left", "Left", "Left"});
            EXPECT_EQ(at("document.activeElement.closest('.sidebar') !== null"), R"(",true")")
                << name;
            evaluate("(find('.sidebar [aria-current]') || document.body).focus();");
        }
        // An album of them all is opened, played and left again.
        evaluate(
            "await goTo('#/albums'); await until(() => find('.track')); find('.track').focus();");
        page.press({"Down", "Enter"});
        EXPECT_EQ(at("(await until(() => find('.hero') && find('.track')),"
                     "    document.activeElement.closest('.view') !== null)"),
                  R"(",true")");
        page.press({"Down", "Down", "Enter"});
        EXPECT_EQ(at("(await until(() => find('.track.current')), focused().split(',')[0] ==="
                     "    text('.track.current .track-title'))"),
                  R"(",true")");
        // Its star, and its menu, which Back closes and whose second line is the queue.
        const auto expect = [&](const std::string& look) {
            EXPECT_EQ(evaluate("return until(() => " + look + " && !hidden());"), "true") << look;
        };
        expect("find('.track.sounding')");
        page.press({" "});  // or the queue would end meanwhile
        expect("find('.track.current') && !find('.track.sounding')");
        page.press({"Right", "Enter"});
        expect("focused() === 'Star' &&"
               "    document.activeElement.getAttribute('aria-pressed') === 'true'");
        page.press({"Enter", "Right", "Enter"});
        expect("find('.dialog') && focused() === 'Play next'");
        page.press({"Back"});
        expect("!find('.dialog') && focused() === 'More'");
        page.press({"Enter", "Down", "Enter"});
        expect("text('.notice').includes('in the queue')");
        page.press({"Escape"});
        expect("!find('.notice')");
        page.press({"Back"});
        EXPECT_EQ(at("(await until(() => find('.letters') && focused().startsWith('Lanterns')))"),
                  R"(",true")");
        // A search is typed, and its first track played.
        page.press({"/", "s", "a", "l", "t", "Enter"});
        EXPECT_EQ(at("(await until(() => find('.shelf, .track-title')), true)"), R"(",true")");
        // A playlist is sorted; the queue put in another order, and emptied of a track.
        evaluate("await goTo(find('.tree-row').hash || '#/starred');"
                 "await until(() => find('.sort') && find('.track')); find('.track').focus();");
        page.press({"Up", "Enter"});
        expect("document.activeElement.matches('.sort[aria-pressed=true]')");
        evaluate("await goTo('#/playing'); find('.queue [aria-rowindex=\"1\"]').focus();"
                 "window.second = text('[aria-rowindex=\"2\"] .track-title');");
        page.press({"Right", "Enter"});
        expect("text('[aria-rowindex=\"1\"] .track-title') === second");
        evaluate("find('.queue [aria-rowindex=\"1\"]').focus();");
        page.press({"Right", "Right", "Enter"});
        expect("!text('.queue').includes(second)");
    }
}

}  // namespace
