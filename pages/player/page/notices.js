// @ts-check
// What the page says by itself: short notices, the connection's state, and words for screen readers.

import { byId, h, icon, iconButton } from "./dom.js";

/**
 * @param {string} message
 * @param {{ label: string, run: () => void } | null} [action]
 * @param {"info" | "error"} [kind]
 */
export function notify(message, action, kind = "info") {
    const place = byId("notices");
    for (const shown of Array.from(place.children)) {
        if (shown.getAttribute("data-message") === message) {
            shown.remove(); // the same again replaces itself
        }
    }
    const notice = h("div", { class: `notice ${kind}`, "data-message": message,
        role: kind === "error" ? "alert" : "status" },
    icon(kind === "error" ? "alert" : "note"),
    h("p", null, message),
    action && h("button", { type: "button", class: "button small",
        onclick: () => {
            notice.remove();
            action.run();
        } }, action.label),
    iconButton("close", "Dismiss", { onclick: () => notice.remove() }));
    place.append(notice);
    while (place.children.length > 3) {
        place.children[0].remove();
    }
    const expire = () => {
        if (notice.contains(document.activeElement)) {
            setTimeout(expire, 2000); // its button is about to be pressed
        } else {
            notice.remove();
        }
    };
    setTimeout(expire, kind === "error" ? 10000 : 5000);
}

/** Whether there was one. */
export function dismissNotices() {
    const place = byId("notices");
    const some = place.children.length > 0;
    place.textContent = "";
    return some;
}

/** @param {string} message */
export function announce(message) {
    byId("announcer").textContent = message;
}
