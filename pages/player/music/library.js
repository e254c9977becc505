// @ts-check
// The script interface as promises and plain data. Wrappers of the plug-in are costly (each call
// that hands one out makes a new one), so views keep what they read and not what they read it from.

import { quoted } from "../page/dom.js";
import { Signal } from "../page/scope.js";

/** @typedef {import("../page/scope.js").Scope} Scope */

/** Sizes that `cover` and `portrait` take: 300, 64 and 640 pixels. */
export const ImageSize = /** @type {const} */ ({ normal: 0, small: 1, large: 2 });

/** How often a question is looked after, in milliseconds. */
const LOOK = 10;

/** The service refused; `code` is one of Spotify.SP_ERROR. */
export class ServiceError extends Error {
    /**
     * @param {Spotify.ErrorCode} code
     * @param {string} [message]
     */
    constructor(code, message) {
        super(message || (code === Spotify.SP_ERROR.SP_ERROR_OTHER_TRANSIENT
            ? "The music service does not answer just now." : Spotify.errorMessage(code)));
        this.code = code;
    }
}

/** Some data of some object has arrived; bursts are told once.
 * @type {Signal<void>} */
export const metadataArrived = new Signal();

export function watchMetadata() {
    let pending = false;
    Spotify.Session.addEventListener("MetadataUpdated", () => {
        if (!pending) {
            pending = true;
            setTimeout(() => {
                pending = false;
                metadataArrived.emit();
            }, 100);
        }
    });
}

/**
 * What `read` gives, or `otherwise` where the interface throws: no cover, no album, cleared at logout.
 * @template T
 * @param {() => T} read
 * @param {T} otherwise
 */
export function attempt(read, otherwise) {
    try {
        return read();
    } catch (error) {
        return otherwise;
    }
}

/**
 * @template T
 * @param {number} count
 * @param {(index: number) => T} at
 * @returns {T[]}
 */
export function list(count, at) {
    return Array.from({ length: count }, (_, index) => at(index));
}

// ---- Plain data ----------------------------------------------------------------------------------

/**
 * @typedef {object} TrackInfo
 * @property {boolean} loaded    false: the rest is not known yet
 * @property {string} key        two wrappers of one track have the same key
 * @property {string} title
 * @property {string[]} artists
 * @property {string} album
 * @property {number} disc
 * @property {number} index      on its disc, from 1
 * @property {number} duration   milliseconds
 * @property {string} cover      image id, small; "" when there is none
 * @property {boolean} starred
 * @property {boolean} available
 */

/** @param {Spotify.Track} track @returns {TrackInfo} */
export function describeTrack(track) {
    const loaded = track.isLoaded();
    const title = track.name();
    const artists = list(track.numArtists(), (i) => attempt(() => track.artist(i).name(), ""));
    const from = albumOf(track);
    const album = from === null ? "" : from.name();
    const [disc, index, duration] = [track.disc(), track.index(), track.duration()];
    return {
        loaded, title, artists, album, disc, index, duration,
        // The interface tells no link of a track, so what it is called has to tell it apart.
        key: [title, artists, album, disc, index, duration].join("\n"),
        cover: coverId(from, ImageSize.small),
        starred: track.isStarred(),
        available: track.getAvailability(),
    };
}

/** @param {Spotify.Album} album */
export function describeAlbum(album) {
    const artist = attempt(() => album.artist().name(), "");
    const title = album.name();
    return {
        title, artist,
        year: album.year(),
        path: path("album", artist, title),
        type: album.albumType(),
    };
}

/** @param {...string} parts */
export function path(...parts) {
    return `#/${parts.map((part) => encodeURIComponent(part).replace(/%3A/g, ":")).join("/")}`;
}

/**
 * The image id of an album's cover or an artist's portrait; "" when there is none.
 * @param {Spotify.Album | null} album
 * @param {Spotify.ImageSize} size
 */
export function coverId(album, size) {
    return album === null ? "" : attempt(() => album.cover(size), "");
}

/** @param {Spotify.Track} track @returns {Spotify.Album | null} */
export function albumOf(track) {
    return attempt(() => track.album(), null);
}

/** The canonical name of whoever is signed in. */
export function ownName() {
    return Spotify.Session.user().canonicalName();
}

/** The same as people write it. */
export function shownName() {
    const user = Spotify.Session.user();
    return user.displayName() || user.canonicalName();
}

/**
 * A track has got or lost its star, here or elsewhere.
 * @type {Signal<void>}
 */
export const starsChanged = new Signal();

/**
 * Stars are the entries of a playlist, so its events tell of them.
 * @param {Scope} scope
 */
export function watchStars(scope) {
    const starred = Spotify.Session.starredCreate();
    scope.listen(starred, "TracksAddedEvent", () => starsChanged.emit());
    scope.listen(starred, "TracksRemoved", () => starsChanged.emit());
}

// ---- Questions -----------------------------------------------------------------------------------

/**
 * Resolves when a track, album or artist has its data. A link is known at once but its data may
 * come later, or never: `error` tells for tracks, time alone for the others.
 * @template {Spotify.Track | Spotify.Album | Spotify.Artist} T
 * @param {T} thing
 * @returns {Promise<T>}
 */
