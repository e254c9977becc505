// @ts-check
// Search as one types.

import { byId, counted, h, put, quoted, replace } from "../page/dom.js";
import { albumsOf, artistsOf, path, search } from "../music/library.js";
import { announce } from "../page/notices.js";
import { go, parseAddress, readdress } from "../page/router.js";
import { Scope, Signal } from "../page/scope.js";
import { SearchTracks, SortedTracks } from "../music/tracklist.js";
import { albumCard, artistCard, empty, section } from "./parts.js";
import { sortBar, trackTable } from "./track-table.js";

/**
 * At least so many milliseconds lie between two questions: whoever types fast does not ask for each
 * letter, and the last one waits no longer than that. The answer takes two ticks of the plug-in.
 */
const PAUSE = 90;
/** To sort tracks, all of them are asked for. */
const MOST_SORTED = 2000;

/**
 * What is in the field now; the answers to what was there before are of no use any more.
 * @type {string}
 */
let wanted = "";
/** What the results that are shown answer. */
let shown = "";
/**
 * What of the field made the address; none: the address was there first, and fills the field.
 * @type {string | null}
 */
let addressed = null;
/** Enter was pressed before the answer to what is in the field was there. */
let isEntered = false;
/** @type {Signal<string>} */
const typed = new Signal();
/** @type {() => HTMLInputElement} */
const field = () => byId("search");

/** To the first of what was found; to the field, if nothing was. */
function enterResults() {
    const first = byId("main").querySelector(".card, [role=row]");
    (first instanceof HTMLElement ? first : field()).focus();
}

/** The field above all views. */
export function startSearchField() {
    let asked = 0;
    let timer = 0;
    const ask = () => {
        asked = Date.now();
        if (parseAddress().name !== "search") {
            if (wanted !== "") {
                addressed = wanted;
                go(path("search", wanted));
            }
            return;
        }
        addressed = wanted;
        readdress(path("search", wanted));
        typed.emit(wanted);
    };
    const soon = () => {
        wanted = field().value.trim();
        isEntered = false;
        clearTimeout(timer);
        const rest = asked + PAUSE - Date.now();
        if (rest > 0) {
            timer = window.setTimeout(ask, rest);
        } else {
            ask();
        }
    };
    field().addEventListener("input", soon);
    field().addEventListener("keydown", (event) => {
        if (event.key === "Escape" && field().value !== "") {
            field().value = "";
            soon();
        } else if (event.key === "Enter") {
            isEntered = shown !== wanted;
            if (!isEntered && parseAddress().name === "search") {
                enterResults();
            }
        }
    });
    byId("search-form").addEventListener("submit", (event) => event.preventDefault());
}

/** @param {import("../page/router.js").View} view */
export async function searchView({ root, scope, args, title }) {
    let answers = new Scope();
    const show = async (/** @type {string} */ query) => {
        title(query ? quoted(query) : "Search");
        const found = query === "" ? null : await scope.until(search(query,
            { tracks: SearchTracks.page, albums: 10, artists: 4 }));
        if (query !== wanted) {
            return; // typed on meanwhile
        }
        answers.close();
        answers = new Scope();
        const wasInResults = root.contains(document.activeElement);
        replace(root, h("h1", { class: "unseen" }, "Search"));
        byId("main").scrollTop = 0;
        if (found === null) {
            put(root, empty("search", "Search the library", "Type a title, an artist, an album or a year."));
        } else {
            showResults(root, answers, query, found);
        }
        shown = query;
        if (wasInResults || (isEntered && document.activeElement === field())) {
            isEntered = false;
            enterResults();
        }
    };
    const trouble = (/** @type {unknown} */ error) => {
        answers.close();
        const wasInResults = root.contains(document.activeElement);
        const again = h("button",
            { type: "button", class: "button primary", onclick: () => ask(wanted) }, "Try again");
        replace(root, empty("alert", "The search failed",
            error instanceof Error ? error.message : String(error), again));
        if (wasInResults) {
            again.focus();
        }
    };
    const ask = (/** @type {string} */ query) =>
        show(query).catch((error) => query === wanted && trouble(error));
    scope.onClose(() => answers.close());
    scope.on(typed, ask);
    const query = args[0] || "";
    if (query !== addressed) {
        field().value = wanted = query;
        if (query === "") {
            field().focus();
        }
    }
    scope.onClose(() => {
        field().value = shown = "";
        addressed = null;
    });
    await show(query);
}

/**
 * @param {HTMLElement} root
 * @param {Scope} scope
 * @param {string} query
 * @param {Spotify.Search} found
 */
function showResults(root, scope, query, found) {
    const tracks = new SortedTracks(new SearchTracks(query, found));
    const artists = artistsOf(found);
    const albums = albumsOf(found);
    const total = tracks.length + artists.length + albums.length;
    announce(total === 0 ? "Nothing found" : `${counted(tracks.length, "track")}, ` +
        `${counted(found.totalAlbums(), "album")}, ${counted(found.totalArtists(), "artist")}`);
    if (total === 0) {
        const better = found.didYouMean();
        put(root, empty("search", `Nothing found for ${quoted(query)}`,
            better ? "Perhaps you mean something else:" : "Try fewer or other words.",
            better && h("a", { class: "button primary", href: path("search", better) }, better)));
        return;
    }
    const table = trackTable({ tracks, scope, label: `Tracks found for ${query}` });
    put(root,
        artists.length + albums.length > 0 && section("Artists and albums",
            h("div", { class: "shelf", "data-scroll": "" },
                artists.map(artistCard), albums.map(albumCard))),
        tracks.length > 0 && section(counted(tracks.length, "track"),
            tracks.length > 1 && tracks.length <= MOST_SORTED && sortBar(tracks), table.element));
    table.draw(); // not with the frame after this one
}
