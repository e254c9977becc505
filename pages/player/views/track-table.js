// @ts-check
// A table of tracks: what rows look like, and what can be done with one track.

import { openMenu } from "../page/dialog.js";
import { byId, clock, h, icon, iconButton, named, quoted, replace } from "../page/dom.js";
import { showImage } from "../music/images.js";
import { albumOf, attempt, describeAlbum, describeTrack, metadataArrived, path, starsChanged }
    from "../music/library.js";
import { notify } from "../page/notices.js";
import { COLUMNS } from "../music/tracklist.js";
import { changed, now, play, queue, toggle } from "../music/playback.js";
import { go, remember } from "../page/router.js";
import { VirtualList } from "../page/virtual-list.js";
import { chooseList } from "./choose-list.js";

/** @typedef {import("../music/library.js").TrackInfo} TrackInfo */
/** @typedef {import("../music/tracklist.js").TrackList} TrackList */
/** @typedef {import("../page/scope.js").Scope} Scope */

/**
 * @typedef {object} TableOptions
 * @property {TrackList} tracks
 * @property {Scope} scope
 * @property {string} label
 * @property {"tracks" | "discs"} [numbered]    numbers in place of covers and albums
 * @property {string} [by]                      the artist who need not be named in each row
 * @property {(index: number) => string} [note] is said below a title
 * @property {(index: number) => boolean} [fresh] has just come
 */

/** @param {TableOptions} options */
export function trackTable({ tracks, scope, label, numbered, by, note, fresh }) {
    const table = new VirtualList({
        scroller: byId("main"), scope, label, length: tracks.length,
        row: (index, rowScope) => {
            const row = trackRow({
                scope: rowScope, numbered, by,
                read: () => tracks.peek(index),
                note: note ? note(index) : "",
                start: () => playFrom(tracks, index),
            });
            row.classList.toggle("fresh", fresh !== undefined && fresh(index));
            return row;
        },
    });
    table.element.classList.add("tracks");
    scope.on(tracks.changed, (change) =>
        table.refresh(tracks.length, change ? change.moved : undefined));
    return table;
}

/**
 * What a table is sorted by: each column forwards, backwards, and the list's own order again.
 * @param {import("../music/tracklist.js").SortedTracks} tracks
 */
export function sortBar(tracks) {
    const bar = h("div", { class: "sort-bar", role: "toolbar", "aria-label": "Sort by" });
    const fill = () => {
        for (const button of bar.querySelectorAll("button")) {
            const column = button.dataset.column || "";
            const chosen = column === tracks.column;
            button.setAttribute("aria-pressed", String(chosen));
            replace(button, column, chosen && icon(tracks.backwards ? "up" : "down"));
            button.setAttribute("aria-label", chosen ? `${column}, ${tracks.backwards
                ? "backwards" : "forwards"}` : column);
        }
    };
    for (const column of COLUMNS) {
        bar.append(h("button", { type: "button", class: "sort", "data-column": column,
            onclick: () => {
                const again = tracks.column === column;
                tracks.sort(again && tracks.backwards ? "" : column, again && !tracks.backwards)
                    .then(fill, () => notify("This could not be sorted just now.", null, "error"));
            } }));
    }
    bar.prepend(h("span", { class: "sort-by", "aria-hidden": "true" }, "Sort by"));
    fill();
    return bar;
}

/**
 * @param {TrackList} tracks
 * @param {number} index
 * @param {boolean} [shuffled] as it was, without
 */
export function playFrom(tracks, index, shuffled = queue.shuffled) {
    if (tracks.length > 0) {
        queue.shuffled = shuffled;
        play(tracks, Math.max(0, Math.min(index, tracks.length - 1)));
    }
}

/**
 * "?play" in an address plays the list, "?play=3" from its third track.
 * @param {URLSearchParams} options
 * @param {TrackList} tracks
 */
export function playAsked(options, tracks) {
    if (options.has("play")) {
        playFrom(tracks, (Number(options.get("play")) || 1) - 1, false);
    }
}

/**
 * @typedef {object} RowOptions
 * @property {Scope} scope
 * @property {() => Spotify.Track | null} read  null while the track is on its way
 * @property {() => void} start                 plays from here
 * @property {"tracks" | "discs"} [numbered]
 * @property {string} [by]
 * @property {string} [note]
 * @property {HTMLElement[]} [buttons]          in place of the star
 */

