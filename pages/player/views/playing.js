// @ts-check
// What plays, large, and the queue.

import { byId, h, iconButton, named, put, replace } from "../page/dom.js";
import { tint } from "../music/images.js";
import { ImageSize, albumOf, coverId } from "../music/library.js";
import { changed, now, queue, skip } from "../music/playback.js";
import { debounce } from "../page/scope.js";
import { move } from "../music/tracklist.js";
import { dragRows } from "../page/drag.js";
import { VirtualList } from "../page/virtual-list.js";
import { cover, empty, section } from "./parts.js";
import { openAlbum, openArtist, trackRow } from "./track-table.js";

/** @param {import("../page/router.js").View} view */
export async function playingView({ root, scope, title }) {
    title("Now playing");
    root.classList.add("playing");
    const left = h("div", { class: "playing-now" });
    const right = h("div", { class: "playing-next" });
    put(root, left, right);

    let shown = "";
    /** @type {((index: number) => number) | undefined} */
    let moved; // where rows went, so that the focus goes along
    const fillNow = () => {
        const key = now.info === null ? "nothing" : now.info.key;
        if (key === shown) {
            return;
        }
        shown = key;
        if (now.info === null || now.track === null) {
            replace(left, h("h1", { class: "unseen" }, "Now playing"),
                empty("note", "Nothing is playing", "Choose a track or an album to begin.",
                    h("a", { class: "button quiet", href: "#/home" }, "To the library")));
            return;
        }
        const { track, info } = now;
        const picture = cover(coverId(albumOf(track), ImageSize.large), info.album, "largest");
        tint(picture, scope);
        replace(left, picture,
            h("h1", { class: info.title.length > 28 ? "two-lines long" : "two-lines" }, named(info.title)),
            h("p", { class: "facts" },
                h("button", { type: "button", class: "text-button", onclick: () => openArtist(track) },
                    named(info.artists.join(", "))),
                h("button", { type: "button", class: "text-button", onclick: () => openAlbum(track) },
                    named(info.album))));
    };
    const table = new VirtualList({
        scroller: byId("main"), scope, label: "Queue", length: queue.remaining,
        row: (index, rowScope) => trackRow({
            scope: rowScope,
            read: () => queue.peek(index + 1),
            start: () => skip(index + 1),
            buttons: [
                iconButton("up", "Move up", { tabindex: "-1", disabled: index === 0,
                    onclick: () => shift(index, index - 1) }),
                iconButton("down", "Move down", { tabindex: "-1", disabled: index + 1 >= queue.remaining,
                    onclick: () => shift(index, index + 1) }),
                iconButton("close", "Remove from the queue", { tabindex: "-1",
                    onclick: () => queue.remove(index + 1) }),
            ],
        }),
    });
    table.element.classList.add("tracks", "queue");
    const shift = (/** @type {number} */ from, /** @type {number} */ to) => {
        if (from !== to && to >= 0 && to < queue.remaining) {
            moved = move([from], to).moved;
            queue.move(from + 1, to + 1);
        }
    };
    scope.listen(table.element, "keydown", (event) => {
        const step = event.key === "ArrowUp" ? -1 : event.key === "ArrowDown" ? 1 : 0;
        const index = table.indexOf(event.target);
        if (step !== 0 && event.altKey && index >= 0) {
            event.preventDefault();
            shift(index, index + step);
        }
    });
    dragRows(table, scope, shift);
    const fillNext = () => {
        if (queue.remaining === 0) {
            replace(right, empty("queue", "The queue ends here",
                "“Add to the queue” in the menu of any track puts it here."));
            return;
        }
        if (!table.element.isConnected) {
            replace(right, section("Next", table.element));
        }
        table.refresh(queue.remaining, moved);
        moved = undefined;
    };
    const later = debounce(30, fillNext);
    scope.onClose(later.cancel);
    scope.on(changed, fillNow);
    scope.on(queue.changed, later);
    fillNow();
    fillNext();
}
