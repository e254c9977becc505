// @ts-check
// The user's playlists and folders. The interface lets a page add a playlist that exists, by its
// link; what is made, renamed, moved or removed elsewhere shows here as it happens.

import { openDialog } from "../page/dialog.js";
import { byId, h, icon, put, quoted, replace } from "../page/dom.js";
import { attempt, list, path, watchStars } from "../music/library.js";
import { notify } from "../page/notices.js";
import { parseAddress } from "../page/router.js";
import { debounce } from "../page/scope.js";
import { VirtualList } from "../page/virtual-list.js";

/** @typedef {import("../page/scope.js").Scope} Scope */

/**
 * A line of the tree.
 * @typedef {object} Entry
 * @property {number} index   in the container
 * @property {number} depth
 * @property {"list" | "folder" | "lost"} kind
 * @property {number} [folder]  its id
 */

/**
 * Folders that are shut, by id.
 * @type {Set<number>}
 */
const shut = new Set();

/** @param {Scope} scope */
export function fillSidebar(scope) {
    watchStars(scope);
    const container = Spotify.Session.Playlistcontainer();
    /** @type {Entry[]} */
    let entries = [];
    const tree = new VirtualList({
        scroller: byId("places"), scope, label: "Playlists", role: "tree", length: 0,
        row: (index, rowScope) => row(container, entries[index], rowScope, build),
    });
    const build = () => {
        entries = readTree(container);
        if (entries.length > 0) {
            if (!tree.element.isConnected) {
                replace(byId("lists"), tree.element);
            }
        } else {
            replace(byId("lists"), container.isLoaded()
                ? h("p", { class: "hint" }, "No playlists yet. The plus sign adds one by its link.")
                : h("p", { class: "hint" }, "Loading …"));
        }
        tree.refresh(entries.length);
    };
    const later = debounce(50, build);
    scope.onClose(later.cancel);
    for (const event of ["PlaylistAdded", "PlaylistRemoved", "PlaylistMoved", "ContainerLoaded"]) {
        scope.listen(container, event, later);
    }
    scope.listen(byId("add-list"), "click", () => askForLink(container));
    scope.onClose(() => replace(byId("lists")));
    build();
}

/** @param {Spotify.Playlistcontainer} container @returns {Entry[]} */
function readTree(container) {
    const types = Spotify.SP_PLAYLIST_TYPE;
    /** @type {Entry[]} */
    const entries = [];
    let depth = 0;
    let hidden = 0; // how many shut folders this place is in
    for (const index of list(container.numPlaylists(), (i) => i)) {
        const type = container.playlistType(index);
        const folder = container.playlistFolderId(index);
        if (type === types.SP_PLAYLIST_TYPE_END_FOLDER) {
            --depth;
            hidden -= shut.has(folder) ? 1 : 0;
            continue;
        }
        if (hidden === 0) {
            const kind = type === types.SP_PLAYLIST_TYPE_PLAYLIST ? "list"
                : type === types.SP_PLAYLIST_TYPE_START_FOLDER ? "folder" : "lost";
            entries.push({ index, depth, kind, folder });
        }
        if (type === types.SP_PLAYLIST_TYPE_START_FOLDER) {
            ++depth;
            hidden += shut.has(folder) ? 1 : 0;
        }
    }
    return entries;
}

/**
 * @param {Spotify.Playlistcontainer} container
 * @param {Entry} entry
 * @param {Scope} scope of the row
 * @param {() => void} rebuild
 */
function row(container, { index, depth, kind, folder = 0 }, scope, rebuild) {
    const line = h("a", { class: `tree-row ${kind}`, role: "treeitem", "aria-level": depth + 1 });
    line.style.setProperty("--depth", String(Math.min(depth, 5)));
    if (kind === "lost") {
        put(line, icon("list"), h("span", { class: "tree-name" }, "Not available any more"));
        return line;
    }
    if (kind === "folder") {
        const flip = () => {
            shut.has(folder) ? shut.delete(folder) : shut.add(folder);
            rebuild();
        };
        line.setAttribute("aria-expanded", String(!shut.has(folder)));
        put(line, icon("folder"),
            h("bdi", { class: "tree-name two-lines" }, container.playlistFolderName(index)), icon("chevron"));
        line.addEventListener("click", flip);
        line.addEventListener("keydown", (event) => {
            if (event.key === "Enter") {
                flip();
            }
        });
        return line;
    }
    const playlist = container.playlist(index);
    const uri = playlist.uri();
    const name = h("bdi", { class: "tree-name two-lines" });
    const fill = () => {
        name.textContent = playlist.name() || (playlist.isLoaded() ? "(no name)" : "…");
    };
    const mark = () => {
        if (parseAddress().args[0] === uri) {
            line.setAttribute("aria-current", "page");
        } else {
            line.removeAttribute("aria-current");
        }
    };
    line.href = path("playlist", uri);
    put(line, icon("list"), name);
    scope.listen(playlist, "PlaylistRenamed", fill);
    scope.listen(playlist, "PlaylistStateChanged", fill);
    scope.listen(window, "hashchange", mark);
    fill();
    mark();
    return line;
}

/** @param {Spotify.Playlistcontainer} container */
function askForLink(container) {
    openDialog("Add a playlist", (body, close) => {
        const field = h("input", { type: "text", id: "list-link", autocomplete: "off",
            placeholder: "spotify:user:…:playlist:…", "aria-describedby": "list-error" });
        const error = h("p", { class: "error", id: "list-error", role: "alert" });
        put(body, h("form", { class: "form", onsubmit: (/** @type {Event} */ event) => {
            event.preventDefault();
            const playlist = attempt(() => Spotify.Playlist.create(field.value.trim()), null);
            if (playlist === null) {
                error.textContent = "There is no playlist at this link, or you may not see it.";
                field.focus();
                return;
            }
            const before = container.numPlaylists();
            container.addPlaylist(playlist);
            close();
            notify(`${quoted(playlist.name())} is among your playlists${
                container.numPlaylists() > before ? "" : " already"}.`);
        } },
        h("label", { for: "list-link" }, "Link of the playlist"), field, error,
        h("button", { class: "button primary" }, "Add")));
    });
}
