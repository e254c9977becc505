// @ts-check
// Plays the queue through the session's player and tells where it is.

import { ServiceError, attempt, describeTrack, whenLoaded } from "./library.js";
import { quoted } from "../page/dom.js";
import { announce, notify } from "../page/notices.js";
import { Queue } from "./queue.js";
import { Signal } from "../page/scope.js";

/** @typedef {import("./tracklist.js").TrackList} TrackList */
/** @typedef {import("./library.js").TrackInfo} TrackInfo */

export const queue = new Queue();

/** What there is to see; `changed` tells all of it, `progressed` the position alone. */
export const now = {
    /** @type {"stopped" | "loading" | "playing" | "paused"} */
    status: "stopped",
    /** @type {Spotify.Track | null} */
    track: null,
    /** @type {TrackInfo | null} */
    info: null,
    /** Milliseconds. */
    position: 0,
};
/** @type {Signal<void>} */
export const changed = new Signal();
/** @type {Signal<void>} */
export const progressed = new Signal();

/** Where the sound of the last load begins in its track, in milliseconds. */
let offset = 0;
let loadedAt = 0;
/** Whether the last load has been heard: a "TrackComplete" before that is of the track before. */
let heard = false;
/**
 * The entry that comes next, once it has been asked for, and its track, once that is there.
 * @type {{ entry: import("./queue.js").Entry, track: Spotify.Track | null } | null}
 */
let coming = null;
/** Counts the wishes of the user: whoever waited looks whether his is still the last. */
let wish = 0;
let failures = 0;
const MOST_FAILURES = 20;

/** Listens to the plug-in; once. */
export function watchPlayer() {
    const { Session, Sonolet } = Spotify;
    Sonolet.addEventListener("TrackProgress", progress);
    Sonolet.addEventListener("TrackComplete", () => {
        const stale = !heard && Date.now() - loadedAt < 500;
        if (now.status === "playing" && !stale) {
            complete();
        }
    });
    Session.addEventListener("StreamingError", (code) =>
        fail(`The music stopped: ${Spotify.errorMessage(code)}`));
    Session.addEventListener("PlayTokenLost", () => {
        if (now.status === "playing") {
            set("paused");
            notify("Paused, because this account plays somewhere else now.",
                { label: "Play here", run: toggle });
        }
    });
}

/** @param {TrackList} list @param {number} index */
export function play(list, index) {
    queue.start(list, index);
    failures = 0;
    return load(0, true);
}

export function toggle() {
    if (now.status === "playing") {
        Spotify.Session.playerPlay(false);
        set("paused");
    } else if (now.status === "paused") {
        begin();
    } else if (now.status === "stopped" && queue.entries.length > 0) {
        queue.at = Math.max(queue.at, 0);
        load(0, true);
    }
}

export function next() {
    failures = 0;
    skip(1);
}

/** To the track's start; from there, to the track before. */
export function previous() {
    if (now.info && (now.position > 3000 || queue.at <= 0)) {
        seek(0);
    } else {
        skip(-1);
    }
}

/**
 * Goes on `ahead` entries further in the queue.
 * @param {number} ahead
 */
export function skip(ahead) {
    if (queue.advance(ahead)) {
        load(0, true);
    } else {
        stop();
    }
}

/**
 * Loads the track afresh: after a `playerSeek` alone, the plug-in would first play out the seconds
 * that it holds, and its position counts what was played and not where.
 * @param {number} milliseconds
 */
export function seek(milliseconds) {
    if (now.track !== null && now.info !== null) {
        const target = Math.max(0, Math.min(milliseconds, now.info.duration - 500));
        start(now.track, target, now.status !== "paused");
    }
}

export function stop() {
    ++wish;
    attempt(() => {
        Spotify.Session.playerPlay(false);
        Spotify.Session.playerUnload();
    }, undefined);
    now.track = now.info = null;
    now.position = 0;
    set("stopped");
}

/** At sign-out, before the wrappers are emptied. */
export function reset() {
    stop();
    queue.clear();
}

