// What is there before a session: the root, the constants, the configuration.

"use strict";

add("the root", "", function (done) {
    var constructors = Object.keys(CREATE);
    has("Spotify", Spotify, ["addEventListener", "removeEventListener",
        "SPOTIFY_API_VERSION", "SPOTIFY_JS_API_VERSION", "Session", "SessionConfig", "Sonolet",
        "errorMessage"].concat(constructors, Object.keys(CONSTANTS)));
    same("Spotify.SPOTIFY_API_VERSION", Spotify.SPOTIFY_API_VERSION, 12);
    same("Spotify.SPOTIFY_JS_API_VERSION", Spotify.SPOTIFY_JS_API_VERSION, "12.8");
    var fresh = constructors.concat(["Session", "SessionConfig", "Sonolet", "SP_ERROR"])
        .filter(function (name) {
            return /** @type {any} */ (Spotify)[name] !== /** @type {any} */ (Spotify)[name];
        });
    holds("the root's attributes answer the same objects again", fresh.length === 0,
        "new: " + fresh.join(", "), "no new objects");
    same("an unknown name is undefined", /** @type {any} */ (Spotify).nothing, undefined);
    same("an unknown name is not `in`", "nothing" in Spotify, false);
    constructors.forEach(function (name) {
        var maker = /** @type {any} */ (Spotify)[name];
        has("Spotify." + name, maker, ["create", "addEventListener", "removeEventListener"]);
        same("Spotify." + name + " itself is no " + name, "isLoaded" in maker, false);
    });
    checkArguments("Spotify", Spotify, "t errorMessage(n)");
    answers("Spotify.errorMessage(6)", "t", function () { return Spotify.errorMessage(6); });
    same("codes are truncated", Spotify.errorMessage(6.9), Spotify.errorMessage(6));
    throws("a function on an object of the page",
        function () { return Spotify.errorMessage.call({}, 0); }, "Not a jspp interface");
    throws("a function on a function of the page",
        function () { return Spotify.errorMessage.call(Math.max, 0); }, "Not a jspp interface");
    throws("a function on an object of another class",
        function () { return Spotify.errorMessage.call(Spotify.SP_ERROR, 0); });
    same("Spotify.SP_SEARCH_TYPE is empty", "SP_SEARCH_STANDARD" in Spotify.SP_SEARCH_TYPE, false);
    same("a function is one object", session.login, session.login);
    has("Session", session, namesOf("Session"));
    has("Sonolet", plugin, namesOf("Sonolet"));
    holds("Sonolet.version()", /^12\.8\//.test(plugin.version()), plugin.version(), "12.8/...");
    done();
});

Object.keys(CONSTANTS).forEach(function (group) {
    add(group, "", function (done) {
        var words = CONSTANTS[group].split(" ");
        var object = /** @type {any} */ (Spotify)[group];
        /** @type {string[]} */
        var faults = [];
        var value = 0;
        words.slice(1).forEach(function (word) {
            if (/^-?\d+$/.test(word)) {
                value = Number(word);
            } else {
                if (object[words[0] + word] !== value) {
                    faults.push(words[0] + word + " is " + show(object[words[0] + word]) +
                        " and not " + value);
                }
                ++value;
            }
        });
        holds("the constants of " + group, faults.length === 0, faults.join(", "), "all right");
        done();
    });
});

add("constants cannot be written", "", function (done) {
    var errors = /** @type {any} */ (Spotify.SP_ERROR);
    try {
        errors.SP_ERROR_OK = 1;
    } catch (error) {
        // As good as silence.
    }
    same("a constant that is written stays", Spotify.SP_ERROR.SP_ERROR_OK, 0);
    done();
});

add("SessionConfig", "", function (done) {
    var config = /** @type {any} */ (Spotify.SessionConfig);
    has("SessionConfig", config, Object.keys(CONFIG));
    Object.keys(CONFIG).forEach(function (name) {
        var kind = CONFIG[name];
        var before = answers("SessionConfig." + name, kind, function () { return config[name]; });
        var other = kind === "t" ? "other \u266b" : !before;
        throws("SessionConfig." + name + " = 5", function () { config[name] = 5; },
            wrong(kind)[0][1]);
        same("SessionConfig." + name + " keeps its value then", config[name], before);
        config[name] = other;
        same("SessionConfig." + name + " takes another value", config[name], other);
        config[name] = before;
    });
    done();
});

add("before the session is created", "", function (done) {
    try {
        session.connectionstate();
        skip("before the session is created", "an earlier page has created it");
        done();
        return;
    } catch (error) {
        // As it should be.
    }
    rowsOf(MEMBERS.Session).forEach(function (row) {
        if (row.name !== "create") {
            throws("Session." + row.name + "() too early",
                function () { return /** @type {any} */ (session)[row.name](); },
                "Spotify is not initialized");
        }
    });
    var link = "spotify:track:0000000000000000000000";
    ["Track", "Album", "Artist", "Playlist", "SpImage"].forEach(function (name) {
        throws("Spotify." + name + ".create(...) too early",
            function () { return /** @type {any} */ (Spotify)[name].create(link); },
            NO_SESSION);
    });
    throws("Spotify.Search.create(...) too early", function () {
        return Spotify.Search.create("", 0, 0, 0, 0, 0, 0, 0, 0, 0, function () {});
    }, NO_SESSION);
    throws("Spotify.Toplistbrowse.create(...) too early", function () {
        return Spotify.Toplistbrowse.create(0, 0, "", function () {});
    }, NO_SESSION);
    checkArguments("Session", session, "N create(G)");
    done();
});
