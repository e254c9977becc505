// Listeners and handlers, on events that come from the library and from its threads.
const session = Spotify.Session;
const plugin = Spotify.Sonolet;

test.run(
    async () => {
        const order = [];
        const first = () => order.push("first");
        const twice = () => order.push("twice");
        const handler = () => order.push("handler");
        test.same(session.onLoggedIn, null, "no handler yet");
        session.onLoggedIn = () => order.push("replaced");
        session.onLoggedIn = handler;
        test.same(session.onLoggedIn, handler, "the attribute answers its handler");
        // The attribute is spelled otherwise than its event, which the first look at the music raises.
        const updated = new Promise((resolve) => { session.onMetaDataUpdated = resolve; });
        session.addEventListener("LoggedIn", first);
        session.addEventListener("LoggedIn", twice);
        session.addEventListener("LoggedIn", twice);
        session.addEventListener("LoggedIn", Math.max);
        session.removeEventListener("LoggedIn", Math.max);
        session.removeEventListener("LoggedIn", () => 0);
        await test.login();
        await updated;
        await test.next(plugin, "TrackProgress");
        test.same(order.join(), "first,twice,twice,handler", "each as often as it was added");
        session.removeEventListener("LoggedIn", twice);
        order.length = 0;
        await test.login();
        await test.next(plugin, "TrackProgress");
        test.same(order.join(), "first,twice,handler", "one removal takes one away");
        session.removeEventListener("LoggedIn", first);
        session.removeEventListener("LoggedIn", twice);
    },
    () => {
        test.throws(() => session.addEventListener("LoggedIn"), "Not enough arguments");
        test.throws(() => session.addEventListener(5, () => 0), "Not a string");
        test.throws(() => session.addEventListener("LoggedIn", "text"), "Not an object");
        test.throws(() => { session.onLoggedIn = 5; }, "Not an object");
        test.throws(() => { session.onLoggedIn = null; }, "Not an object");
    },
    async () => {
        const [position] = await test.next(plugin, "TrackProgress");
        test.same(position, 0, "nothing plays, and progress is reported all the same");
        // A handler survives collection while native code alone knows it.
        let collected = 0;
        (() => {
            const witness = { calls: 0 };
            plugin.addEventListener("TrackProgress", () => { collected = ++witness.calls; });
        })();
        for (let i = 0; i < 5; ++i) {
            gc();
            await test.next(plugin, "TrackProgress");
        }
        test.ok(collected >= 4, "a listener survives collection");
    },
    async () => {
        // Objects that come and go: their wrappers are made and collected in numbers.
        for (let round = 0; round < 20; ++round) {
            for (let i = 0; i < 100; ++i) {
                Spotify.Track.create(LINKS["Fog Signal"]).artist(0);
            }
            gc();
        }
        const track = await test.loaded(Spotify.Track.create(LINKS["Fog Signal"]));
        test.same(track.artist(0).name(), "Low Tide Quartet", "and the last one works");
    });
