// @ts-check

import { counted, h, icon, named, put } from "../page/dom.js";
import { list, path } from "../music/library.js";
import { empty } from "./parts.js";

/**
 * Everybody else, or what one of them has published.
 * @param {import("../page/router.js").View} view
 */
export async function peopleView({ root, scope, args, title }) {
    const { Session } = Spotify;
    if (args.length === 0) {
        title("People");
        put(root, h("h1", { class: "list-title" }, "People"));
        const names = list(Session.numFriends(), (i) => Session.friend(i).canonicalName());
        put(root, names.length === 0
            ? empty("people", "Nobody else", "Other accounts of this service are listed here.")
            : h("div", { class: "menu" }, names.map((name) => h("a", { class: "menu-item",
                href: path("people", name), "data-key": name }, icon("people"), named(name)))));
        return;
    }
    const [name] = args;
    const container = Session.publishedContainerForUserCreate(name);
    const lists = h("div", { class: "menu" });
    const fill = () => {
        const { SP_PLAYLIST_TYPE_PLAYLIST } = Spotify.SP_PLAYLIST_TYPE;
        lists.textContent = "";
        put(lists, item(path("starred", name), "star", "Starred", ""));
        for (let i = 0; i < container.numPlaylists(); ++i) {
            if (container.playlistType(i) === SP_PLAYLIST_TYPE_PLAYLIST) {
                const playlist = container.playlist(i);
                put(lists, item(path("playlist", playlist.uri()), "list", playlist.name(),
                    counted(playlist.numTracks(), "track")));
            }
        }
    };
    title(name);
    put(root, h("h1", { class: "list-title" }, named(name)), lists);
    scope.listen(container, "ContainerLoaded", fill);
    fill();
}

/** @param {string} href @param {string} name @param {string} label @param {string} note */
function item(href, name, label, note) {
    return h("a", { class: "menu-item", href, "data-key": href },
        icon(name), named(label), h("span", { class: "menu-note" }, note));
}
