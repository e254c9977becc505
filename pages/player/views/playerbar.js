// @ts-check
// The bar below all views: what plays, where it is, and the buttons.

import { byId, clock, h, icon, named, replace } from "../page/dom.js";
import { showImage } from "../music/images.js";
import { starsChanged } from "../music/library.js";
import { changed, next, now, previous, progressed, queue, seek, toggle } from "../music/playback.js";
import { debounce } from "../page/scope.js";
import { openAlbum, openArtist, setStar } from "./track-table.js";

const STEP = 5000; // of the arrow keys, in milliseconds
/** @type {() => HTMLInputElement} */
const slider = () => byId("seek");
/**
 * Where the user has put the slider; null while it follows the music.
 * @type {number | null}
 */
let aimed = null;

export function startPlayerBar() {
    byId("toggle").addEventListener("click", toggle);
    byId("next").addEventListener("click", next);
    byId("previous").addEventListener("click", previous);
    byId("shuffle").addEventListener("click", () => queue.setShuffled(!queue.shuffled));
    byId("repeat").addEventListener("click", () => {
        queue.repeat = queue.repeat === "off" ? "all" : queue.repeat === "all" ? "one" : "off";
        queue.changed.emit();
    });
    byId("bar-star").addEventListener("click", () =>
        now.track && setStar(now.track, !now.track.isStarred()));
    startSlider();
    changed.add(fill);
    changed.add(place);
    progressed.add(place);
    queue.changed.add(fillModes);
    starsChanged.add(fillStar);
    fill();
    fillModes();
}

/** The music goes there when the slider rests: each seek loads the track afresh. */
function startSlider() {
    const settle = debounce(250, () => {
        if (aimed !== null) {
            seek(aimed);
            aimed = null;
        }
    });
    const aim = (/** @type {number} */ position) => {
        aimed = position;
        place();
    };
    slider().addEventListener("input", () => {
        settle.cancel();
        aim(Number(slider().value));
    });
    slider().addEventListener("change", settle);
    slider().addEventListener("keydown", (event) => {
        const step = { ArrowLeft: -STEP, ArrowRight: STEP }[event.key];
        if (step !== undefined && !event.ctrlKey && now.info !== null) {
            event.preventDefault();
            const from = aimed === null ? now.position : aimed;
            aim(Math.max(0, Math.min(from + step, now.info.duration)));
            settle();
        }
    });
}

function fill() {
    const { info, status, track } = now;
    const playing = status === "playing" || status === "loading";
    const toggleButton = byId("toggle");
    replace(toggleButton, icon(playing ? "pause" : "play"));
    toggleButton.setAttribute("aria-label", playing ? "Pause" : "Play");
    toggleButton.classList.toggle("busy", status === "loading");
    byId("bar").classList.toggle("idle", info === null);
    slider().disabled = info === null;
    slider().max = String(info ? info.duration : 1);
    byId("length").textContent = info ? clock(info.duration) : "";
    showImage(byId("bar-cover"), info ? info.cover : "", info ? info.album : "");
    replace(byId("bar-text"), info
        ? [h("button", { type: "button", class: "text-button bar-title", onclick: () => openAlbum(track) },
            h("span", { class: "two-lines" }, named(info.title))),
        h("button", { type: "button", class: "text-button bar-artists", onclick: () => openArtist(track) },
            h("span", { class: "two-lines" }, named(info.artists.join(", "))))]
        : h("span", { class: "bar-artists" }, "Nothing is playing"));
    fillStar();
}

function fillStar() {
    const star = byId("bar-star");
    star.hidden = now.track === null;
    star.setAttribute("aria-pressed", String(now.track !== null && now.track.isStarred()));
}

function fillModes() {
    byId("shuffle").setAttribute("aria-pressed", String(queue.shuffled));
    const repeat = byId("repeat");
    const label = { off: "Repeat", all: "Repeat: all", one: "Repeat: this track" }[queue.repeat];
    repeat.setAttribute("aria-pressed", String(queue.repeat !== "off"));
    repeat.setAttribute("aria-label", label);
    repeat.title = label;
    repeat.classList.toggle("one", queue.repeat === "one");
}

function place() {
    const position = aimed === null ? now.position : aimed;
    const duration = now.info ? now.info.duration : 0;
    slider().value = String(position);
    slider().style.setProperty("--part", String(duration > 0 ? position / duration : 0));
    slider().setAttribute("aria-valuetext", `${clock(position)} of ${clock(duration)}`);
    byId("position").textContent = now.info ? clock(position) : "";
}
