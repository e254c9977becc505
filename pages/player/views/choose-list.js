// @ts-check

import { openDialog } from "../page/dialog.js";
import { counted, h, icon, named, put, quoted } from "../page/dom.js";
import { addTo, list, mayChange } from "../music/library.js";
import { notify } from "../page/notices.js";
import { empty } from "./parts.js";

/** @typedef {import("../music/library.js").TrackInfo} TrackInfo */

/**
 * Asks for one of the user's playlists and adds the track to it.
 * @param {Spotify.Track} track
 * @param {TrackInfo} info
 */
export function chooseList(track, info) {
    const container = Spotify.Session.Playlistcontainer();
    const { SP_PLAYLIST_TYPE_PLAYLIST } = Spotify.SP_PLAYLIST_TYPE;
    const playlists = list(container.numPlaylists(), (i) => i)
        .filter((i) => container.playlistType(i) === SP_PLAYLIST_TYPE_PLAYLIST)
        .map((i) => container.playlist(i))
        .filter(mayChange);
    openDialog(`Add ${quoted(info.title)} to`, (body, close) => {
        const menu = h("div", { class: "menu" });
        for (const playlist of playlists) {
            put(menu, h("button", { type: "button", class: "menu-item", onclick: () => {
                close();
                if (addTo(playlist, track)) {
                    notify(`${quoted(info.title)} is now in ${quoted(playlist.name())}.`);
                } else {
                    notify(`${quoted(playlist.name())} could not be changed.`, null, "error");
                }
            } }, icon("list"), named(playlist.name()),
            h("span", { class: "menu-note" }, counted(playlist.numTracks(), "track"))));
        }
        body.append(playlists.length > 0 ? menu : empty("list", "No playlist",
            "You have no playlist that you may change."));
    });
}
