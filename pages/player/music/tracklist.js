// @ts-check
// Lists of tracks that are asked for one by one: a playlist of ten thousand costs only the rows that
// are seen. A list has
//   length        how many tracks
//   peek(i)       the track, or null while it has to be fetched
//   fetch(i)      a promise of it
//   changed       a Signal; see Change
//   whole()       a promise of all of them being at hand
//   copy()        a list over the same tracks that lives on its own (the queue outlives a view)
//   close()       takes its listeners back

import { attempt, list, search } from "./library.js";
import { Scope, Signal } from "../page/scope.js";

/** @typedef {FixedTracks | PlaylistTracks | SearchTracks | SortedTracks | import("./history.js").PlayedTracks} TrackList */

/**
 * What has become of the indexes; null when only the data behind them came. `added` are the indexes
 * of tracks that are new; `moved` answers -1 for a track that has gone.
 * @typedef {object} Move
 * @property {(index: number) => number} moved
 * @property {number[]} added
 * @property {boolean} reordered
 *
 * @typedef {Move | null} Change
 */

/** The tracks of an answer, which does not change. */
export class FixedTracks {
    /**
     * @param {number} length
     * @param {(index: number) => Spotify.Track} at
     */
    constructor(length, at) {
        this.length = length;
        this.at = at;
        /** @type {Signal<Change>} */
        this.changed = new Signal();
    }

    /** @param {number} index @returns {Spotify.Track | null} */
    peek(index) {
        return index < this.length ? this.at(index) : null;
    }

    /** @param {number} index */
    async fetch(index) {
        return this.at(index);
    }

    async whole() {}

    copy() {
        return this;
    }

    close() {}
}

/** Follows what happens to the playlist, here or elsewhere. */
export class PlaylistTracks {
    /** @param {Spotify.Playlist} playlist */
    constructor(playlist) {
        this.playlist = playlist;
        /** @type {Signal<Change>} */
        this.changed = new Signal();
        this.scope = new Scope();
        // The event is named with a suffix that its siblings do not have.
        this.scope.listen(playlist, "TracksAddedEvent", (_, tracks, position) =>
            this.changed.emit(insertion(position, tracks.length)));
        this.scope.listen(playlist, "TracksRemoved", (_, positions) =>
            this.changed.emit(removal(numbers(positions))));
        this.scope.listen(playlist, "TracksMoved", (_, positions, to) =>
            this.changed.emit(move(numbers(positions), to)));
        this.scope.listen(playlist, "PlaylistMetadataUpdated", () => this.changed.emit(null));
    }

    get length() {
        return this.scope.closed ? 0 : this.playlist.numTracks();
    }

    /** @param {number} index @returns {Spotify.Track | null} */
    peek(index) {
        return index < this.length ? this.playlist.track(index) : null;
    }

    /** @param {number} index */
    async fetch(index) {
        return this.playlist.track(index);
    }

    async whole() {}

    copy() {
        return new PlaylistTracks(this.playlist);
    }

    close() {
        this.scope.close();
    }
}

/** The tracks that a query finds, fetched a page at a time. */
export class SearchTracks {
    /**
     * @param {string} query
     * @param {Spotify.Search} first the answer that has the first page
     */
    constructor(query, first) {
        this.query = query;
        this.length = first.totalTracks();
        /** @type {Signal<Change>} */
        this.changed = new Signal();
        /** @type {Map<number, Promise<Spotify.Search>>} */
        this.asked = new Map([[0, Promise.resolve(first)]]);
        /** @type {Map<number, Spotify.Search>} */
        this.pages = new Map([[0, first]]);
        /** @type {Spotify.Search | null} */
        this.all = null;
    }

    /** @param {number} index @returns {Spotify.Track | null} */
    peek(index) {
        if (this.all !== null) {
            return index < this.all.numTracks() ? this.all.track(index) : null;
        }
        const page = this.pages.get(Math.floor(index / SearchTracks.page));
        if (page === undefined) {
            this.fetch(index).catch(() => {}); // the row stays empty; scrolling back asks again
            return null;
        }
        const within = index % SearchTracks.page;
        return within < page.numTracks() ? page.track(within) : null;
    }

    /** @param {number} index */
    async fetch(index) {
        const number = Math.floor(index / SearchTracks.page);
        let asked = this.asked.get(number);
        if (asked === undefined) {
            asked = search(this.query, { tracks: SearchTracks.page, from: number * SearchTracks.page });
            this.asked.set(number, asked);
            asked.then((page) => {
                this.pages.set(number, page);
                this.changed.emit(null);
            }, () => this.asked.delete(number));
        }
        return (await asked).track(index % SearchTracks.page);
    }

