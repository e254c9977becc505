// @ts-check

import { clock, counted, h, named, put } from "../page/dom.js";
import { tint } from "../music/images.js";
import { ImageSize, browseAlbum, coverId, describeAlbum, findAlbum, list, path } from "../music/library.js";
import { remember } from "../page/router.js";
import { FixedTracks } from "../music/tracklist.js";
import { cover, hero, playButtons } from "./parts.js";
import { playAsked, playFrom, trackTable } from "./track-table.js";

/** @param {import("../page/router.js").View} view */
export async function albumView({ root, scope, args, options, subject, title }) {
    /** @type {Spotify.Album} */
    const album = subject || await scope.until(findAlbum(args));
    const browsed = await scope.until(browseAlbum(album));
    const about = describeAlbum(album);
    const { SP_ALBUMTYPE_SINGLE, SP_ALBUMTYPE_COMPILATION } = Spotify.SP_ALBUMTYPE;
    const kind = about.type === SP_ALBUMTYPE_SINGLE ? "Single"
        : about.type === SP_ALBUMTYPE_COMPILATION ? "Compilation" : "Album";
    const tracks = new FixedTracks(browsed.numTracks(), (i) => browsed.track(i));
    title(`${about.title} by ${about.artist}`);

    const picture = cover(coverId(album, ImageSize.large), about.title, "large");
    tint(picture, scope);
    const artist = path("artist", about.artist);
    put(root,
        hero({
            picture, kind, title: about.title,
            facts: [
                h("a", { href: artist, onclick: () => remember(artist, browsed.artist()) }, named(about.artist)),
                [about.year || "", counted(tracks.length, "track"), totalTime(tracks)]
                    .filter(Boolean).map((fact) => ` · ${fact}`).join(""),
            ],
            actions: playButtons(tracks, (index, shuffled) => playFrom(tracks, index, shuffled)),
        }),
        trackTable({ tracks, scope, label: about.title, by: about.artist,
            numbered: severalDiscs(tracks) ? "discs" : "tracks" }).element,
        list(browsed.numCopyrights(), (i) => h("p", { class: "fineprint" }, browsed.copyright(i))));
    playAsked(options, tracks);
}

/** @param {FixedTracks} tracks in the order of their discs */
function severalDiscs(tracks) {
    return tracks.length > 0 && tracks.at(tracks.length - 1).disc() > 1;
}

/**
 * "" for long lists: each track would have to be asked.
 * @param {FixedTracks} tracks
 */
function totalTime(tracks) {
    return tracks.length > 200 ? "" : clock(list(tracks.length, (i) => tracks.at(i).duration())
        .reduce((sum, duration) => sum + duration, 0));
}
