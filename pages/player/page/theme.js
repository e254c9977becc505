// @ts-check
// Light or dark: what the system says, until the user chooses; and margins for screens that hide
// their edges.

import { attempt } from "../music/library.js";

const dark = window.matchMedia("(prefers-color-scheme: dark)");
/** @type {string | null} */
let chosen = null;

function apply() {
    document.documentElement.dataset.theme = chosen || (dark.matches ? "dark" : "light");
}

/** @param {string | null} asked for this visit only */
export function startTheme(asked) {
    // Storage throws where the user forbids it.
    chosen = asked || attempt(() => localStorage.getItem("theme"), null);
    setMargins(attempt(() => localStorage.getItem("margins"), null) === "on");
    apply();
    dark.addListener(apply); // older engines have no addEventListener here
}

export function toggleTheme() {
    const theme = document.documentElement.dataset.theme === "dark" ? "light" : "dark";
    chosen = theme;
    attempt(() => localStorage.setItem("theme", theme), undefined);
    apply();
}

export function hasMargins() {
    return document.documentElement.dataset.margins === "on";
}

/** @param {boolean} wanted */
export function setMargins(wanted) {
    document.documentElement.dataset.margins = wanted ? "on" : "off";
    attempt(() => localStorage.setItem("margins", wanted ? "on" : "off"), undefined);
    window.dispatchEvent(new Event("resize")); // lists measure their rows again
}
