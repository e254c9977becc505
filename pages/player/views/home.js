// @ts-check

import { h, put, replace } from "../page/dom.js";
import { albumsOf, list, metadataArrived, search, shownName, topList } from "../music/library.js";
import { debounce } from "../page/scope.js";
import { FixedTracks } from "../music/tracklist.js";
import { albumCard, empty, section } from "./parts.js";
import { trackTable } from "./track-table.js";

const MOST_ALBUMS = 12;

/** @typedef {import("../page/router.js").View} View */

/** @param {View} view */
export async function homeView(view) {
    view.title("Home");
    if (await fill(view)) {
        return;
    }
    // The service is still reading its library: look again when there is more.
    let found = false;
    const look = debounce(1000, () => {
        fill(view).then((some) => {
            found = some;
        }, () => {});
    });
    view.scope.on(metadataArrived, () => found || look());
    view.scope.onClose(look.cancel);
}

/**
 * Answers whether there was anything to show.
 * @param {View} view
 */
async function fill({ root, scope }) {
    const { SP_TOPLIST_TYPE_ALBUMS, SP_TOPLIST_TYPE_TRACKS } = Spotify.SP_TOPLIST_TYPE;
    const { SP_TOPLIST_REGION_EVERYWHERE, SP_TOPLIST_REGION_USER } = Spotify.SP_TOPLIST_REGION;
    const [played, mine, library] = await scope.until(Promise.all([
        topList(SP_TOPLIST_TYPE_ALBUMS, SP_TOPLIST_REGION_EVERYWHERE),
        topList(SP_TOPLIST_TYPE_TRACKS, SP_TOPLIST_REGION_USER),
        search("year:1000-2999", { albums: 2 * MOST_ALBUMS }), // what every album with a date passes
    ]));
    const albums = list(Math.min(played.numAlbums(), MOST_ALBUMS), (i) => played.album(i));
    const all = albumsOf(library);
    const tracks = new FixedTracks(Math.min(mine.numTracks(), 10), (i) => mine.track(i));
    replace(root, h("h1", { class: "greeting" }, `${greeting()}, ${shownName()}`));
    put(root,
        albums.length > 0 && section("Played most", h("div", { class: "cards" }, albums.map(albumCard))),
        tracks.length > 0 && section("Yours",
            trackTable({ tracks, scope, label: "What you play most" }).element),
        all.length > 0 && section("From the library", h("div", { class: "cards" }, all.map(albumCard))));
    if (albums.length + all.length === 0) {
        put(root, empty("disc", "The library is being read",
            "Albums show up here as they are found. You can search at any time."));
    }
    return albums.length + all.length > 0;
}

function greeting() {
    const hour = new Date().getHours();
    return hour < 5 ? "Good night" : hour < 12 ? "Good morning"
        : hour < 18 ? "Good afternoon" : "Good evening";
}
