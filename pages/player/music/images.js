// @ts-check
// Covers and portraits: from image ids to pictures in elements.

import { byId } from "../page/dom.js";
import { artwork } from "./artwork.js";
import { attempt } from "./library.js";
import { debounce } from "../page/scope.js";

const LIMIT = 16e6; // characters of pictures that are kept
const AT_ONCE = 24; // an answer takes a few ticks of the plug-in, however small it is

/**
 * Pictures by image id, the first ones first.
 * @type {Map<string, string>}
 */
const kept = new Map();
let size = 0;

/**
 * Elements that wait for a picture, by its id.
 * @type {Map<string, HTMLElement[]>}
 */
const wanted = new Map();
/** Images under way. Nothing else refers to them, and with them their listeners would go. */
const loading = new Set();
const loadSoon = debounce(20, loadMore); // by then rows that are only scrolled past have gone

/**
 * Shows the picture `id` in a .cover element as soon as it is there; when there is none, artwork
 * that is made from `name`. `id` is what `cover`, `portrait` and `getImage` answer.
 * @param {HTMLElement} element
 * @param {string} id
 * @param {string} name of the album, artist or list; "" leaves the element's drawing
 */
export function showImage(element, id, name) {
    if (element.dataset.image === id && element.dataset.name === name) {
        return;
    }
    element.dataset.image = id;
    element.dataset.name = name;
    element.textContent = "";
    if (!id && name) {
        paint(element, name);
        return;
    }
    const picture = kept.get(id);
    if (picture) {
        place(element, id, picture);
    } else if (id) {
        wanted.set(id, (wanted.get(id) || []).concat(element));
        loadSoon();
    }
}

/** What was asked for last comes first; what nobody waits for any more does not come at all. */
function loadMore() {
    for (const [id, elements] of Array.from(wanted).reverse()) {
        if (loading.size >= AT_ONCE) {
            return;
        }
        wanted.delete(id);
        const waiting = elements.filter((element) => element.isConnected);
        if (waiting.length > 0) {
            load(id, waiting);
        }
    }
}

/** @param {string} id @param {HTMLElement[]} elements */
function load(id, elements) {
    const image = attempt(() => Spotify.SpImage.create(id), null);
    if (image === null) {
        return;
    }
    const finish = () => {
        loading.delete(image);
        // Throws for an image that failed, and after a logout.
        const base64 = attempt(() => image.data(), "");
        if (base64) {
            const picture = `data:image/jpeg;base64,${base64}`;
            keep(id, picture);
            elements.forEach((element) => place(element, id, picture));
        } else {
            elements.forEach((element) => paint(element, element.dataset.name || ""));
        }
        loadSoon();
    };
    if (image.isLoaded()) {
        finish();
    } else {
        loading.add(image);
        image.addEventListener("ImageLoaded", finish);
    }
}

/** Whether all pictures that can come have come. */
export function picturesShown() {
    return loading.size === 0 && wanted.size === 0;
}

/** At logout images say no more: what is under way will not come. */
export function forgetImages() {
    wanted.clear();
    loading.clear();
}

/** @param {string} id @param {string} picture */
function keep(id, picture) {
    if (kept.has(id)) {
        return;
    }
    kept.set(id, picture);
    size += picture.length;
    for (const [oldest, data] of Array.from(kept)) {
        if (size <= LIMIT) {
            return;
        }
        kept.delete(oldest);
        size -= data.length;
    }
}

/** @param {HTMLElement} element @param {string} name */
function paint(element, name) {
    if (name !== "") {
        element.textContent = "";
        element.append(artwork(name, Math.ceil(widthOf(element) * devicePixelRatio)));
    }
}

/** Widths of covers by their class, in rem; to measure each would lay the page out each time. */
const WIDTHS = { tiny: 2.6, small: 3.6, large: 14, largest: 24 };
const CARD = 11;
let rem = 0;
window.addEventListener("resize", () => {
    rem = 0;
});

/** @param {HTMLElement} element @returns {number} in pixels, or nearly */
function widthOf(element) {
    rem = rem || parseFloat(getComputedStyle(document.documentElement).fontSize);
    const found = Object.entries(WIDTHS).find(([kind]) => element.classList.contains(kind));
    return rem * (found ? found[1] : CARD);
}

/** @param {HTMLElement} element @param {string} id @param {string} picture */
function place(element, id, picture) {
    if (element.dataset.image !== id) {
        return; // it shows something else by now
    }
    const image = document.createElement("img");
    image.alt = "";
    image.onload = () => {
        element.dispatchEvent(new CustomEvent("picture", { detail: image }));
    };
    image.src = picture;
    element.textContent = "";
    element.append(image);
}

/**
 * Gives the view's background the tone of its picture, until the view ends.
 * @param {HTMLElement} element a .cover that shows one or will
 * @param {import("../page/scope.js").Scope} scope
 */
export function tint(element, scope) {
    const content = byId("main").parentElement || document.body;
    const use = (/** @type {CanvasImageSource} */ picture) => {
        if (!scope.closed) {
            content.style.setProperty("--tone", toneOf(picture));
            content.classList.add("toned");
        }
    };
    element.addEventListener("picture", (event) => use(/** @type {CustomEvent} */ (event).detail));
    const drawn = element.querySelector("canvas");
    if (drawn !== null) {
        use(drawn);
    }
    scope.onClose(() => content.classList.remove("toned"));
}

/**
 * A picture's most colourful tone: "r, g, b". Reads eight by eight pixels.
 * @param {CanvasImageSource} image
 */
function toneOf(image) {
    const canvas = document.createElement("canvas");
    canvas.width = canvas.height = 8;
    const context = canvas.getContext("2d");
    if (context === null) {
        return "";
    }
    context.drawImage(image, 0, 0, 8, 8);
    const pixels = context.getImageData(0, 0, 8, 8).data;
    let best = -1;
    let tone = "";
    for (let at = 0; at < pixels.length; at += 4) {
        const rgb = [pixels[at], pixels[at + 1], pixels[at + 2]];
        const spread = Math.max(...rgb) - Math.min(...rgb);
        if (spread > best) {
            best = spread;
            tone = rgb.join(", ");
        }
    }
    return tone;
}
