// @ts-check
// Everything that there is. The interface lists nothing but the answers of searches, so the whole is
// what searches by year and by each first letter of a word find together.

import { albumsOf, artistsOf, attempt, search } from "./library.js";

const MOST = 20000; // of one answer
const LETTERS = "abcdefghijklmnopqrstuvwxyz0123456789αβγδεζηθικλμνξοπρστυφχψω" +
    "абвгдежзийклмнопрстуфхцчшщыэюяאבגדהוזחטיכלמנסעפצקרשתابتثجحخدذرزسشصضطظعغفقكلمنهوي";

/**
 * A name and what has it, to be sorted and shown.
 * @template T
 * @typedef {object} Named
 * @property {string} name
 * @property {string} by       for albums, the artist
 * @property {T} thing
 */

/**
 * All albums, or all artists, in the order of their names. `told` is called with what there is as
 * answers come, the last time with everything.
 * @template {"albums" | "artists"} K
 * @param {K} kind
 * @param {(all: Named<K extends "albums" ? Spotify.Album : Spotify.Artist>[]) => void} told
 * @returns {Promise<void>} rejected when nothing could be asked
 */
export async function everything(kind, told) {
    /** @type {Map<string, Named<any>>} */
    const found = new Map();
    const take = (/** @type {Spotify.Search} */ answer) => {
        for (const album of albumsOf(answer)) {
            const by = attempt(() => album.artist(), null);
            if (kind === "artists") {
                by && add(found, by.name(), "", by);
            } else {
                add(found, album.name(), by ? by.name() : "", album);
            }
        }
        artistsOf(answer).forEach((artist) => add(found, artist.name(), "", artist));
    };
    const tell = () => told(Array.from(found.values()).sort((a, b) =>
        order.compare(sortName(a.name), sortName(b.name)) || order.compare(a.by, b.by)));
    take(await search("year:1000-2999", { albums: MOST }));
    tell();
    const before = found.size;
    await Promise.all(Array.from(LETTERS, (letter) => search(
        kind === "artists" ? `artist:${letter}` : `album:${letter}`,
        kind === "artists" ? { artists: MOST } : { albums: MOST }).then(take)));
    if (found.size > before) {
        tell();
    }
}

/**
 * @param {Map<string, Named<any>>} found
 * @param {string} name
 * @param {string} by
 * @param {any} thing
 */
function add(found, name, by, thing) {
    const key = `${name}\n${by}`;
    if (name !== "" && !found.has(key)) {
        found.set(key, { name, by, thing });
    }
}

const order = new Intl.Collator(undefined, { numeric: true, sensitivity: "base" });

/** @param {string} name */
function sortName(name) {
    return name.replace(/^(?:the|a|an) +/i, "");
}

/**
 * What a name is found under: its first letter without accents; "#" for what is none.
 * @param {string} name
 */
export function letterOf(name) {
    const [first] = sortName(name).normalize("NFD");
    return first && /\p{L}/u.test(first) ? first.toUpperCase() : "#";
}
