// What the tags of the demo library come to, and pictures in their three sizes.
test.run(
    async () => {
        test.same(await test.login(), 0, "logged in");
        const track = await test.loaded(Spotify.Track.create(LINKS["The Far Bank"]));
        const album = track.album();
        test.same([track.name(), track.disc(), track.index(), track.numArtists(),
            track.artist(0).name()].join(), "The Far Bank,2,1,1,The Paper Ferries", "a track");
        test.ok(track.duration() > 8000 && track.duration() < 20000, "duration in milliseconds");
        test.same([album.name(), album.year(), album.artist().name()].join(),
            "Lanterns on the Water,2009,The Paper Ferries", "its album");
        test.same(album.albumType(), Spotify.SP_ALBUMTYPE.SP_ALBUMTYPE_ALBUM, "album type");
        const sampler = (await test.loaded(Spotify.Track.create(LINKS["Home by Dark"]))).album();
        test.same(sampler.albumType(), Spotify.SP_ALBUMTYPE.SP_ALBUMTYPE_COMPILATION, "compilation");
        const again = Spotify.Track.create(LINKS["The Far Bank"]);
        track.setStarred(true);
        test.ok(again !== track && again.isStarred(), "a star shines through all wrappers");
        track.setStarred(false);
        test.throws(() => Spotify.Track.create("nonsense \u0000 \ud800"),
            "Failed to retrieve object from Spotify", "a text that is none");

        const lengths = [];
        for (const id of [1, 0, 2].map((size) => album.cover(size)).concat(track.artist(0).portrait(0))) {
            const image = Spotify.SpImage.create(id);
            if (!image.isLoaded()) {
                await new Promise((resolve) => { image.onImageLoaded = resolve; });
            }
            lengths.push(image.data().length);
        }
        test.ok(lengths[0] < lengths[1] && lengths[1] <= lengths[2], "three sizes");
        test.same(lengths[3], lengths[1], "a portrait is the cover of an album");
    });
