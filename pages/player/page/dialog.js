// @ts-check
// One dialog at a time over the page: menus, choices, help. Its focus stays inside (remote.js moves
// only among what is in it) and goes back to where it was.

import { byId, h, iconButton, named, put } from "./dom.js";

/** @type {(() => void) | null} */
let closeOpen = null;

/** The element that the focus may move in: the dialog, or the whole page. */
export function focusRoot() {
    return document.querySelector(".dialog") || document.body;
}

export function closeDialog() {
    if (closeOpen === null) {
        return false;
    }
    closeOpen();
    return true;
}

/**
 * @param {string} title
 * @param {(body: HTMLElement, close: () => void) => void} fill
 */
export function openDialog(title, fill) {
    closeDialog();
    const before = document.activeElement;
    const page = byId("app");
    const body = h("div", { class: "dialog-body" });
    const close = () => {
        veil.remove();
        page.removeAttribute("aria-hidden");
        closeOpen = null;
        if (before instanceof HTMLElement && before.isConnected) {
            before.focus();
        }
    };
    const dialog = h("div", { class: "dialog", role: "dialog", "aria-modal": "true",
        "aria-label": title, tabindex: "-1" },
    h("header", { class: "dialog-head" },
        h("h2", null, named(title)),
        iconButton("close", "Close", { onclick: close })),
    body);
    const veil = h("div", { class: "veil", onclick: (/** @type {Event} */ event) => {
        if (event.target === veil) {
            close();
        }
    } }, dialog);
    dialog.addEventListener("keydown", (event) => {
        if (event.key === "Tab") {
            keepInside(dialog, event);
        }
    });
    closeOpen = close;
    page.setAttribute("aria-hidden", "true");
    document.body.append(veil);
    fill(body, close);
    const first = body.querySelector("input, button, a, [tabindex='0']");
    (first instanceof HTMLElement ? first : dialog).focus();
}

/** @param {HTMLElement} dialog @param {KeyboardEvent} event */
function keepInside(dialog, event) {
    const all = dialog.querySelectorAll("button, input, a[href], [tabindex='0']");
    const edge = event.shiftKey ? all[0] : all[all.length - 1];
    if (document.activeElement === edge || document.activeElement === dialog) {
        event.preventDefault();
        const other = event.shiftKey ? all[all.length - 1] : all[0];
        /** @type {HTMLElement} */ (other).focus();
    }
}

/**
 * A menu: a dialog with one button for each item.
 * @param {string} title
 * @param {({ label: string, icon: Node, run: () => void } | false | null)[]} items
 */
export function openMenu(title, items) {
    openDialog(title, (body, close) => {
        const menu = h("div", { class: "menu" });
        for (const item of items) {
            put(menu, item && h("button", { type: "button", class: "menu-item",
                onclick: () => {
                    close();
                    item.run();
                } }, item.icon, item.label));
        }
        body.append(menu);
    });
}
