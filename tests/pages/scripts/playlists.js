// A person's lists: starred, the container, and the events of a change.
const missing = "Failed to retrieve object from Spotify";
const session = Spotify.Session;

const loadedList = async (list) => {
    while (!list.isLoaded()) {
        await test.next(Spotify.Sonolet, "TrackProgress");
    }
    return list;
};

test.run(
    async () => {
        for (const member of ["Playlistcontainer", "starredCreate", "inboxCreate",
            "starredForUserCreate", "publishedContainerForUserCreate"]) {
            test.throws(() => session[member](), "Spotify is not initialized", `${member} too early`);
        }
        test.same(await test.login(), 0, "logged in");
        test.throws(() => session.starredForUserCreate(), "Not enough arguments");
        test.throws(() => session.publishedContainerForUserCreate(5), "Not a string");
        test.throws(() => Spotify.Playlist.create(5), "Not a string");
        test.throws(() => Spotify.Playlist.create("nonsense"), missing);
    },
    async () => {
        const track = await test.loaded(Spotify.Track.create(LINKS["Fog Signal"]));
        const starred = await loadedList(session.starredCreate());
        test.same(starred.numTracks(), 0, "nothing is starred");
        test.throws(() => starred.track(0), missing, "no track");
        const byAttribute = new Promise((resolve) => {
            starred.onTracksAdded = (...values) => resolve(values);
        });
        track.setStarred(true);
        const [list, tracks, position] = await byAttribute;
        test.same(list, starred, "the event brings its list");
        test.same(tracks.length, 1, "and what was added");
        test.same(tracks.item(0).name(), "Fog Signal", "by function");
        test.same(tracks[0].name(), "Fog Signal", "and by index");
        test.same(position, 0, "at its place");
        test.throws(() => tracks.item(1), "Out of bounds array access");
        test.throws(() => tracks.item(-1), "Out of bounds array access");
        test.throws(() => tracks.item(), "Not enough arguments");
        test.throws(() => tracks.nothing, "bad_lexical_cast");
        test.same(starred.numTracks(), 1, "the list has it");
        test.same(starred.track(0).name(), "Fog Signal", "the track");
        test.ok(starred.trackCreateTime(0) > 1e9, "with a time in seconds");
        test.same(starred.trackCreator(0).canonicalName(), "listener", "its creator");
        test.same(starred.owner().canonicalName(), "listener", "the owner");
        test.same(starred.placeholderUri(0), LINKS["Fog Signal"], "its link");
        test.ok(/^spotify:user:listener:/.test(starred.uri()), "the list's link");
        test.same(Spotify.Playlist.create(starred.uri()).numTracks(), 1, "which finds it");
        test.same(starred.getImage(), "", "no picture is an empty text");
        test.same(starred.trackMessage(0) + starred.getDescription(), "", "no texts");
        test.ok([starred.isInRam(), starred.hasPendingChanges(), starred.isCollaborative(),
            starred.trackSeen(0)].every((flag) => typeof flag === "boolean"), "flags");
        test.same(typeof starred.numSubscribers(), "number", "subscribers are counted");
        test.same(starred.subscribers().length, starred.numSubscribers(), "and named");
        test.throws(() => starred.setInRam("yes"), "Not a boolean");
        test.throws(() => starred.trackSetSeen(0), "Not enough arguments");
        test.throws(() => starred.addTracks(track.album(), 0),
            "Parameter is not of the requested interface type.");
        test.throws(() => starred.addTracks(track), "Not enough arguments");
        test.same(starred.release(), undefined, "release");
        const removed = test.next(starred, "TracksRemoved");
        track.setStarred(false);
        const [, positions] = await removed;
        test.same(positions.length + positions[0], 1, "a removal brings the positions");
    },
    async () => {
        const container = session.Playlistcontainer();
        await loadedList(container);
        test.same(container.owner().canonicalName(), "listener", "the container's owner");
        const before = container.numPlaylists();
        test.throws(() => container.playlist(before), missing, "one past the end");
        test.throws(() => container.playlist(), "Not enough arguments");
        test.throws(() => container.addPlaylist(container),
            "Parameter is not of the requested interface type.");
        test.same(container.playlistFolderName(before), "", "no folder, no name");
        let refusal = "";
        try {
            container.onPlaylistMoved = () => 0;
        } catch (error) {
            refusal = error.message;
        }
        test.ok(refusal.includes("onPlaylistMoved"), "the attribute is read-only");
        test.same(container.onPlaylistMoved, null, "and it stays empty");
        test.same(container.release(), undefined, "release");
        const out = test.next(session, "LoggedOut");
        session.logout();
        await out;
        test.same(container.owner().canonicalName(), "listener", "a container survives logout");
    });
