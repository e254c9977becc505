// Prints the tree of a user's folders and playlists, then every change that happens to them.
// Change them from another shell, for example: ./sonolet playlist new "Evening"

const USER = { name: "listener", password: "listener" };

const session = Spotify.Session;
const types = Spotify.SP_PLAYLIST_TYPE;
const check = (/** @type {string} */ what, /** @type {Spotify.ErrorCode} */ error) => {
    if (error !== Spotify.SP_ERROR.SP_ERROR_OK) {
        throw new Error(`${what}: ${Spotify.errorMessage(error)}`);
    }
};
/** @type {(keyof Spotify.PlaylistcontainerEvents)[]} */
const containerEvents = ["PlaylistAdded", "PlaylistRemoved", "PlaylistMoved", "ContainerLoaded"];
/** @type {(keyof Spotify.PlaylistEvents)[]} */
const playlistEvents = ["TracksAddedEvent", "TracksRemoved", "TracksMoved", "PlaylistRenamed",
    "PlaylistStateChanged", "PlaylistUpdateInProgress", "PlaylistMetadataUpdated",
    "TrackCreatedChanged", "TrackSeenChanged", "DescriptionChanged", "ImageChanged",
    "TrackMessageChanged", "SubscribersChanged"];
const watched = new Map(); // by link: a playlist's wrapper keeps its listeners

session.addEventListener("LoggedIn", (error) => {
    check("login", error);
    const container = session.Playlistcontainer();
    for (const event of containerEvents) {
        container.addEventListener(event, (/** @type {any[]} */ ...[, ...rest]) => {
            console.log(`${event}(${rest.map(describe).join(", ")})`);
            rest.filter(isPlaylist).forEach(watch);
        });
    }
    if (container.isLoaded()) {
        printTree(container);
    } else {
        container.addEventListener("ContainerLoaded", () => printTree(container));
    }
});

/** @param {Spotify.Playlistcontainer} container */
function printTree(container) {
    let depth = 1;
    const print = (/** @type {string} */ text) => console.log("  ".repeat(depth) + text);
    console.log(`playlists of ${container.owner().canonicalName()}:`);
    for (let i = 0; i < container.numPlaylists(); ++i) {
        switch (container.playlistType(i)) {
        case types.SP_PLAYLIST_TYPE_START_FOLDER:
            print(`${container.playlistFolderName(i)}/`);
            ++depth;
            break;
        case types.SP_PLAYLIST_TYPE_END_FOLDER:
            --depth;
            break;
        case types.SP_PLAYLIST_TYPE_PLAYLIST: {
            const playlist = container.playlist(i);
            print(`${playlist.name()} (${playlist.numTracks()} tracks)  ${playlist.uri()}`);
            watch(playlist);
            break;
        }
        default:
            print("(unknown)");
        }
    }
    console.log("waiting for changes");
}

/** @param {Spotify.Playlist} playlist */
function watch(playlist) {
    // A folder's ends have a handle that never loads and has no link.
    if (!playlist.isLoaded() || watched.has(playlist.uri())) {
        return;
    }
    watched.set(playlist.uri(), playlist);
    for (const event of playlistEvents) {
        playlist.addEventListener(event, (/** @type {any[]} */ ...[, ...rest]) => {
            console.log(`${event}("${playlist.name()}"${rest.map((value) => `, ${describe(value)}`).join("")})`);
        });
    }
}

/** @param {any} value */
function isPlaylist(value) {
    return typeof value === "object" && value !== null && "numTracks" in value;
}

/**
 * @param {any} value what an event brought
 * @returns {string}
 */
function describe(value) {
    if (isPlaylist(value)) {
        return value.isLoaded() ? `playlist "${value.name()}"` : "folder";
    }
    if (typeof value !== "object" || value === null) {
        return JSON.stringify(value);
    }
    if ("length" in value) {
        return `[${Array.from({ length: value.length }, (_, i) => describe(value.item(i))).join(", ")}]`;
    }
    if ("canonicalName" in value) {
        return `user ${value.canonicalName()}`;
    }
    return "name" in value ? `"${value.name()}"` : String(value);
}

session.create(Spotify.SessionConfig);
check("login", session.login(USER.name, USER.password, false, ""));
