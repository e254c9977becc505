// @ts-check
// Addresses and views. An address is "#/view/argument/...?options"; each can be opened directly. A
// view is an async function that fills an element; while it works a loading state is seen, and
// what it throws becomes an error with a way out.

import { byId, h, icon, replace } from "./dom.js";
import { picturesShown } from "../music/images.js";
import { entrance, reveal } from "./remote.js";
import { Scope } from "./scope.js";

/**
 * What a view is given.
 * @typedef {object} View
 * @property {HTMLElement} root     to be filled; scrolls
 * @property {Scope} scope          ends with the view
 * @property {string[]} args
 * @property {URLSearchParams} options
 * @property {any} subject          what `remember` was given for this address, if anything
 * @property {(text: string) => void} title
 */

/** @type {Record<string, (view: View) => Promise<void>>} */
let views = {};
let scope = new Scope();
/** @type {Map<string, any>} */
const subjects = new Map();
/**
 * Where a view was left.
 * @type {Map<string, { scroll: number, focus: string }>}
 */
const places = new Map();
let shown = "";

/**
 * Keeps an object that the view at `address` shows, so that it need not look for it.
 * @param {string} address
 * @param {any} subject
 */
export function remember(address, subject) {
    subjects.delete(address);
    subjects.set(address, subject);
    if (subjects.size > 100) {
        subjects.delete(subjects.keys().next().value || "");
    }
}

/** @param {string} address */
export function go(address) {
    location.hash = address;
}

/**
 * Gives the view that is shown another address; the number of steps back stays.
 * @param {string} address
 */
export function readdress(address) {
    history.replaceState(null, "", address);
    shown = address;
}

/** @param {typeof views} table */
export function startRouter(table) {
    views = table;
    window.addEventListener("hashchange", show);
    show();
}

/** The wrappers of all views are about to be emptied. */
export function stopRouter() {
    window.removeEventListener("hashchange", show);
    subjects.clear();
    places.clear();
    scope.close();
    shown = "";
    byId("main").textContent = "";
}

export function parseAddress() {
    const [path, options] = location.hash.slice(1).split("?");
    const parts = path.split("/").filter((part) => part !== "").map(decode);
    return { name: parts[0] || "home", args: parts.slice(1), options: new URLSearchParams(options) };
}

/** The view once more, where it is, for what may have come meanwhile. */
export function reload() {
    show();
}

async function show() {
    leave();
    const address = location.hash;
    const { name, args, options } = parseAddress();
    const main = byId("main");
    const mine = scope = new Scope();
    const root = h("div", { class: "view", "aria-busy": "true" });
    const waiting = setTimeout(() => root.classList.add("waiting"), 150);
    mine.onClose(() => clearTimeout(waiting));
    shown = address;
    main.scrollTop = 0;
    replace(main, root);
    document.querySelectorAll("[data-view]").forEach((link) => {
        if (link.getAttribute("data-view") === name) {
            link.setAttribute("aria-current", "page");
        } else {
            link.removeAttribute("aria-current");
        }
    });
    const title = (/** @type {string} */ text) => {
        document.title = `${text} – Sonolet Player`;
    };
    const view = Object.keys(views).includes(name) ? views[name] : views.missing;
    try {
        await mine.until(view({ root, scope: mine, args, options, title,
            subject: subjects.get(address) }));
        restore(address);
    } catch (error) {
        title("Not shown");
        showError(root, error);
        restore(address);
    }
    clearTimeout(waiting);
    root.classList.remove("waiting");
    root.removeAttribute("aria-busy");
    tellReady();
}

/** For whoever makes a picture of the page. */
function tellReady() {
    setTimeout(() => {
        if (picturesShown()) {
            document.documentElement.dataset.ready = "true";
        } else {
            tellReady();
        }
    }, 100);
}

/** @param {HTMLElement} root @param {unknown} error */
function showError(root, error) {
    replace(root, h("div", { class: "empty", role: "alert" },
        icon("alert"),
        h("h1", null, "This could not be shown"),
        h("p", null, error instanceof Error ? error.message : String(error)),
        h("p", { class: "actions" },
            h("button", { type: "button", class: "button primary", onclick: show }, "Try again"),
            h("a", { class: "button quiet", href: "#/home" }, "Go home"))));
}

function leave() {
    const focused = document.activeElement;
    const key = focused && focused.closest("[data-key]");
    if (shown) {
        places.set(shown, {
            scroll: byId("main").scrollTop,
            focus: key ? key.getAttribute("data-key") || "" : "",
        });
    }
    scope.close();
}

/**
 * Back where the user was; with a remote control that means the focus, too.
 * @param {string} address
 */
function restore(address) {
    const place = places.get(address);
    const main = byId("main");
    main.dispatchEvent(new Event("scroll")); // lists draw their rows now
    if (place) {
        main.scrollTop = place.scroll;
        main.dispatchEvent(new Event("scroll"));
    }
    // The sign-in's field may have it still, though it is hidden.
    const focused = document.activeElement;
    if (focused instanceof HTMLElement && focused !== document.body && focused.offsetParent !== null) {
        return;
    }
    const key = place && place.focus;
    const target = (key && Array.from(main.querySelectorAll("[data-key]")).find(
        (element) => element.getAttribute("data-key") === key)) || entrance();
    if (target instanceof HTMLElement) {
        target.focus({ preventScroll: true });
        reveal(target);
    }
}

/** @param {string} part */
function decode(part) {
    try {
        return decodeURIComponent(part);
    } catch (error) {
        return part; // typed by hand
    }
}