/** @param {RowOptions} options */
export function trackRow({ scope, read, start, numbered, by, note, buttons }) {
    /** @type {TrackInfo | null} */
    let info = null;
    /** @type {Spotify.Track | null} */
    let track = null;
    const lead = h("span", { class: "track-lead", role: "gridcell" });
    const picture = h("span", { class: "cover tiny" });
    const number = h("span", { class: "track-number" });
    const title = h("span", { class: "track-title two-lines" });
    const under = h("span", { class: "track-under" });
    const album = numbered || buttons ? null : h("span", { class: "track-album two-lines", role: "gridcell" });
    const length = h("span", { class: "track-time", role: "gridcell" });
    const star = iconButton("star", "Star", { class: "icon-button star", tabindex: "-1",
        onclick: () => track && setStar(track, !track.isStarred()) });
    const more = iconButton("more", "More", { class: "icon-button more", tabindex: "-1",
        onclick: () => track && info && openTrackMenu(track, info) });
    lead.append(numbered ? number : picture, h("span", { class: "track-state" }, icon("play")));
    const row = h("div", { class: `track ${numbered ? "numbered" : ""}`, role: "row" },
        lead, h("span", { class: "track-name", role: "gridcell" }, title, under), album,
        h("span", { class: "track-actions", role: "gridcell" }, buttons || star, more), length);

    const mark = () => {
        const current = info !== null && now.info !== null && now.info.key === info.key;
        row.classList.toggle("current", current);
        row.classList.toggle("sounding", current && now.status === "playing");
    };
    const fill = () => {
        track = attempt(read, null);
        info = track && describeTrack(track);
        row.classList.toggle("loading", !info || !info.loaded);
        if (info === null || !info.loaded) {
            row.setAttribute("aria-label", "Loading");
            return;
        }
        const artists = info.artists.join(", ");
        replace(title, named(info.title));
        replace(under, note && h("em", null, `${quoted(note)} `),
            artists !== by && link(artists, () => openArtist(track)));
        if (album !== null) {
            replace(album, link(info.album, () => openAlbum(track)));
        }
        number.textContent = `${numbered === "discs" ? `${info.disc}.` : ""}${info.index}`;
        length.textContent = clock(info.duration);
        if (!numbered) {
            showImage(picture, info.cover, info.album);
        }
        star.setAttribute("aria-pressed", String(info.starred));
        row.classList.toggle("missing", !info.available);
        row.setAttribute("aria-label", [info.title, artists, numbered ? "" : info.album,
            clock(info.duration), info.starred ? "starred" : "",
            info.available ? "" : "not available"].filter(Boolean).join(", "));
        mark();
    };
    const activate = () => {
        if (info !== null && !info.available) {
            notify(`${quoted(info.title)} is not available.`, null, "error");
        } else if (row.classList.contains("current") && now.status !== "stopped") {
            toggle();
        } else {
            start();
        }
    };
    row.addEventListener("click", (event) => {
        if (event.target instanceof Element && !event.target.closest("button, .link")) {
            activate();
        }
    });
    row.addEventListener("keydown", (event) => {
        if (event.key === "Enter" && event.target === row) {
            event.preventDefault();
            activate();
        }
    });
    scope.on(changed, mark);
    scope.on(starsChanged, fill);
    scope.on(metadataArrived, () => (info === null || !info.loaded) && fill());
    fill();
    return row;
}

/**
 * For the pointer alone; the keys and screen readers have the menu.
 * @param {string} text
 * @param {() => void} onclick */
function link(text, onclick) {
    return h("span", { class: "link", onclick }, named(text));
}

/** @param {Spotify.Track} track @param {boolean} starred */
export function setStar(track, starred) {
    track.setStarred(starred);
    starsChanged.emit(); // the service's own event follows with its next poll
}

/** @param {Spotify.Track | null} track */
export function openAlbum(track) {
    const album = track && albumOf(track);
    if (album) {
        const address = describeAlbum(album).path;
        remember(address, album);
        go(address);
    }
}

/** @param {Spotify.Track | null} track */
export function openArtist(track) {
    const artist = track && attempt(() => track.artist(0), null);
    if (artist) {
        const address = path("artist", artist.name());
        remember(address, artist);
        go(address);
    }
}

/** @param {Spotify.Track} track @param {TrackInfo} info */
export function openTrackMenu(track, info) {
    openMenu(info.title, [
        { label: "Play next", icon: icon("next"), run: () => {
            queue.addNext(track);
            notify(`${quoted(info.title)} plays next.`);
        } },
        { label: "Add to the queue", icon: icon("queue"), run: () => {
            queue.add(track);
            notify(`${quoted(info.title)} is in the queue.`);
        } },
        { label: "Add to a playlist …", icon: icon("plus"), run: () => chooseList(track, info) },
        { label: track.isStarred() ? "Remove the star" : "Star", icon: icon("star"),
            run: () => setStar(track, !track.isStarred()) },
        { label: "Go to the album", icon: icon("disc"), run: () => openAlbum(track) },
        { label: "Go to the artist", icon: icon("people"), run: () => openArtist(track) },
    ]);
}
