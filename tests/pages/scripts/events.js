// Collection, between wrappers in numbers and listeners that native code alone knows.
const plugin = Spotify.Sonolet;

test.run(
    async () => {
        await test.login();
        let calls = 0;
        (() => {
            const witness = { calls: 0 };
            plugin.addEventListener("TrackProgress", () => { calls = ++witness.calls; });
        })();
        for (let i = 0; i < 5; ++i) {
            gc();
            await test.next(plugin, "TrackProgress");
        }
        test.ok(calls >= 4, "a listener survives collection");
    },
    async () => {
        for (let round = 0; round < 20; ++round) {
            for (let i = 0; i < 100; ++i) {
                Spotify.Track.create(LINKS["Fog Signal"]).artist(0);
            }
            gc();
            // Outside of any call of the plug-in all of them can go.
            await new Promise((resolve) => setTimeout(resolve));
        }
        const track = await test.loaded(Spotify.Track.create(LINKS["Fog Signal"]));
        test.same(track.artist(0).name(), "Low Tide Quartet", "the last of many works");
    },
    async () => {
        // The page keeps its function alone, and each query is answered once.
        let answered = 0;
        for (let i = 0; i < 20; ++i) {
            Spotify.Search.create(`fog ${i}`, 0, 1, 0, 0, 0, 0, 0, 0, 0, () => { ++answered; });
            gc();
            await new Promise((resolve) => setTimeout(resolve));
        }
        while (answered < 20) {
            await test.next(plugin, "TrackProgress");
        }
        await test.next(plugin, "TrackProgress");
        test.same(answered, 20, "each query is answered once");
    });
