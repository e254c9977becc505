// @ts-check
// All albums and all artists, by their names, with letters to jump by.

import { byId, counted, h, named, put, replace } from "../page/dom.js";
import { showImage } from "../music/images.js";
import { everything, letterOf } from "../music/catalogue.js";
import { ImageSize, attempt, coverId, describeAlbum, path } from "../music/library.js";
import { remember } from "../page/router.js";
import { VirtualList } from "../page/virtual-list.js";
import { empty } from "./parts.js";

/** @typedef {import("../page/router.js").View} View */
/** @typedef {import("../music/catalogue.js").Named<any>} Named */

/** @param {View} view */
export function albumsView(view) {
    return show(view, "albums", "Albums", ({ name, thing }) => {
        const { artist, year, path: address } = describeAlbum(thing);
        return { address, image: coverId(thing, ImageSize.small),
            note: [named(artist), year > 0 && ` · ${year}`], label: `${name}, ${artist}` };
    });
}

/** @param {View} view */
export function artistsView(view) {
    return show(view, "artists", "Artists", ({ name, thing }) => ({
        address: path("artist", name), note: [], label: name,
        image: attempt(() => thing.portrait(ImageSize.small), "") }));
}

/**
 * @param {View} view
 * @param {"albums" | "artists"} kind
 * @param {string} heading
 * @param {(one: Named) => { address: string, image: string, note: import("../page/dom.js").Child[],
 *     label: string }} describe
 */
async function show({ root, scope, title }, kind, heading, describe) {
    /** @type {Named[]} */
    let all = [];
    const count = h("p", { class: "facts" });
    const letters = h("div", { class: "letters", role: "toolbar", "aria-label": "Letters" });
    const table = new VirtualList({
        scroller: byId("main"), scope, label: heading, length: 0, above: letters,
        row: (index) => {
            const { address, image, note, label } = describe(all[index]);
            const picture = h("span", { class: "cover tiny" });
            showImage(picture, image, all[index].name);
            const open = () => {
                remember(address, all[index].thing);
                location.hash = address;
            };
            return h("div", { class: "track name", role: "row", "aria-label": label, onclick: open,
                onkeydown: (/** @type {KeyboardEvent} */ event) => event.key === "Enter" && open() },
            h("span", { class: "track-lead", role: "gridcell" }, picture),
            h("span", { class: "track-name", role: "gridcell" },
                h("span", { class: "track-title two-lines" }, named(all[index].name)),
                h("span", { class: "track-under" }, note)));
        },
    });
    table.element.classList.add("tracks");
    table.element.classList.toggle("round", kind === "artists");
    const jump = (/** @type {string} */ letter) => {
        const index = all.findIndex(({ name }) => letterOf(name) === letter);
        if (index >= 0) {
            table.focus(index);
        }
        return index >= 0;
    };
    // From any row the letters are one step to the side; a letter that is typed jumps by itself.
    scope.listen(table.element, "keydown", (event) => {
        const row = all[table.indexOf(event.target)];
        if (!row || event.ctrlKey || event.altKey || event.metaKey) {
            return;
        }
        const letter = event.key === "ArrowRight" && letters.querySelector(
            `[data-letter="${letterOf(row.name)}"]`);
        if (letter instanceof HTMLElement) {
            letter.focus({ preventScroll: true });
            event.preventDefault();
        } else if (/^\p{L}$/u.test(event.key) && jump(letterOf(event.key))) {
            event.preventDefault();
        }
    });
    title(heading);
    put(root, h("header", { class: "list-head" }, h("h1", null, heading), count), letters, table.element);
    await scope.until(everything(kind, (some) => {
        if (scope.closed) {
            return;
        }
        all = some;
        count.textContent = counted(all.length, kind.slice(0, -1));
        replace(letters, Array.from(new Set(all.map(({ name }) => letterOf(name))), (letter) =>
            h("button", { type: "button", class: "letter", "data-letter": letter,
                "aria-label": `To ${letter}`, onclick: () => jump(letter) }, letter)));
        table.refresh(all.length);
    }));
    if (all.length === 0) {
        replace(root, h("h1", { class: "unseen" }, heading), empty("disc", "Nothing here yet",
            "The library may still be being read. What is found shows up here."));
    }
}