export function whenLoaded(thing) {
    return new Promise((resolve, reject) => {
        const { SP_ERROR_IS_LOADING, SP_ERROR_OK, SP_ERROR_OTHER_PERMANENT } = Spotify.SP_ERROR;
        const settled = () => {
            if (thing.isLoaded()) {
                resolve(thing);
                return true;
            }
            const error = "error" in thing ? thing.error() : SP_ERROR_IS_LOADING;
            if (error !== SP_ERROR_IS_LOADING && error !== SP_ERROR_OK) {
                reject(new ServiceError(error));
                return true;
            }
            return false;
        };
        const look = () => {
            try {
                if (settled()) {
                    end();
                }
            } catch (error) { // logged out meanwhile
                end();
                reject(error);
            }
        };
        const stop = metadataArrived.add(look);
        const timer = "error" in thing ? 0 : setTimeout(() => {
            end();
            reject(new ServiceError(SP_ERROR_OTHER_PERMANENT, "This is not in the library."));
        }, 8000);
        const end = () => {
            stop();
            clearTimeout(timer);
        };
        look();
    });
}

/**
 * A query's answer: `ask` starts the query and hands over the function to be called with it. The
 * query has its answer with one tick of the plug-in, and the function is called with another, up to
 * 100 ms later: who looks meanwhile has it at once.
 * @template {{ error(): Spotify.ErrorCode, isLoaded(): boolean }} T
 * @param {(done: (result: T) => void) => T} ask
 * @returns {Promise<T>}
 */
function answer(ask) {
    return new Promise((resolve, reject) => {
        const told = (/** @type {T} */ result) => {
            clearInterval(timer);
            const error = result.error();
            if (error === Spotify.SP_ERROR.SP_ERROR_OK) {
                resolve(result);
            } else {
                reject(new ServiceError(error));
            }
        };
        const query = ask(told);
        const timer = setInterval(() => {
            if (attempt(() => query.isLoaded(), false)) {
                told(query);
            }
        }, LOOK);
    });
}

/**
 * @param {string} query
 * @param {{ tracks?: number, from?: number, albums?: number, artists?: number }} counts `from`: the
 *     first track
 * @returns {Promise<Spotify.Search>}
 */
export function search(query, { tracks = 0, from = 0, albums = 0, artists = 0 }) {
    return answer((done) => Spotify.Search.create(
        query, from, tracks, 0, albums, 0, artists, 0, 0, 0, done));
}

/** @param {Spotify.Album} album @returns {Promise<Spotify.Albumbrowse>} */
export function browseAlbum(album) {
    return answer((done) => Spotify.Albumbrowse.create(album, done));
}

/** @param {Spotify.Artist} artist @returns {Promise<Spotify.Artistbrowse>} */
export function browseArtist(artist) {
    const { SP_ARTISTBROWSE_FULL } = Spotify.SP_ARTISTBROWSE_TYPE;
    return answer((done) => Spotify.Artistbrowse.create(artist, SP_ARTISTBROWSE_FULL, done));
}

/** @param {Spotify.ToplistType} type @param {number} region @returns {Promise<Spotify.Toplistbrowse>} */
export function topList(type, region) {
    return answer((done) => Spotify.Toplistbrowse.create(type, region, "", done));
}

/** @param {Spotify.Search} found */
export const albumsOf = (found) => list(found.numAlbums(), (i) => found.album(i));

/** @param {Spotify.Search} found */
export const artistsOf = (found) => list(found.numArtists(), (i) => found.artist(i));

/**
 * An album by its link, or by its artist and title: wrappers tell no links, so the page's own
 * addresses have names in them.
 * @param {string[]} names
 */
export async function findAlbum([first, title]) {
    if (title === undefined) {
        return whenLoaded(Spotify.Album.create(first));
    }
    const found = await search(`artist:${phrase(first)} album:${phrase(title)}`, { albums: 20 });
    return required(albumsOf(found).find((album) =>
        album.name() === title && attempt(() => album.artist().name(), "") === first), title);
}

/** @param {string[]} names */
export async function findArtist([name]) {
    if (name.startsWith("spotify:")) {
        return whenLoaded(Spotify.Artist.create(name));
    }
    const found = await search(`artist:${phrase(name)}`, { artists: 20 });
    return required(artistsOf(found).find((artist) => artist.name() === name), name);
}

/** @param {string} name */
function phrase(name) {
    return `"${name.replace(/"/g, " ")}"`;
}

/**
 * @template T
 * @param {T | undefined} thing
 * @param {string} name
 */
function required(thing, name) {
    if (thing === undefined) {
        throw new ServiceError(Spotify.SP_ERROR.SP_ERROR_OTHER_PERMANENT,
            `${quoted(name)} is not in the library.`);
    }
    return thing;
}

// ---- Playlists -----------------------------------------------------------------------------------

/** @param {Spotify.Playlist} playlist */
export function mayChange(playlist) {
    return attempt(() => playlist.isCollaborative() ||
        playlist.owner().canonicalName() === ownName(), false);
}

/**
 * Adds a track at the end. The interface does not say whether the service agreed; the count does.
 * @param {Spotify.Playlist} playlist
 * @param {Spotify.Track} track
 */
export function addTo(playlist, track) {
    const before = playlist.numTracks();
    playlist.addTracks(track, before);
    return playlist.numTracks() > before;
}
