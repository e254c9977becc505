// A track from its first to its last sound, with pause, seek and a track that cannot be played.
const session = Spotify.Session;
const plugin = Spotify.Sonolet;

test.run(
    async () => {
        test.same(await test.login(), 0, "logged in");
        const track = await test.loaded(Spotify.Track.create(LINKS["Fog Signal"]));
        test.throws(() => session.playerLoad(), "Not enough arguments");
        test.throws(() => session.playerLoad(5), "Not an interface");
        test.throws(() => session.playerLoad({}), "Not a jspp interface");
        test.throws(() => session.playerLoad(track.album()),
            "Parameter is not of the requested interface type.");
        test.throws(() => session.playerPlay(1), "Not a boolean");
        test.throws(() => session.playerSeek("1"), "Not a number");
        test.same(session.playerPrefetch(track), 0, "prefetch");
        test.same(session.playerLoad(track), 0, "load");
        const delivered = test.next(session, "EndOfTrack");
        const complete = test.next(plugin, "TrackComplete");
        test.same(session.playerPlay(true), 0, "play");
        await test.next(plugin, "TrackProgress", (position) => position > 2);

        test.same(session.playerPlay(false), 0, "pause");
        const [held] = await test.next(plugin, "TrackProgress");
        const [still] = await test.next(plugin, "TrackProgress");
        const [later] = await test.next(plugin, "TrackProgress");
        test.ok(later - still < 0.01 && still - held < 0.5, "a pause holds the position");
        test.same(session.playerPlay(true), 0, "resume");
        await delivered;
        await complete;
        const [end] = await test.next(plugin, "TrackProgress");
        test.ok(end > track.duration() / 1000 - 1.5, "played to its end");
    },
    async () => {
        const track = await test.loaded(Spotify.Track.create(LINKS["Kettle Song"]));
        session.playerLoad(track);
        const complete = test.next(plugin, "TrackComplete");
        test.same(session.playerSeek(track.duration() - 2500.9), undefined, "seek");
        session.playerPlay(true);
        await complete;
        const [end] = await test.next(plugin, "TrackProgress");
        test.ok(end > 0.5 && end < 4, `only the last part played (${end} s)`);
        test.same(session.playerUnload(), undefined, "unload");
    },
    async () => {
        const unknown = Spotify.Track.create("spotify:track:0000000000000000000001");
        test.ok(session.playerLoad(unknown) !== 0, "an unknown track is an error number");
        // One load after the other, some of them playing.
        for (const title of ["Salt Wind", "Moored", "First Frost", "Home by Dark"]) {
            session.playerLoad(await test.loaded(Spotify.Track.create(LINKS[title])));
            session.playerPlay(true);
            await test.next(plugin, "TrackProgress", (position) => position > 0.2);
        }
        test.ok(true, "tracks replace each other");
    });
