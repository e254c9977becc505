// @ts-check

import { h, put, replace } from "../dom.js";
import { albumsOf, list, metadataArrived, search, topList } from "../library.js";
import { FixedTracks } from "../tracklist.js";
import { albumCard, empty, section } from "./parts.js";
import { trackTable } from "./track-table.js";

const MOST_ALBUMS = 12;

/** @param {import("../router.js").View} view */
export async function homeView({ root, scope, title }) {
    title("Home");
    const { SP_TOPLIST_TYPE_ALBUMS, SP_TOPLIST_TYPE_TRACKS } = Spotify.SP_TOPLIST_TYPE;
    const { SP_TOPLIST_REGION_EVERYWHERE, SP_TOPLIST_REGION_USER } = Spotify.SP_TOPLIST_REGION;
    const [played, mine, library] = await scope.until(Promise.all([
        topList(SP_TOPLIST_TYPE_ALBUMS, SP_TOPLIST_REGION_EVERYWHERE),
        topList(SP_TOPLIST_TYPE_TRACKS, SP_TOPLIST_REGION_USER),
        // A year is the one filter that every dated album passes.
        search("year:1000-2999", { albums: 2 * MOST_ALBUMS }),
    ]));
    const albums = list(Math.min(played.numAlbums(), MOST_ALBUMS), (i) => played.album(i));
    const all = albumsOf(library);
    const tracks = new FixedTracks(Math.min(mine.numTracks(), 10), (i) => mine.track(i));
    const hour = new Date().getHours();
    const greeting = hour < 5 ? "Good night" : hour < 12 ? "Good morning"
        : hour < 18 ? "Good afternoon" : "Good evening";
    replace(root, h("h1", { class: "greeting" }, `${greeting}, ${Spotify.Session.user().displayName()}`));
    put(root,
        albums.length > 0 && section("Played most", h("div", { class: "cards" }, albums.map(albumCard))),
        tracks.length > 0 && section("Yours", trackTable({ tracks, scope, label: "What you play most" })),
        all.length > 0 && section("From the library", h("div", { class: "cards" }, all.map(albumCard))));
    if (albums.length + all.length === 0) {
        put(root, empty("disc", "The library is being read",
            "Albums show up here as they are found. You can search for music at any time."));
        scope.on(metadataArrived, again({ root, scope, title }));
    }
}

/**
 * Asks again when more has been read, until there is something.
 * @param {any} view
 */
function again(view) {
    let asking = false;
    return () => {
        if (!asking) {
            asking = true;
            view.scope.after(1000, () => homeView(view));
        }
    };
}
