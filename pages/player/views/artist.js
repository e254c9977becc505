// @ts-check

import { counted, h, put } from "../page/dom.js";
import { ImageSize, attempt, browseArtist, findArtist, list } from "../music/library.js";
import { FixedTracks, SortedTracks } from "../music/tracklist.js";
import { albumCard, cover, empty, hero, playButtons, section } from "./parts.js";
import { playFrom, sortBar, trackTable } from "./track-table.js";

/** @param {import("../page/router.js").View} view */
export async function artistView({ root, scope, args, subject, title }) {
    /** @type {Spotify.Artist} */
    const artist = subject || await scope.until(findArtist(args));
    const browsed = await scope.until(browseArtist(artist));
    const name = artist.name();
    const tracks = new SortedTracks(
        new FixedTracks(browsed.numTophitTracks(), (i) => browsed.tophitTrack(i)));
    const albums = list(browsed.numAlbums(), (i) => browsed.album(i));
    const own = albums.filter((album) => attempt(() => album.artist().name(), "") === name);
    const others = albums.filter((album) => !own.includes(album));
    title(name);
    put(root, hero({
        picture: cover(attempt(() => artist.portrait(ImageSize.large), ""), name, "large round"),
        kind: "Artist", title: name, facts: [counted(albums.length, "album")],
        actions: tracks.length > 0
            ? playButtons(tracks, (index, shuffled) => playFrom(tracks, index, shuffled)) : [],
    }));
    if (albums.length + tracks.length === 0) {
        put(root, empty("disc", "Nothing here", `There is no music by ${name} in the library.`));
    }
    put(root,
        own.length > 0 && section("Albums", h("div", { class: "cards" }, own.map(albumCard))),
        tracks.length > 0 && section("Best known", tracks.length > 1 && sortBar(tracks),
            trackTable({ tracks, scope, label: `Best known tracks of ${name}` }).element),
        others.length > 0 && section("Also on", h("div", { class: "cards" }, others.map(albumCard))));
}
