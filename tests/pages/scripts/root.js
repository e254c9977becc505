// The root object, its constants, and how its properties behave for a page.
test.run(
    () => {
        test.same(Spotify, Spotify, "the root is one object");
        test.same(Spotify.Session, Spotify.Session, "an attribute answers one object");
        for (const kind of ["Search", "Albumbrowse", "Artistbrowse", "SpImage", "Toplistbrowse",
            "Track", "Album", "Artist", "Playlist"]) {
            test.same(typeof Spotify[kind].create, "function", `${kind} creates`);
            test.same(Spotify[kind].name, undefined, `${kind} itself is none`);
        }
        test.same(Spotify.SPOTIFY_API_VERSION, 12, "API version");
        test.same(Spotify.SPOTIFY_JS_API_VERSION, "12.8", "script API version");
        test.ok(/^12\.8\/.+/.test(Spotify.Sonolet.version()), "version names the library's build");
        test.same(Spotify.errorMessage(0), Spotify.errorMessage(0.9), "codes are truncated");
        test.ok(Spotify.errorMessage(6) !== Spotify.errorMessage(0), "errors have texts");
        test.throws(() => Spotify.errorMessage(), "Not enough arguments");
        test.throws(() => Spotify.errorMessage("6"), "Not a number");
    },
    () => {
        const groups = {
            SP_SIGNUP_PAGE: 7, SP_SIGNUP_FEATURE: 4, SP_SIGNUP_ACTION: 9, SP_ERROR: 36,
            SP_PLAYLIST_TYPE: 4, SP_TRACK_AVAILABILITY: 4, SP_ARTISTBROWSE_TYPE: 3,
            SP_ALBUMTYPE: 4, SP_IMAGE_FORMAT: 2, SP_RELATION_TYPE: 4, SP_TOPLIST_TYPE: 3,
            SP_TOPLIST_REGION: 2, SP_SEARCH_TYPE: 0, SP_PLUGIN_ERROR: 3,
        };
        for (const group of Object.keys(groups)) {
            test.same(typeof Spotify[group], "object", `${group} exists`);
        }
        test.same(Spotify.SP_IMAGE_FORMAT.SP_IMAGE_FORMAT_UNKNOWN, -1, "negative constants");
        test.same(Spotify.SP_ERROR.SP_ERROR_OFFLINE_LICENSE_ERROR, 36, "the last error");
        test.same(Spotify.SP_SEARCH_TYPE.SP_SEARCH_STANDARD, undefined, "an empty group");
        let refusal = "";
        try {
            Spotify.SP_ERROR.SP_ERROR_OK = 1;
        } catch (error) {
            refusal = error.message;
        }
        test.ok(refusal.includes("SP_ERROR_OK"), "a write to a constant is refused by name");
        test.same(Spotify.SP_ERROR.SP_ERROR_OK, 0, "and keeps its value");
    },
    () => {
        test.same(Spotify.nothing, undefined, "an unknown name is undefined");
        test.ok("Session" in Spotify && !("nothing" in Spotify), "`in` tells what there is");
        test.ok(Array.isArray(Object.keys(Spotify.Session)), "keys can be listed");
        test.ok(String(Spotify).length > 0 && `${JSON.stringify(Spotify.Sonolet)}`.length > 0,
            "the page's own tools take the objects");
        test.same(Spotify.Session.login, Spotify.Session.login, "a function is one object");
        const { errorMessage } = Spotify;
        test.throws(() => errorMessage(0), "Not a jspp interface", "a detached function");
        test.throws(() => errorMessage.call({}, 0), "Not a jspp interface", "on a page's object");
        test.throws(() => errorMessage.call(Math.max, 0), "Not a jspp interface", "on a function");
        test.same(errorMessage.call(Spotify, 0), Spotify.errorMessage(0), "attached again");
        // The code for a function that the object does not have.
        let thrown = null;
        try {
            errorMessage.call(Spotify.SP_ERROR, 0);
        } catch (error) {
            thrown = error;
        }
        test.ok(thrown instanceof Error, "a function on an object of another class");
    });
