// @ts-check

import { counted, h, named, put, quoted, replace } from "../page/dom.js";
import { ImageSize, albumOf, attempt, coverId, list, mayChange, ownName, path, shownName } from "../music/library.js";
import { notify } from "../page/notices.js";
import { debounce } from "../page/scope.js";
import { PlaylistTracks, SortedTracks } from "../music/tracklist.js";
import { cover, empty, hero, mosaic, playButtons, button } from "./parts.js";
import { playAsked, playFrom, sortBar, trackTable } from "./track-table.js";

/** @typedef {import("../page/router.js").View} View */

/** @param {View} view */
export async function playlistView(view) {
    const [link] = view.args;
    const playlist = attempt(() => Spotify.Playlist.create(link), null);
    if (playlist === null) {
        throw new Error("There is no playlist at this link, or you may not see it.");
    }
    show(view, playlist, "Playlist", playlist.name(), "Add tracks with the menu of any track.");
}

/** @param {View} view */
export async function starredView(view) {
    const name = view.args[0] || ownName();
    const own = name === ownName();
    const playlist = own ? Spotify.Session.starredCreate()
        : Spotify.Session.starredForUserCreate(name);
    show(view, playlist, own ? "Yours" : name, "Starred",
        own ? "The star beside any track puts it here." : `${name} has starred nothing yet.`);
}

/** @param {View} view */
export async function inboxView(view) {
    show(view, Spotify.Session.inboxCreate(), "Yours", "Inbox", "What others send to you comes here.");
}

/**
 * @param {View} view
 * @param {Spotify.Playlist} playlist
 * @param {string} kind
 * @param {string} name until it is renamed
 * @param {string} hint for an empty list
 */
function show({ root, scope, title, options }, playlist, kind, name, hint) {
    const tracks = new SortedTracks(new PlaylistTracks(playlist));
    scope.onClose(() => tracks.close());
    const head = h("div");
    const rest = h("div");
    put(root, head, rest);
    /** @type {Set<number>} */
    let fresh = new Set();
    const table = trackTable({ tracks, scope, label: name, fresh: (index) => fresh.has(tracks.place(index)),
        note: (index) => playlist.trackMessage(tracks.place(index)) });
    const sorting = sortBar(tracks);
    const lately = h("p", { class: "lately", role: "status" });
    const say = debounce(4000, () => {
        replace(lately);
        fresh = new Set();
    });
    const tell = (/** @type {string} */ what) => {
        replace(lately, what);
        say();
    };
    scope.onClose(say.cancel);

    let image = playlist.getImage();
    const fill = () => {
        const current = kind === "Playlist" ? playlist.name() : name;
        title(current);
        const focused = head.contains(document.activeElement);
        replace(head, hero({
            picture: picture(playlist, image, current), kind, title: current,
            facts: facts(playlist), more: [description(playlist), lately],
            actions: tracks.length === 0 ? []
                : playButtons(tracks, (index, shuffled) => playFrom(tracks, index, shuffled))
                    .concat(kind === "Playlist" ? addButton(playlist) : []),
        }));
        if (table.length !== tracks.length) { // the playlist has loaded
            table.refresh(tracks.length);
        }
        if (tracks.length === 0) {
            replace(rest, empty("list", "Nothing here yet", hint));
        } else if (!table.element.isConnected) { // to put it there again would take the focus from its row
            replace(rest, sorting, table.element);
            table.draw();
        }
        if (focused) {
            const first = /** @type {HTMLElement | null} */ (head.querySelector("button"));
            first && first.focus({ preventScroll: true }); // the rows may be far below
        }
    };
    const later = debounce(50, fill);
    scope.onClose(later.cancel);
    scope.on(tracks.base.changed, (change) => {
        if (change !== null) {
            const added = change.added.length;
            fresh = new Set(change.added);
            tell(added > 0 ? `Just now: ${counted(added, "track")} added`
                : change.reordered ? "Just now: another order" : "Just now: fewer tracks");
        }
    });
    scope.on(tracks.changed, later);
    for (const event of ["PlaylistRenamed", "DescriptionChanged", "PlaylistStateChanged"]) {
        scope.listen(playlist, event, later);
    }
    scope.listen(playlist, "ImageChanged", (_, id) => {
        image = id;
        fill();
    });
    fill();
    playAsked(options, tracks);
}

/** @param {Spotify.Playlist} playlist */
function facts(playlist) {
    const owner = attempt(() => playlist.owner(), null);
    const name = owner ? owner.canonicalName() : "";
    return [
        owner !== null && (name === ownName() ? named(shownName())
            : h("a", { href: path("people", name) }, named(owner.displayName() || name))),
        owner !== null && " · ",
        counted(playlist.numTracks(), "track"),
        playlist.isCollaborative() && " · everyone may add",
    ];
}

/** @param {Spotify.Playlist} playlist */
function description(playlist) {
    const text = playlist.getDescription();
    return text !== "" && h("p", { class: "description two-lines" }, named(text));
}

/**
 * The playlist's own picture, else covers of its first tracks.
 * @param {Spotify.Playlist} playlist
 * @param {string} own image id
 * @param {string} name
 */
function picture(playlist, own, name) {
    if (own !== "") {
        return cover(own, name, "large");
    }
    const few = Math.min(playlist.numTracks(), 16);
    const covers = mosaic(list(few, (i) =>
        coverId(attempt(() => albumOf(playlist.track(i)), null), ImageSize.normal)), name);
    covers.classList.add("large");
    return covers;
}

/**
 * For a playlist that is not in the user's library.
 * @param {Spotify.Playlist} playlist
 */
function addButton(playlist) {
    const container = Spotify.Session.Playlistcontainer();
    const { SP_PLAYLIST_TYPE_PLAYLIST } = Spotify.SP_PLAYLIST_TYPE;
    const link = playlist.uri();
    const there = mayChange(playlist) || list(container.numPlaylists(), (i) => i).some((i) =>
        container.playlistType(i) === SP_PLAYLIST_TYPE_PLAYLIST && container.playlist(i).uri() === link);
    return there ? [] : [button("plus", "Keep", () => {
        container.addPlaylist(playlist);
        notify(`${quoted(playlist.name())} is among your playlists.`);
    })];
}
