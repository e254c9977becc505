// A seek, and tracks that take each other's place.
const session = Spotify.Session;
const plugin = Spotify.Sonolet;

test.run(
    async () => {
        test.same(await test.login(), 0, "logged in");
        const track = await test.loaded(Spotify.Track.create(LINKS["Kettle Song"]));
        test.same(session.playerLoad(track), 0, "load");
        const complete = test.next(plugin, "TrackComplete");
        test.same(session.playerSeek(track.duration() - 2500.9), undefined, "seek");
        test.same(session.playerPlay(true), 0, "play");
        await complete;
        const [end] = await test.next(plugin, "TrackProgress");
        test.ok(end > 0.5 && end < 4, `only the last part played (${end} s)`);
    },
    async () => {
        for (const title of ["Salt Wind", "Moored", "First Frost", "Home by Dark"]) {
            session.playerLoad(await test.loaded(Spotify.Track.create(LINKS[title])));
            session.playerPlay(true);
            const [position] = await test.next(plugin, "TrackProgress", (at) => at > 0.2);
            test.ok(position < 4, `${title} starts from its beginning (${position} s)`);
        }
        const complete = test.next(plugin, "TrackComplete");
        await test.next(session, "EndOfTrack");
        await complete;
        const [end] = await test.next(plugin, "TrackProgress");
        const last = Spotify.Track.create(LINKS["Home by Dark"]);
        test.ok(end > last.duration() / 1000 - 1.5, "the last one plays to its end");
    });
