// The session's account functions, in the order in which a page meets them.
const session = Spotify.Session;
const config = Spotify.SessionConfig;
let blob = "";

test.run(
    () => {
        const members = ["relogin", "playerLoad", "friend", "numFriends", "userCountry",
            "playerUnload", "rememberedUser", "playerPrefetch", "playerSeek", "logout", "user",
            "setCacheSize", "forgetMe", "connectionstate", "login", "playerPlay",
            "signupGetUnacceptedLicenses", "signupPerformAction"];
        for (const member of members) {
            test.throws(() => session[member](), "Spotify is not initialized", `${member} too early`);
        }
        test.throws(() => Spotify.Track.create(LINKS["Fog Signal"]),
            "Spotify not initialized correctly");
        test.throws(() => Spotify.Track.create(), "Not enough arguments");
        test.throws(() => session.create(), "Not enough arguments", "create without options");
        test.throws(() => session.create(1), "Not an interface");
        test.throws(() => session.create({}), "Not a jspp interface");
        test.throws(() => session.create(session.create), "Not a jspp interface");
        test.throws(() => session.create(session),
            "Parameter is not of the requested interface type.");
    },
    () => {
        test.same(config.userAgent, "User-Agent string", "the default user agent");
        test.throws(() => { config.userAgent = 5; }, "Not a string");
        test.throws(() => { config.compressPlaylists = "yes"; }, "Not a boolean");
        test.same(config.userAgent + config.compressPlaylists, "User-Agent stringfalse",
            "a refused value changes nothing");
        config.userAgent = "test page \u266b";
        config.compressPlaylists = true;
        test.same(config.userAgent + config.compressPlaylists, "test page \u266btrue",
            "an accepted one is kept");
        test.same(session.create(config), session, "create answers the session");
        test.same(session.create(), session, "and the same again, without a look at arguments");
    },
    async () => {
        test.same(session.rememberedUser(), null, "nobody is remembered");
        test.ok(session.relogin() !== Spotify.SP_ERROR.SP_ERROR_OK, "so nobody logs in again");
        test.throws(() => session.login("a", "b", true), "Not enough arguments");
        test.throws(() => session.login("a", "b", 1, ""), "Not a boolean");
        test.throws(() => session.login("a", 5, true, ""), "Not a string");
        test.same(await test.login("listener", "wrong"),
            Spotify.SP_ERROR.SP_ERROR_BAD_USERNAME_OR_PASSWORD, "a wrong password");
        test.ok(session.connectionstate() !== 1, "leaves the session logged out");
        const blobCame = new Promise((resolve) => { session.onCredentialsBlobUpdated = resolve; });
        test.same(await test.login("listener", "listener", true), 0, "the right one");
        blob = await blobCame;
        test.same(session.connectionstate(), 1, "logged in");
        test.same(session.rememberedUser(), "listener", "remembered");
        test.ok(blob.length >= 16, "a blob came, through the attribute");
    },
    () => {
        const user = session.user();
        test.same(user.canonicalName(), "listener", "the user");
        test.ok(user.isLoaded() && typeof user.displayName() === "string" &&
            typeof user.fullName() === "string" && typeof user.picture() === "string" &&
            typeof user.relationType() === "number", "its members");
        test.ok(user !== session.user(), "a new wrapper at each call");
        test.ok(session.numFriends() >= 0, "friends are counted");
        test.throws(() => session.friend(session.numFriends()),
            "Failed to retrieve object from Spotify");
        test.throws(() => session.friend("0"), "Not a number");
        test.ok(session.userCountry() > 0x4040, "a country of two letters");
        test.same(session.setCacheSize(64), undefined, "the cache's size");
        test.same(session.signupGetUnacceptedLicenses(), "", "no licence is open");
        test.same(session.signupPerformAction(Spotify.SP_SIGNUP_ACTION.SP_SIGNUP_ACTION_ACCEPT), 0,
            "sign-up actions");
    },
    async () => {
        const track = await test.loaded(Spotify.Track.create(LINKS["Fog Signal"]));
        const user = session.user();
        const out = test.next(session, "LoggedOut");
        test.same(session.logout(), undefined, "logout");
        for (const call of [() => track.name(), () => track.artist(0), () => user.fullName(),
            () => track.setStarred(true)]) {
            test.throws(call, "Failed to retrieve object from Spotify", "a wrapper is cleared");
        }
        test.throws(() => track.artist("0"), "Not a number", "arguments come first");
        test.throws(() => session.playerLoad(track), "Failed to retrieve object from Spotify");
        test.same(typeof track.addEventListener, "function", "listeners stay");
        await out;
        test.ok(session.connectionstate() !== 1, "logged out");
        test.same(await test.login("listener", "no password", false, blob), 0,
            "the blob stands in for the password");
        test.same(session.forgetMe(), 0, "forget");
        test.same(session.rememberedUser(), null, "nobody is remembered again");
    });
