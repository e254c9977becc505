// @ts-check
// What several views are made of.

import { h, icon, named } from "../page/dom.js";
import { showImage } from "../music/images.js";
import { ImageSize, attempt, coverId, describeAlbum, path } from "../music/library.js";
import { remember } from "../page/router.js";

/** @typedef {import("../page/dom.js").Child} Child */

/**
 * A picture's place; what has no picture gets one made from its name.
 * @param {string} id of the image; "" for none
 * @param {string} name
 * @param {string} [kind] further classes
 */
export function cover(id, name, kind = "") {
    const element = h("div", { class: `cover ${kind}`, "aria-hidden": "true" });
    showImage(element, id, name);
    return element;
}

/**
 * Four covers in one, for what has no picture itself.
 * @param {string[]} ids
 * @param {string} name
 */
export function mosaic(ids, name) {
    const different = Array.from(new Set(ids.filter(Boolean)));
    if (different.length < 4) {
        return cover(different[0] || "", name);
    }
    return h("div", { class: "cover mosaic", "aria-hidden": "true" },
        different.slice(0, 4).map((id) => cover(id, "")));
}

/** @param {Spotify.Album} album */
export function albumCard(album) {
    const { title, artist, year, path: address } = describeAlbum(album);
    return h("a", { class: "card", href: address, "data-key": address,
        onclick: () => remember(address, album) },
    cover(coverId(album, ImageSize.normal), title),
    h("span", { class: "card-title two-lines" }, named(title)),
    h("span", { class: "card-note two-lines" }, artist && named(artist),
        artist && year ? "\u00a0·\u00a0" : "", year ? String(year) : ""));
}

/** @param {Spotify.Artist} artist */
export function artistCard(artist) {
    const name = artist.name();
    const address = path("artist", name);
    return h("a", { class: "card round", href: address, "data-key": address,
        onclick: () => remember(address, artist) },
    cover(attempt(() => artist.portrait(ImageSize.normal), ""), name),
    h("span", { class: "card-title two-lines" }, named(name)),
    h("span", { class: "card-note" }, "Artist"));
}

/**
 * @param {string} title
 * @param {...(Child | Child[])} content
 */
export function section(title, ...content) {
    return h("section", { class: "section" }, h("h2", null, title), ...content);
}

/**
 * The head of an album, an artist or a playlist.
 * @param {object} parts
 * @param {HTMLElement} parts.picture
 * @param {string} parts.kind
 * @param {string} parts.title
 * @param {Child[]} [parts.facts]
 * @param {Child[]} [parts.actions]
 * @param {Child[]} [parts.more]
 */
export function hero({ picture, kind, title, facts = [], actions = [], more = [] }) {
    return h("header", { class: "hero" },
        picture,
        h("div", { class: "hero-text" },
            h("p", { class: "kind" }, kind),
            h("h1", { class: title.length > 28 ? "two-lines long" : "two-lines" }, named(title)),
            h("p", { class: "facts" }, facts),
            more,
            h("div", { class: "actions" }, actions)));
}

/**
 * @param {string} name of an icon
 * @param {string} title
 * @param {string} text
 * @param {...Child} actions
 */
export function empty(name, title, text, ...actions) {
    return h("div", { class: "empty" },
        icon(name), h("h2", null, title), h("p", null, text),
        actions.length > 0 && h("p", { class: "actions" }, actions));
}

/**
 * @param {string} name of an icon
 * @param {string} label
 * @param {() => void} onclick
 * @param {string} [kind] further classes
 */
export function button(name, label, onclick, kind = "quiet") {
    return h("button", { type: "button", class: `button ${kind}`, onclick }, icon(name), label);
}

/**
 * Play and shuffle, for a whole list.
 * @param {import("../music/tracklist.js").TrackList} tracks
 * @param {(index: number, shuffled: boolean) => void} play */
export function playButtons(tracks, play) {
    const start = button("play", "Play", () => play(0, false), "primary");
    start.dataset.first = "";
    start.dataset.key = "play";
    return [start, button("shuffle", "Shuffle",
        () => play(Math.floor(Math.random() * tracks.length), true))];
}
