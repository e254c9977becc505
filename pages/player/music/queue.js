// @ts-check
// What plays next. Knows nothing of sound.

import { Signal } from "../page/scope.js";

/** @typedef {import("./tracklist.js").TrackList} TrackList */
/** @typedef {import("./tracklist.js").Change} Change */

/**
 * An index into the list that plays, or a track that was put between.
 * @typedef {number | Spotify.Track} Entry
 */

export class Queue {
    constructor() {
        /** @type {TrackList | null} */
        this.list = null;
        /** @type {Entry[]} */
        this.entries = [];
        /** The place in `entries` of the track that plays; -1 for none. */
        this.at = -1;
        this.shuffled = false;
        /** @type {"off" | "all" | "one"} */
        this.repeat = "off";
        /** @type {Signal<void>} */
        this.changed = new Signal();
        this.unfollow = () => {};
    }

    /**
     * Plays a list from one of its tracks on; tracks that were put between stay next.
     * @param {TrackList} list
     * @param {number} index
     */
    start(list, index) {
        const between = this.entries.slice(this.at + 1).filter(isTrack);
        this.clear();
        const own = list.copy();
        const stop = own.changed.add((change) => change && this.follow(change));
        this.unfollow = () => {
            stop();
            own.close();
        };
        this.list = own;
        this.entries = Array.from({ length: own.length }, (_, i) => i);
        this.at = index;
        if (this.shuffled) {
            // The track that was chosen comes first, so that all others follow.
            this.entries.splice(index, 1);
            this.entries = [index].concat(shuffle(this.entries.filter(isIndex)));
            this.at = 0;
        }
        this.entries.splice(this.at + 1, 0, ...between);
        this.changed.emit();
    }

    clear() {
        this.unfollow();
        this.unfollow = () => {};
        this.list = null;
        this.entries = [];
        this.at = -1;
        this.changed.emit();
    }

    /** The number of entries after the one that plays. */
    get remaining() {
        return this.entries.length - this.at - 1;
    }

    /**
     * The track `ahead` places after the one that plays.
     * @param {number} ahead
     * @returns {Promise<Spotify.Track | null>}
     */
    async fetch(ahead) {
        return this.fetchEntry(this.entries[this.at + ahead]);
    }

    /** @param {Entry | undefined} entry @returns {Promise<Spotify.Track | null>} */
    async fetchEntry(entry) {
        if (typeof entry === "number") {
            return this.list ? this.list.fetch(entry) : null;
        }
        return entry || null;
    }

    /** The entry that plays when this one has been heard; undefined at the end. */
    get next() {
        return this.entries[this.remaining === 0 && this.repeat === "all" ? 0 : this.at + 1];
    }

    /** @param {number} ahead @returns {Spotify.Track | null} */
    peek(ahead) {
        const entry = this.entries[this.at + ahead];
        if (typeof entry === "number") {
            return this.list ? this.list.peek(entry) : null;
        }
        return entry || null;
    }

    /**
     * Goes on by `step` entries; false at either end.
     * @param {number} step
     */
    advance(step) {
        const to = this.at + step;
        const around = this.repeat !== "off" && this.entries.length > 0;
        if ((to < 0 || to >= this.entries.length) && !around) {
            return false;
        }
        this.at = to < 0 ? this.entries.length - 1 : to % this.entries.length;
        this.changed.emit();
        return true;
    }

    /** @param {Spotify.Track} track */
    addNext(track) {
        this.entries.splice(this.at + 1, 0, track);
        this.changed.emit();
    }

    /** After the tracks that were put between before, ahead of the rest of the list.
     * @param {Spotify.Track} track */
    add(track) {
        let place = this.at + 1;
        while (isTrack(this.entries[place])) {
            ++place;
        }
        this.entries.splice(place, 0, track);
        this.changed.emit();
    }

    /** @param {number} ahead */
    remove(ahead) {
        this.entries.splice(this.at + ahead, 1);
        this.changed.emit();
    }

    /**
     * @param {number} ahead
     * @param {number} to
     */
    move(ahead, to) {
        const [entry] = this.entries.splice(this.at + ahead, 1);
        this.entries.splice(this.at + to, 0, entry);
        this.changed.emit();
    }

    /** @param {boolean} shuffled */
    setShuffled(shuffled) {
        this.shuffled = shuffled;
        if (shuffled) {
            const rest = this.entries.splice(this.at + 1);
            this.entries = this.entries.concat(rest.filter(isTrack), shuffle(rest.filter(isIndex)));
        } else {
            this.sort();
        }
        this.changed.emit();
    }

    /**
     * The list has changed elsewhere.
     * @param {NonNullable<Change>} change
     */
    follow(change) {
        /** @type {Entry[]} */
        const entries = [];
        let at = this.at;
        this.entries.forEach((entry, place) => {
            const moved = typeof entry === "number" ? change.moved(entry) : entry;
            if (moved !== -1) {
                entries.push(moved);
            } else if (place <= this.at) {
                --at; // what plays is heard to its end; then comes what followed it
            }
        });
        this.entries = entries;
        this.at = at;
        if (change.reordered && !this.shuffled) {
            this.sort();
        }
        for (const index of change.added) {
            this.insert(index);
        }
        this.changed.emit();
    }

    /** Brings the entries into the list's order, the tracks that were put between still next. */
    sort() {
        const now = this.entries[this.at];
        const between = this.entries.slice(this.at + 1).filter(isTrack);
        const played = this.entries.slice(0, this.at + 1).filter(isIndex).pop();
        /** @type {Entry[]} */
        const order = this.entries.filter(isIndex).sort((a, b) => a - b);
        this.at = played === undefined ? -1 : order.indexOf(played);
        if (isTrack(now)) {
            order.splice(++this.at, 0, now);
        }
        order.splice(this.at + 1, 0, ...between);
        this.entries = order;
    }

    /** @param {number} index of a track that is new in the list */
    insert(index) {
        let place;
        if (this.shuffled) {
            place = this.at + 1 + Math.floor(Math.random() * (this.remaining + 1));
        } else {
            const next = this.entries.findIndex((entry) => isIndex(entry) && entry > index);
            place = next < 0 ? this.entries.length : next;
        }
        this.entries.splice(place, 0, index);
        if (place <= this.at) {
            ++this.at;
        }
    }
}

/** @param {Entry | undefined} entry @returns {entry is number} */
function isIndex(entry) {
    return typeof entry === "number";
}

/** @param {Entry | undefined} entry @returns {entry is Spotify.Track} */
function isTrack(entry) {
    return entry !== undefined && !isIndex(entry);
}

/** @template T @param {T[]} items @returns {T[]} */
function shuffle(items) {
    for (let last = items.length - 1; last > 0; --last) {
        const other = Math.floor(Math.random() * (last + 1));
        [items[last], items[other]] = [items[other], items[last]];
    }
    return items;
}
