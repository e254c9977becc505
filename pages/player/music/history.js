// @ts-check
// What has been played here, the last first. The interface keeps no such list, and tracks tell no
// links: what is kept is what a track is called, for each user on this device.

import { attempt, describeTrack, list, ownName, search } from "./library.js";
import { changed, now } from "./playback.js";
import { Signal } from "../page/scope.js";

const MOST = 200;

/**
 * What a track is called.
 * @typedef {{ key: string, title: string, artist: string, album: string }} Played
 */

/** @type {Signal<void>} */
export const playedOn = new Signal();

const place = () => `played by ${ownName()}`;

/** @returns {Played[]} */
export function history() {
    const kept = attempt(() => JSON.parse(localStorage.getItem(place()) || "[]"), []);
    return Array.isArray(kept) ? kept.filter((one) => one && typeof one.key === "string") : [];
}

/** Keeps what begins to play; once. */
export function watchHistory() {
    let last = "";
    changed.add(() => {
        const { info, status } = now;
        if (info === null || status !== "playing" || info.key === last) {
            return;
        }
        last = info.key;
        const { key, title, artists, album } = info;
        const others = history().filter((one) => one.key !== key);
        others.unshift({ key, title, artist: artists[0] || "", album });
        attempt(() => localStorage.setItem(place(), JSON.stringify(others.slice(0, MOST))), undefined);
        playedOn.emit();
    });
}

/** The tracks of the history as it is now, each looked for when it is seen. */
export class PlayedTracks {
    constructor() {
        this.entries = history();
        this.length = this.entries.length;
        /** @type {Signal<import("./tracklist.js").Change>} */
        this.changed = new Signal();
        /** @type {Map<number, Promise<Spotify.Track>>} */
        this.asked = new Map();
        /** @type {Map<number, Spotify.Track>} */
        this.found = new Map();
    }

    /** @param {number} index @returns {Spotify.Track | null} */
    peek(index) {
        const track = this.found.get(index);
        if (track === undefined) {
            this.fetch(index).catch(() => {}); // it is not in the library any more
        }
        return track || null;
    }

    /** @param {number} index @returns {Promise<Spotify.Track>} */
    fetch(index) {
        const asked = this.asked.get(index) || find(this.entries[index]);
        if (!this.asked.has(index)) {
            this.asked.set(index, asked);
            asked.then((track) => {
                this.found.set(index, track);
                this.changed.emit(null);
            }, () => {});
        }
        return asked;
    }

    copy() {
        return this;
    }

    close() {}
}

/** @param {Played} played */
async function find({ key, title, artist, album }) {
    const phrase = (/** @type {string} */ text) => `"${text.replace(/"/g, " ")}"`;
    const found = await search(`title:${phrase(title)} artist:${phrase(artist)}`, { tracks: 50 });
    const tracks = list(found.numTracks(), (i) => found.track(i));
    const track = tracks.find((one) => describeTrack(one).key === key);
    if (track === undefined) {
        throw new Error(`${title} (${album}) is not in the library any more.`);
    }
    return track;
}
