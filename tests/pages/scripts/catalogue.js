// Tracks, albums and artists from links, against the demo library.
const missing = "Failed to retrieve object from Spotify";
let track;

test.run(
    async () => {
        test.same(await test.login(), 0, "logged in");
        track = await test.loaded(Spotify.Track.create(LINKS["The Far Bank"]));
        test.same(track.name(), "The Far Bank", "title");
        test.same(track.disc(), 2, "disc");
        test.same(track.index(), 1, "index");
        test.same(track.error(), 0, "no error");
        test.ok(track.duration() > 8000 && track.duration() < 20000, "duration in milliseconds");
        test.ok(track.popularity() >= 0 && track.popularity() <= 100, "popularity");
        test.same(track.isLocal(), false, "not a local file");
        test.same(track.isPlaceholder(), false, "no placeholder");
        test.same(track.getAvailability(), true, "available");
        test.same(track.numArtists(), 1, "one artist");
        test.same(track.artist(0).name(), "The Paper Ferries", "its name");
        test.same(track.artist(0.9).name(), "The Paper Ferries", "indexes are truncated");
        test.throws(() => track.artist(1), missing, "one past the end");
        test.throws(() => track.artist(-1), missing, "before the start");
        test.throws(() => track.artist(NaN / 0 || 1e300), missing, "far away");
        test.throws(() => track.artist(), "Not enough arguments");
        test.throws(() => track.artist("0"), "Not a number");
    },
    () => {
        const album = track.album();
        test.same(album.name(), "Lanterns on the Water", "album");
        test.same(album.year(), 2009, "year");
        test.same(album.albumType(), Spotify.SP_ALBUMTYPE.SP_ALBUMTYPE_ALBUM, "album type");
        test.ok(album.isLoaded() && album.isAvailable(), "album is there");
        test.same(album.artist().name(), "The Paper Ferries", "album artist");
        const ids = [0, 1, 2].map((size) => album.cover(size));
        for (const id of ids.concat(track.artist(0).portrait(0))) {
            test.ok(/^[A-Za-z0-9+/]{27}=$/.test(id), "an image id is 20 bytes in Base64");
        }
        test.throws(() => album.cover(), "Not enough arguments");
        test.throws(() => album.cover("0"), "Not a number");
        test.throws(() => track.artist(0).portrait(true), "Not a number");
    },
    async () => {
        const sampler = (await test.loaded(Spotify.Track.create(LINKS["Home by Dark"]))).album();
        test.same(sampler.albumType(), Spotify.SP_ALBUMTYPE.SP_ALBUMTYPE_COMPILATION, "compilation");
        const again = Spotify.Track.create(LINKS["The Far Bank"]);
        test.ok(again !== track && again.name() === track.name(), "one track, two wrappers");
        for (const [kind, link] of [
            [Spotify.Track, "spotify:album:4SprhmPLcL2HXbgohKWAmd"],
            [Spotify.Track, "nonsense \u0000 \ud800"],
            [Spotify.Album, LINKS["The Far Bank"]],
            [Spotify.Artist, ""],
        ]) {
            test.throws(() => kind.create(link), missing, `not for this kind: ${escape(link)}`);
        }
        test.throws(() => Spotify.Album.create(5), "Not a string");
        test.throws(() => Spotify.Artist.create(), "Not enough arguments");
        const unknown = Spotify.Track.create("spotify:track:0000000000000000000001");
        test.same(unknown.name(), "", "a track that nobody has is without a name");
        test.throws(() => unknown.album(), missing, "and without an album");
    },
    () => {
        test.same(track.isStarred(), false, "not starred");
        test.same(track.setStarred(true), undefined, "a star");
        test.same(track.isStarred(), true, "starred");
        test.same(Spotify.Track.create(LINKS["The Far Bank"]).isStarred(), true, "for all wrappers");
        track.setStarred(false);
        test.same(track.isStarred(), false, "and no more");
        test.throws(() => track.setStarred(1), "Not a boolean");
        test.throws(() => track.setStarred(), "Not enough arguments");
        track.isStarred("arguments that nobody asked for", 1, null);
        test.ok("name" in track && !("nonsense" in track), "`in` on a wrapper");
    },
);
