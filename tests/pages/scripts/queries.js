// What the demo library answers to searches and browses.
const { Search, Albumbrowse, Artistbrowse, Toplistbrowse } = Spotify;
const names = (count, at) => Array.from({ length: count }, (_, i) => at(i).name()).join();
const ask = (start) => new Promise((resolve) => start(resolve));
const search = (query, type = 0) => ask((done) =>
    Search.create(query, 0, 20, 0, 20, 0, 20, 0, 20, type, done));
let track;

test.run(
    async () => {
        test.same(await test.login(), 0, "logged in");
        track = await test.loaded(Spotify.Track.create(LINKS["Fog Signal"]));
        const found = await search("low tide");
        test.same(names(found.numTracks(), (i) => found.track(i)).split(",").sort().join(),
            "Fog Signal,Ice on the Pilings,Salt Wind", "tracks by artist");
        test.same(names(found.numArtists(), (i) => found.artist(i)), "Low Tide Quartet", "artists");
        test.ok(names(found.numAlbums(), (i) => found.album(i)).includes("Harbour Weather"), "albums");
        test.same([found.totalTracks(), found.totalArtists(), found.totalAlbums()].join(),
            `3,1,${found.numAlbums()}`, "totals");
        const suggested = await search("lant", 1);
        test.ok(names(suggested.numAlbums(), (i) => suggested.album(i))
            .includes("Lanterns on the Water"), "a suggestion while one types");
        test.same((await search("artist:ferries year:2009")).totalTracks(), 4, "filters");
        test.ok((await search("harbor wether")).didYouMean().toLowerCase().includes("harbour"),
            "did you mean");
        for (const text of ["", "\"", "a OR", "\u266b\ud83d\ude00", "'; --", "x".repeat(10000)]) {
            test.same((await search(text)).error(), 0,
                `any text is a query: ${escape(text.slice(0, 20))}`);
        }
    },
    async () => {
        const album = await ask((done) => Albumbrowse.create(track.album(), done));
        test.same(names(album.numTracks(), (i) => album.track(i)), "Fog Signal,Salt Wind",
            "an album's tracks in order");
        const artist = await ask((done) => Artistbrowse.create(track.artist(0), 0, done));
        test.ok(artist.numTophitTracks() > 0, "top tracks");
        test.same(artist.album(0).name(), "Harbour Weather", "own albums first");
        track.setStarred(true);
        const top = (type, region, user) => ask((done) =>
            Toplistbrowse.create(type, region, user, done));
        const tracks = await top(2, Spotify.SP_TOPLIST_REGION.SP_TOPLIST_REGION_USER, "listener");
        test.same(tracks.track(0).name(), "Fog Signal", "a user's star counts");
        const artists = await top(0, Spotify.SP_TOPLIST_REGION.SP_TOPLIST_REGION_EVERYWHERE, "");
        test.same(artists.artist(0).name(), "Low Tide Quartet", "top artists everywhere");
        const albums = await top(1, Spotify.Session.userCountry(), "");
        test.same(albums.album(0).name(), "Harbour Weather", "top albums of a country");
        track.setStarred(false);
    });