/**
 * Plays the queue's current entry as soon as it has its data.
 * @param {number} from milliseconds
 * @param {boolean} playing
 */
async function load(from, playing) {
    const mine = ++wish;
    set("loading");
    try {
        const track = await queue.fetch(0);
        if (track === null || mine !== wish) {
            return;
        }
        await whenLoaded(track);
        if (mine === wish) {
            begun(track, from, playing);
        }
    } catch (error) {
        if (mine === wish) {
            fail(`This track cannot be played: ${error instanceof Error ? error.message : error}`);
        }
    }
}

/**
 * @param {Spotify.Track} track with its data
 * @param {number} from milliseconds
 * @param {boolean} playing
 */
function begun(track, from, playing) {
    now.track = track;
    now.info = describeTrack(track);
    start(track, from, playing);
    if (now.info !== null) {
        announce(`Now playing: ${now.info.title} by ${now.info.artists.join(", ")}`);
    }
}

/**
 * @param {Spotify.Track} track
 * @param {number} from milliseconds
 * @param {boolean} playing
 */
function start(track, from, playing) {
    const { Session, SP_ERROR } = Spotify;
    const title = attempt(() => track.name(), "");
    let error;
    try {
        error = Session.playerLoad(track);
    } catch (refused) { // "Could not initialize backend"
        stop();
        notify("There is no way to play sound on this device.", null, "error");
        return;
    }
    if (error !== SP_ERROR.SP_ERROR_OK) {
        fail(`${quoted(title)} cannot be played: ${Spotify.errorMessage(error)}`);
        return;
    }
    offset = from;
    now.position = from;
    loadedAt = Date.now();
    heard = false;
    coming = null;
    if (from > 0) {
        Session.playerSeek(from);
    }
    if (playing) {
        begin();
    } else {
        Session.playerPlay(false);
        set("paused");
    }
}

function begin() {
    const error = Spotify.Session.playerPlay(true);
    if (error === Spotify.SP_ERROR.SP_ERROR_OK) {
        set("playing");
    } else {
        fail(`The music does not start: ${Spotify.errorMessage(error)}`);
    }
}

/** @param {number} seconds what has been heard since the load */
function progress(seconds) {
    if (now.info === null || now.status === "loading" || now.status === "stopped") {
        return;
    }
    if (seconds > 0) {
        heard = true;
        failures = 0;
    }
    now.position = Math.min(offset + seconds * 1000, now.info.duration);
    progressed.emit();
    if (now.info.duration - now.position < 15000) {
        prefetch();
    }
}

/** Has what comes next ready to be played at once; anew when the queue has changed. */
function prefetch() {
    const entry = queue.next;
    if (entry === undefined || (coming !== null && coming.entry === entry)) {
        return;
    }
    const mine = coming = { entry, track: /** @type {Spotify.Track | null} */ (null) };
    queue.fetchEntry(entry).then((track) => {
        if (track !== null && coming === mine) {
            Spotify.Session.playerPrefetch(track);
            mine.track = track;
        }
    }).catch(() => {}); // it is asked for again when it is to be played
}

function complete() {
    if (queue.repeat === "one" && now.track !== null) {
        start(now.track, 0, true);
        return;
    }
    const ready = coming;
    if (!queue.advance(1)) {
        stop();
    } else if (ready !== null && ready.track !== null && ready.entry === queue.entries[queue.at] &&
        ready.track.isLoaded()) {
        ++wish;
        begun(ready.track, 0, true);
    } else {
        load(0, true);
    }
}

/**
 * Says what is wrong and goes on with the next track; not for ever when none can be played.
 * @param {string} message
 */
function fail(message) {
    notify(message, null, "error");
    if (++failures < MOST_FAILURES && queue.remaining > 0) {
        skip(1);
    } else {
        stop();
    }
}

/** @param {"stopped" | "loading" | "playing" | "paused"} status */
function set(status) {
    now.status = status;
    changed.emit();
}
