// @ts-check
// The keys: arrows move the focus to what lies in their direction, as on a television; media keys
// and a few others work everywhere. Lists handle the arrows within themselves (virtual-list.js).

import { closeDialog, focusRoot } from "./dialog.js";
import { byId } from "./dom.js";
import { dismissNotices } from "./notices.js";
import { next, now, previous, seek, stop, toggle } from "../music/playback.js";

const FOCUSABLE = "a[href], button, input, [tabindex]";
/** Devices name their back key in their own ways. */
const BACK = ["GoBack", "BrowserBack", "XF86Back", "Backspace"];
const BACK_CODES = [461, 10009];
/** How far the keys that wind go, in milliseconds. */
const STEP = 10000;

/** @typedef {"Left" | "Right" | "Up" | "Down"} Direction */

/**
 * Where the focus was last in the view: from the sidebar one comes back to it.
 * @type {HTMLElement | null}
 */
let lastInView = null;

/** @param {() => void} help shows what the keys do */
export function startRemote(help) {
    byId("main").addEventListener("focusin", (event) => {
        lastInView = /** @type {HTMLElement} */ (event.target);
    });
    document.addEventListener("keydown", (event) => {
        if (!event.defaultPrevented && !event.altKey && !event.metaKey && handle(event, help)) {
            event.preventDefault();
        }
    });
}

/** @param {KeyboardEvent} event @param {() => void} help @returns {boolean} whether it is done */
function handle(event, help) {
    const { key } = event;
    const target = /** @type {HTMLElement} */ (event.target);
    const typing = target instanceof HTMLInputElement && target.type !== "checkbox" &&
        target.type !== "range";
    if (key.startsWith("Arrow") && !event.shiftKey) {
        const direction = /** @type {Direction} */ (key.slice(5));
        if (event.ctrlKey) {
            return !typing && skipWith(direction);
        }
        return arrow(target, direction, typing);
    }
    if (key === "Escape") {
        return closeDialog() || dismissNotices();
    }
    if (byId("app").hidden) {
        return false; // the sign-in
    }
    if (BACK_CODES.includes(event.keyCode) || (BACK.includes(key) && !(typing && key === "Backspace"))) {
        if (!closeDialog()) {
            history.back();
        }
        return true;
    }
    return media(event) || device(key, target) || (!typing && !event.ctrlKey && shortcut(key, target, help));
}

/** @param {KeyboardEvent} event */
function media({ key, code }) {
    switch (key) {
    case "MediaPlayPause":
        toggle();
        return true;
    case "MediaPlay":
    case "MediaPause":
        // One key for both may come as either; of two, neither does what the other is for.
        if (code === "MediaPlayPause" || (now.status === "playing") === (key === "MediaPause")) {
            toggle();
        }
        return true;
    case "MediaStop":
        stop();
        return true;
    case "MediaTrackNext":
        next();
        return true;
    case "MediaTrackPrevious":
        previous();
        return true;
    case "MediaFastForward":
        seek(now.position + STEP);
        return true;
    case "MediaRewind":
        seek(now.position - STEP);
        return true;
    default:
        return false;
    }
}

/**
 * Keys of remote controls that go somewhere.
 * @param {string} key
 * @param {HTMLElement} target
 */
function device(key, target) {
    switch (key) {
    case "BrowserHome":
        closeDialog();
        location.hash = "#/home";
        return true;
    case "BrowserSearch":
        closeDialog();
        byId("search").focus();
        return true;
    case "ContextMenu": // of the row that has the focus, else of the page
        if (!closeDialog()) {
            const row = target.closest("[role=row]");
            const more = row && row.querySelector(".more");
            (more instanceof HTMLElement ? more : byId("menu")).click();
        }
        return true;
    default:
        return false;
    }
}

/** @param {string} key @param {HTMLElement} target @param {() => void} help */
function shortcut(key, target, help) {
    if (focusRoot() !== document.body) {
        return false; // a dialog
    }
    switch (key) {
    case " ":
        if (target instanceof HTMLButtonElement || target instanceof HTMLInputElement) {
            return false; // presses it
        }
        toggle();
        return true;
    case "/":
        byId("search").focus();
        return true;
    case "?":
        help();
        return true;
    default:
        return false;
    }
}

/** @param {Direction} direction */
function skipWith(direction) {
    if (direction === "Right") {
        next();
    } else if (direction === "Left") {
        previous();
    }
    return direction === "Right" || direction === "Left";
}