    async whole() {
        if (this.all === null && this.length > SearchTracks.page) {
            this.all = await search(this.query, { tracks: this.length });
        }
    }

    copy() {
        return this;
    }

    close() {}
}
SearchTracks.page = 50;

/**
 * What a list may be sorted by, in place of its own order.
 * @type {Record<string, (track: Spotify.Track) => string | number>}
 */
const columns = {
    Title: (track) => track.name(),
    Artist: (track) => attempt(() => track.artist(0).name(), ""),
    Album: (track) => attempt(() => track.album().name(), ""),
    Time: (track) => track.duration(),
};
export const COLUMNS = Object.keys(columns);

/** Another list, in the order of a column. */
export class SortedTracks {
    /** @param {FixedTracks | PlaylistTracks | SearchTracks} base */
    constructor(base) {
        this.base = base;
        /** One of COLUMNS; "" for the list's own order. */
        this.column = "";
        this.backwards = false;
        /** @type {number[]} */
        this.order = [];
        /** @type {Signal<Change>} */
        this.changed = new Signal();
        this.unfollow = base.changed.add((change) => {
            this.arrange();
            // Rows of a sorted list may all have moved, nobody knows where.
            this.changed.emit(this.column === "" ? change : null);
        });
    }

    get length() {
        return this.base.length;
    }

    /**
     * @param {string} column
     * @param {boolean} backwards
     * @returns {Promise<void>} rejected, and nothing is changed, when not all tracks can be had
     */
    async sort(column, backwards) {
        await this.base.whole();
        this.column = column;
        this.backwards = backwards;
        this.arrange();
        this.changed.emit(null);
    }

    arrange() {
        if (this.column === "") {
            return;
        }
        const keys = list(this.base.length, (i) => {
            const track = this.base.peek(i);
            return track === null ? "" : columns[this.column](track);
        });
        const collator = new Intl.Collator(undefined, { numeric: true, sensitivity: "base" });
        const sign = this.backwards ? -1 : 1;
        this.order = keys.map((_, i) => i).sort((a, b) => {
            const [one, other] = [keys[a], keys[b]];
            return sign * (typeof one === "number" && typeof other === "number" ? one - other
                : collator.compare(String(one), String(other))) || a - b;
        });
    }

    /** @param {number} index of a row @returns {number} in the list itself */
    place(index) {
        return this.column === "" ? index : this.order[index];
    }

    /** @param {number} index @returns {Spotify.Track | null} */
    peek(index) {
        return this.base.peek(this.place(index));
    }

    /** @param {number} index */
    async fetch(index) {
        return this.base.fetch(this.place(index));
    }

    /** What plays follows its list; in an order of its own it is as it was. */
    copy() {
        if (this.column === "") {
            return this.base.copy();
        }
        const tracks = this.order.map((i) => /** @type {Spotify.Track} */ (this.base.peek(i)));
        return new FixedTracks(tracks.length, (i) => tracks[i]);
    }

    close() {
        this.unfollow();
        this.base.close();
    }
}

/** @param {{ length: number, item(index: number): number }} array an array object of the plug-in */
const numbers = (array) => list(array.length, (i) => array.item(i));

/** @param {number} position @param {number} count @returns {Change} */
export function insertion(position, count) {
    return {
        moved: (index) => index < position ? index : index + count,
        added: list(count, (i) => position + i),
        reordered: false,
    };
}

/** @param {number[]} positions @returns {Change} */
export function removal(positions) {
    const gone = new Set(positions);
    return {
        moved: (index) => gone.has(index) ? -1 : index - below(positions, index),
        added: [],
        reordered: false,
    };
}

/**
 * @param {number[]} positions
 * @param {number} to where the first of them is afterwards
 * @returns {Move}
 */
export function move(positions, to) {
    const places = new Map(positions.map((position, rank) => [position, to + rank]));
    return {
        moved: (index) => {
            const place = places.get(index);
            if (place !== undefined) {
                return place;
            }
            const rank = index - below(positions, index);
            return rank < to ? rank : rank + positions.length;
        },
        added: [],
        reordered: true,
    };
}

/** @param {number[]} positions @param {number} index */
function below(positions, index) {
    return positions.reduce((count, position) => position < index ? count + 1 : count, 0);
}
