// The bad days that --fault brings, at the times that the test gives (PagesTest.cpp).
const session = Spotify.Session;
const began = Date.now();
const SPEED = 20;
const seconds = () => (Date.now() - began) / 1000 * SPEED;
const heard = [];
for (const event of ["ConnectionError", "PlayTokenLost", "StreamingError", "MessageToUser"]) {
    session.addEventListener(event, (...values) => heard.push(`${event}(${values.join()})`));
}
const search = () => new Promise((resolve) => {
    Spotify.Search.create("fog", 0, 5, 0, 0, 0, 0, 0, 0, 0, (found) => resolve(found.error()));
});

test.run(
    async () => {
        const asked = seconds();
        test.same(await test.login(), 6, "wrong password, though it is right");
        test.ok(seconds() - asked > 2, "and slow to say so");
        while (await test.login() !== 0) {
            await new Promise((again) => setTimeout(again, 1000));
        }
        test.ok(seconds() > 20, "until the time is over");
        test.same(session.connectionstate(), 1, "logged in");
    },
    async () => {
        const track = Spotify.Track.create(LINKS["Fog Signal"]);
        const gone = Spotify.Track.create(LINKS["Salt Wind"]);
        await test.loaded(track);
        await test.loaded(gone);
        test.same(gone.getAvailability(), false, "one track is not available");
        test.same(session.playerLoad(gone), 3, "and cannot be played");
        session.playerLoad(track);
        session.playerPlay(true);
        await test.next(session, "ConnectionError");
        test.same(session.connectionstate(), 2, "disconnected");
        test.same(await search(), 16, "a search without a connection");
        test.same(await test.login(), 8, "a login without a connection");
        await test.next(session, "ConnectionError");
        test.same(session.connectionstate(), 1, "connected again");
        test.same(await search(), 0, "a search");
        test.same(gone.getAvailability(), true, "the track is back");
        session.playerLoad(track);
        session.playerPlay(true);
        await test.next(session, "StreamingError");
        test.same(session.playerPlay(true), 18, "there is no stream any more");
        await test.next(session, "MessageToUser");
        test.same(heard.join(" "), "ConnectionError(8) ConnectionError(0) PlayTokenLost() " +
            "StreamingError(16) MessageToUser(Closed at 6 p.m., sorry)", "each once, in order");
    });