/** @param {HTMLElement} target @param {Direction} direction @param {boolean} typing */
function arrow(target, direction, typing) {
    if (typing && (direction === "Left" || direction === "Right")) {
        const input = /** @type {HTMLInputElement} */ (target);
        const edge = direction === "Left" ? 0 : input.value.length;
        if (input.selectionStart !== edge || input.selectionEnd !== edge) {
            return false; // the caret moves
        }
    }
    // The sidebar may lie over the view: what is beside it is behind it.
    const enters = direction === "Right" && target.closest(".sidebar") !== null;
    const found = !enters ? nearest(target, direction)
        : lastInView !== null && lastInView.isConnected ? lastInView : entrance();
    if (found !== null) {
        found.focus({ preventScroll: true });
        reveal(found);
    }
    return found !== null || direction === "Up" || direction === "Down";
}

/** What has the focus first in a view, and above it where there is nothing in the view to have it. */
export function entrance() {
    const main = byId("main");
    const first = main.querySelector("[data-first]") ||
        main.querySelector("[role=row], .card, .menu-item") || main.querySelector("a, button");
    return first instanceof HTMLElement ? first : byId("back");
}

/**
 * Scrolls until the focus is seen, with what belongs to it: above the head of a view is its top.
 * @param {HTMLElement} element
 */
export function reveal(element) {
    if (element.closest(".hero")) {
        byId("main").scrollTop = 0;
    }
    element.scrollIntoView({ block: "nearest", inline: "nearest" });
}

/**
 * What lies nearest in a direction: things beside the focused one count as near, things off its
 * axis as far.
 * @param {HTMLElement} from
 * @param {Direction} direction
 */
function nearest(from, direction) {
    const start = from === document.body ? new DOMRect(0, 0, 1, 1) : from.getBoundingClientRect();
    const aside = direction === "Left" || direction === "Right";
    let best = null;
    let bestScore = Infinity;
    for (const element of focusRoot().querySelectorAll(FOCUSABLE)) {
        if (element === from || !(element instanceof HTMLElement) || !reachable(element, from)) {
            continue;
        }
        if (from !== document.body && (element.contains(from) || from.contains(element))) {
            continue;
        }
        if (aside && !besides(from, element)) {
            continue;
        }
        // What scrolling would show comes before what lies around the box.
        const inside = aside || scrolledWith(element, from);
        const score = distance(start, element.getBoundingClientRect(), direction) +
            (inside ? 0 : innerHeight / 2);
        if (score < bestScore) {
            bestScore = score;
            best = element;
        }
    }
    return best;
}

/**
 * Left and right lead from the view and its top to the sidebar, and else stay in their strip.
 * @param {HTMLElement} from
 * @param {HTMLElement} to
 */
function besides(from, to) {
    const [one, other] = [from, to].map((element) => element.closest(".bar, .top"));
    return one === other || (to.closest(".sidebar") !== null && !from.closest(".bar"));
}

/**
 * Whether a box that scrolls has both in it.
 * @param {HTMLElement} element
 * @param {HTMLElement} from
 */
function scrolledWith(element, from) {
    const box = element.closest("[data-scroll]");
    return box !== null && box.contains(from);
}

/**
 * Whether the element can be seen, or would be by scrolling a box that the focus is in already.
 * @param {HTMLElement} element
 * @param {HTMLElement} from
 */
function reachable(element, from) {
    if (element.offsetParent === null || element.hasAttribute("disabled") ||
        element.hasAttribute("data-skip")) {
        return false;
    }
    const box = element.closest("[data-scroll]");
    if (box === null || box.contains(from)) {
        return true;
    }
    const [inner, outer] = [element.getBoundingClientRect(), box.getBoundingClientRect()];
    const middle = (inner.top + inner.bottom) / 2;
    return middle > outer.top && middle < outer.bottom;
}

/** @param {DOMRect} from @param {DOMRect} to @param {Direction} direction */
function distance(from, to, direction) {
    const vertical = direction === "Up" || direction === "Down";
    const ahead = { Left: from.left - to.right, Right: to.left - from.right,
        Up: from.top - to.bottom, Down: to.top - from.bottom }[direction];
    const size = vertical ? Math.min(from.height, to.height) : Math.min(from.width, to.width);
    if (to.width === 0 || ahead < -size / 2) {
        return Infinity; // not in that direction; a little overlap is allowed
    }
    const gap = vertical
        ? Math.max(0, to.left - from.right, from.left - to.right)
        : Math.max(0, to.top - from.bottom, from.top - to.bottom);
    const drift = vertical ? Math.abs(to.left - from.left) : Math.abs(to.top - from.top);
    // To the side, what stands in the same line comes before what is nearer in another.
    return Math.max(ahead, 0) + (vertical ? 3 : 12) * gap + drift / 10;
}
