// Searching and browsing the demo library: every member of the results, and wrong arguments.
const missing = "Failed to retrieve object from Spotify";
const { Search, Albumbrowse, Artistbrowse, Toplistbrowse } = Spotify;
const names = (count, at) => Array.from({ length: count }, (_, i) => at(i).name());
let track;

// Both objects of a query: what create answered, and what the function got.
function ask(start) {
    return new Promise((resolve) => {
        const lent = start((result) => resolve([lent, result]));
    });
}
const search = (query, type = 0) => ask((done) =>
    Search.create(query, 0, 20, 0, 20, 0, 20, 0, 20, type, done));

test.run(
    () => {
        test.throws(() => Search.create("a", 0, 1, 0, 1, 0, 1, 0, 1, 0, () => 0),
            "Spotify not initialized correctly");
        test.throws(() => Toplistbrowse.create(0, 0, "", () => 0),
            "Spotify not initialized correctly");
        test.throws(() => Search.create("a", 0, 1, 0, 1, 0, 1, 0, 1, 0), "Not enough arguments");
        test.throws(() => Search.create(1, 0, 1, 0, 1, 0, 1, 0, 1, 0, () => 0), "Not a string");
        test.throws(() => Search.create("a", 0, "1", 0, 1, 0, 1, 0, 1, 0, () => 0), "Not a number");
        test.throws(() => Search.create("a", 0, 1, 0, 1, 0, 1, 0, 1, 0, "f"), "Not an object");
        test.throws(() => Albumbrowse.create({}, () => 0), "Not a jspp interface");
        test.throws(() => Artistbrowse.create(5, 0, () => 0), "Not an interface");
        test.throws(() => Albumbrowse.create(Spotify.Session, () => 0),
            "Parameter is not of the requested interface type.");
    },
    async () => {
        test.same(await test.login(), 0, "logged in");
        track = await test.loaded(Spotify.Track.create(LINKS["Fog Signal"]));
        const [lent, found] = await search("low tide");
        test.ok(lent !== found, "the function gets a wrapper of its own");
        test.ok(lent.isLoaded() && lent.numTracks() === found.numTracks(), "of the same result");
        test.same(found.error(), 0, "no error");
        test.same(found.query(), "low tide", "the query");
        test.same(found.didYouMean(), "", "nothing else was meant");
        test.same(names(found.numTracks(), (i) => found.track(i)).sort().join(),
            "Fog Signal,Ice on the Pilings,Salt Wind", "tracks by artist");
        test.same(found.totalTracks(), 3, "all tracks");
        test.same(names(found.numArtists(), (i) => found.artist(i)).join(), "Low Tide Quartet",
            "artists");
        test.same(found.totalArtists(), 1, "all artists");
        test.ok(names(found.numAlbums(), (i) => found.album(i)).includes("Harbour Weather"), "albums");
        test.same(found.totalAlbums(), found.numAlbums(), "all albums");
        test.same(found.numPlaylists() + found.totalPlaylists(), 0, "no playlists");
        test.same(found.playlistName(0) + found.playlistUri(0) + found.playlistImageUri(0), "",
            "none has a text");
        test.throws(() => found.playlist(0), missing);
        test.throws(() => found.track(3), missing, "one past the end");
        test.throws(() => found.artist(-1), missing, "before the start");
        test.throws(() => found.album(), "Not enough arguments");
        test.throws(() => found.track("0"), "Not a number");
        test.same(found.release(), undefined, "release");
        test.same(found.track(0.9).name(), found.track(0).name(), "and nothing is lost");
        test.same(typeof found.create, "function", "a result searches, too");
    },
    async () => {
        const [, suggested] = await search("lant", 1);
        test.ok(names(suggested.numAlbums(), (i) => suggested.album(i))
            .includes("Lanterns on the Water"), "a suggestion while one types");
        const [, filtered] = await search("artist:ferries year:2009");
        test.same(filtered.totalTracks(), 4, "filters");
        const [, mistyped] = await search("harbor wether");
        test.ok(mistyped.didYouMean().toLowerCase().includes("harbour"), "did you mean");
        for (const text of ["", "\"", "a OR", "NEAR(", "*", "year:x-", "\u266b\ud83d\ude00", "'; --",
            "x".repeat(10000)]) {
            const [, odd] = await search(text);
            test.same(odd.error(), 0, `any text is a query: ${escape(text.slice(0, 20))}`);
        }
    },
    async () => {
        const album = track.album();
        const [, browsed] = await ask((done) => Albumbrowse.create(album, done));
        test.ok(browsed.isLoaded() && browsed.error() === 0, "an album is browsed");
        test.same(browsed.album().name(), album.name(), "the album");
        test.same(browsed.artist().name(), "Low Tide Quartet", "its artist");
        test.same(names(browsed.numTracks(), (i) => browsed.track(i)).join(), "Fog Signal,Salt Wind",
            "its tracks in order");
        test.same(browsed.copyright(browsed.numCopyrights()), "", "no copyright lies past the end");
        test.throws(() => browsed.track(2), missing);
        const artist = track.artist(0);
        const browse = (type) => ask((done) => Artistbrowse.create(artist, type, done));
        const types = Spotify.SP_ARTISTBROWSE_TYPE;
        const [, full] = await browse(types.SP_ARTISTBROWSE_FULL);
        test.same(full.artist().name(), "Low Tide Quartet", "an artist is browsed");
        test.ok(full.isLoaded() && full.error() === 0 && full.numTophitTracks() > 0 &&
            full.tophitTrack(0).name().length > 0, "top tracks");
        test.same(full.album(0).name(), "Harbour Weather", "own albums first");
        const [, noTracks] = await browse(types.SP_ARTISTBROWSE_NO_TRACKS);
        test.same(noTracks.numTophitTracks(), 0, "without tracks");
        const [, noAlbums] = await browse(types.SP_ARTISTBROWSE_NO_ALBUMS);
        test.same(noAlbums.numAlbums(), 0, "without albums");
        test.throws(() => noAlbums.album(0), missing);
        browsed.release();
        full.release();
    },
    async () => {
        track.setStarred(true);
        const top = (type, region, user) => ask((done) =>
            Toplistbrowse.create(type, region, user, done));
        const { SP_TOPLIST_TYPE_ARTISTS, SP_TOPLIST_TYPE_TRACKS, SP_TOPLIST_TYPE_ALBUMS } =
            Spotify.SP_TOPLIST_TYPE;
        const { SP_TOPLIST_REGION_EVERYWHERE, SP_TOPLIST_REGION_USER } = Spotify.SP_TOPLIST_REGION;
        const [, tracks] = await top(SP_TOPLIST_TYPE_TRACKS, SP_TOPLIST_REGION_USER, "listener");
        test.same(tracks.track(0).name(), "Fog Signal", "a user's star counts");
        test.ok(tracks.isLoaded() && tracks.error() === 0 && tracks.numTracks() >= 1, "top tracks");
        const [, artists] = await top(SP_TOPLIST_TYPE_ARTISTS, SP_TOPLIST_REGION_EVERYWHERE, "");
        test.same(artists.artist(0).name(), "Low Tide Quartet", "top artists everywhere");
        test.ok(artists.numArtists() >= 1 && artists.numTracks() === 0, "and nothing else");
        const [, albums] = await top(SP_TOPLIST_TYPE_ALBUMS, Spotify.Session.userCountry(), "");
        test.same(albums.album(0).name(), "Harbour Weather", "top albums of a country");
        test.ok(albums.numAlbums() >= 1, "are counted");
        test.throws(() => albums.artist(0), missing);
        test.same(albums.release(), undefined, "release");
        track.setStarred(false);
    },
    async () => {
        // The page keeps its function alone, and what it asked for last is never answered to it.
        const [, found] = await search("fog");
        let answered = 0;
        for (let i = 0; i < 20; ++i) {
            Search.create(`fog ${i}`, 0, 1, 0, 0, 0, 0, 0, 0, 0, () => { ++answered; });
            gc();
        }
        while (answered < 20) {
            await test.next(Spotify.Sonolet, "TrackProgress");
        }
        test.same(answered, 20, "each query is answered once");
        const out = test.next(Spotify.Session, "LoggedOut");
        Spotify.Session.logout();
        test.throws(() => found.track(0), missing, "results are cleared at logout");
        await out;
    });
