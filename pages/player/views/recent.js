// @ts-check

import { h, put } from "../page/dom.js";
import { PlayedTracks } from "../music/history.js";
import { empty } from "./parts.js";
import { trackTable } from "./track-table.js";

/** @param {import("../page/router.js").View} view */
export async function recentView({ root, scope, title }) {
    const tracks = new PlayedTracks();
    title("Recently played");
    put(root, h("h1", { class: "list-title" }, "Recently played"), tracks.length === 0
        ? empty("clock", "Nothing yet", "What you play on this device is listed here.")
        : trackTable({ tracks, scope, label: "Recently played" }).element);
}
