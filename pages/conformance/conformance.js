// Checks the whole script interface on the host that runs it, and reports TAP (version 13) on the
// console. Without a document, as in the runner, it starts by itself:
//
//     ./sonolet run pages/conformance/conformance.js --audio null
//
// index.html asks for the account and shows the results as a table. ECMAScript 5 throughout and no
// library: browsers of devices are old. What the user has is as before when it is over.

var conformance = (function () {
    "use strict";

    // What an account without a page is checked with: the local music service's first one.
    var DEFAULTS = { user: "listener", password: "listener", track: "" };

    var NOT_RETRIEVED = "Failed to retrieve object from Spotify";
    var NO_SESSION = "Spotify not initialized correctly";

    // ---- The interface ----------------------------------------------------------------------------

    // A member is "K name(arguments)": K is the kind of its answer, in the lower case a plain value
    // (number, boolean, text, id of an image, list, void), in the upper case an object of a class;
    // "-" marks what no check calls just so. Arguments are kinds, too, and f a function.
    /** @type {{ [name: string]: string }} */
    var CLASS_OF = {
        T: "Track", A: "Album", R: "Artist", U: "User", P: "Playlist", C: "Playlistcontainer",
        I: "SpImage", S: "Search", L: "Albumbrowse", B: "Artistbrowse", O: "Toplistbrowse",
        G: "SessionConfig", N: "Session"
    };
    /** @type {{ [name: string]: string }} */
    var MEMBERS = {
        Session: "N create(G) - relogin() - playerLoad(T) U friend(n) n numFriends() n userCountry() " +
            "- playerUnload() - rememberedUser() - playerPrefetch(T) - playerSeek(n) - logout() " +
            "U user() P inboxCreate() - setCacheSize(n) - forgetMe() " +
            "- publishedContainerForUserCreate(t) - starredForUserCreate(t) n connectionstate() " +
            "P starredCreate() - login(ttbt) - playerPlay(b) C Playlistcontainer() " +
            "t signupGetUnacceptedLicenses() - signupPerformAction(n)",
        Sonolet: "t version()",
        Track: "A album() n index() b isPlaceholder() n popularity() t name() b isLocal() " +
            "R artist(n) n numArtists() - setStarred(b) b isLoaded() n disc() n error() " +
            "n duration() b getAvailability() b isStarred()",
        Album: "t name() R artist() i cover(n) b isLoaded() n albumType() n year() b isAvailable()",
        Artist: "t name() b isLoaded() i portrait(n)",
        User: "t picture() t displayName() t canonicalName() b isLoaded() n relationType() " +
            "t fullName()",
        SpImage: "b isLoaded() n error() n format() t data() i id()",
        Search: "- create(tnnnnnnnnnf) A album(n) n totalAlbums() n numAlbums() R artist(n) " +
            "T track(n) n numArtists() n numTracks() b isLoaded() t didYouMean() n totalArtists() " +
            "n totalTracks() n totalPlaylists() n error() t query() n numPlaylists() " +
            "t playlistName(n) t playlistUri(n) t playlistImageUri(n) P playlist(n) v release()",
        Albumbrowse: "A album() n numCopyrights() t copyright(n) R artist() T track(n) n numTracks() " +
            "b isLoaded() n error() v release()",
        Artistbrowse: "A album(n) n numAlbums() R artist() b isLoaded() n error() " +
            "n numTophitTracks() T tophitTrack(n) v release()",
        Toplistbrowse: "b isLoaded() n error() n numArtists() R artist(n) n numAlbums() A album(n) " +
            "n numTracks() T track(n) v release()",
        Playlist: "b isInRam() t getImage() n trackCreateTime(n) b hasPendingChanges() T track(n) " +
            "n numSubscribers() v updateSubscribers() t getDescription() b trackSeen(n) " +
            "n numTracks() - setAutolinkTracks(b) U trackCreator(n) l subscribers() - setInRam(b) " +
            "U owner() - trackSetSeen(nb) b isLoaded() b isCollaborative() t trackMessage(n) " +
            "t name() t uri() - addTracks(Tn) t placeholderUri(n) v release()",
        Playlistcontainer: "P playlist(n) n playlistType(n) n numPlaylists() t playlistFolderName(n) " +
            "b isLoaded() n playlistFolderId(n) U owner() - addPlaylist(P) v release()"
    };
    // What the root's constructor objects make their objects from.
    /** @type {{ [name: string]: string }} */
    var CREATE = {
        Track: "- create(t)", Album: "- create(t)", Artist: "- create(t)", Playlist: "- create(t)",
        SpImage: "- create(t)", Search: "- create(tnnnnnnnnnf)", Albumbrowse: "- create(Af)",
        Artistbrowse: "- create(Rnf)", Toplistbrowse: "- create(nntf)"
    };
    // "name(arguments)", and after a colon the attribute when it is not "on" and the name: none, or
    // spelled otherwise.
    /** @type {{ [name: string]: string }} */
    var EVENTS = {
        Session: "PlayTokenLost() LoggedIn(n) StreamingError(n) ConnectionError(n) " +
            "UserinfoUpdated() LoggedOut() LogMessage(t) MessageToUser(t) EndOfTrack() " +
            "MetadataUpdated():onMetaDataUpdated CredentialsBlobUpdated(t) ShowTrialWelcome() " +
            "OfflineStatusUpdated():- OfflineError(n):- ShowSignupPage(nbnt):- " +
            "ShowSignupErrorPage(nn):-",
        Sonolet: "TrackProgress(n) Error() LogMessage() TrackComplete()",
        SpImage: "ImageLoaded(I)",
        Playlist: "SubscribersChanged(P) PlaylistRenamed(P) PlaylistUpdateInProgress(Pb) " +
            "TracksMoved(Pln) DescriptionChanged(Pt) TrackCreatedChanged(PnUn) TracksRemoved(Pl) " +
            "PlaylistStateChanged(P) TrackSeenChanged(Pnb) TracksAddedEvent(Pln):onTracksAdded " +
            "PlaylistMetadataUpdated(P) ImageChanged(Pt) TrackMessageChanged(Pnt)",
        Playlistcontainer: "PlaylistAdded(CPn) PlaylistMoved(CPnn) ContainerLoaded(C) " +
            "PlaylistRemoved(CPn)"
    };
    // Prefix of the names, then the names in the order of their values; a number sets the next one.
    /** @type {{ [name: string]: string }} */
    var CONSTANTS = {
        SP_SIGNUP_PAGE: "SP_SIGNUP_PAGE_ NONE FACEBOOK_LOGIN ENTER_CREDENTIALS MERGING_ACCOUNTS " +
            "SPOTIFY_LOGIN POST_TO_OPENGRAPH_OPTION DONE",
        SP_SIGNUP_FEATURE: "SP_SIGNUP_FEATURE_ 1 CONNECT_TO_FACEBOOK MERGE_ACCOUNT 4 SHOW_LICENSES " +
            "8 SHOW_POST_OG_OPTION",
        SP_SIGNUP_ACTION: "SP_SIGNUP_ACTION_ CONNECT_TO_FACEBOOK CONNECT_TO_FACEBOOK_COMPLETED " +
            "LOGIN_WITH_SPOTIFY ACCEPT CANCEL_FACEBOOK_CONNECT MERGE_WITH_ACCOUNT GO_BACK " +
            "CANCEL_SIGNUP ACCEPT_LICENSES",
        SP_ERROR: "SP_ERROR_ OK BAD_API_VERSION API_INITIALIZATION_FAILED TRACK_NOT_PLAYABLE 5 " +
            "BAD_APPLICATION_KEY BAD_USERNAME_OR_PASSWORD USER_BANNED UNABLE_TO_CONTACT_SERVER " +
            "CLIENT_TOO_OLD OTHER_PERMANENT BAD_USER_AGENT MISSING_CALLBACK INVALID_INDATA " +
            "INDEX_OUT_OF_RANGE USER_NEEDS_PREMIUM OTHER_TRANSIENT IS_LOADING NO_STREAM_AVAILABLE " +
            "PERMISSION_DENIED INBOX_IS_FULL NO_CACHE NO_SUCH_USER NO_CREDENTIALS " +
            "NETWORK_DISABLED INVALID_DEVICE_ID CANT_OPEN_TRACE_FILE APPLICATION_BANNED " +
            "HOST_NOT_FOUND TIMEOUT ACCESS_DENIED OFFLINE_TOO_MANY_TRACKS OFFLINE_DISK_CACHE " +
            "OFFLINE_EXPIRED OFFLINE_NOT_ALLOWED OFFLINE_LICENSE_LOST OFFLINE_LICENSE_ERROR",
        SP_PLAYLIST_TYPE: "SP_PLAYLIST_TYPE_ PLAYLIST START_FOLDER END_FOLDER PLACEHOLDER",
        SP_TRACK_AVAILABILITY: "SP_TRACK_AVAILABILITY_ UNAVAILABLE AVAILABLE NOT_STREAMABLE " +
            "BANNED_BY_ARTIST",
        SP_ARTISTBROWSE_TYPE: "SP_ARTISTBROWSE_ FULL NO_TRACKS NO_ALBUMS",
        SP_ALBUMTYPE: "SP_ALBUMTYPE_ ALBUM SINGLE COMPILATION UNKNOWN",
        SP_IMAGE_FORMAT: "SP_IMAGE_FORMAT_ -1 UNKNOWN JPEG",
        SP_RELATION_TYPE: "SP_RELATION_TYPE_ UNKNOWN NONE UNIDIRECTIONAL BIDIRECTIONAL",
        SP_TOPLIST_TYPE: "SP_TOPLIST_TYPE_ ARTISTS ALBUMS TRACKS",
        SP_TOPLIST_REGION: "SP_TOPLIST_REGION_ EVERYWHERE USER",
        SP_SEARCH_TYPE: "",
        SP_PLUGIN_ERROR: "SP_PLUGIN_ERROR_ OK GENERAL NO_AUDIO"
    };
    /** @type {{ [name: string]: string }} */
    var CONFIG = {
        userAgent: "t", compressPlaylists: "b", dontSaveMetadataForPlaylists: "b",
        initiallyUnloadPlaylists: "b", proxy: "t", proxyUsername: "t", proxyPassword: "t"
    };

    /**
     * @typedef {{ kind: string, name: string, takes: string, attribute: string }} Row
     * @typedef {{ number: number, ok: boolean, what: string, skip?: string, expected?: string,
     *     got?: string }} Result
     * @typedef {{ user: string, password: string, track: string }} Options `track`: the link of the
     *     one to play; "": one that is found
     * @typedef {{ passed: number, failed: number, skipped: number }} Counts
     */

    /** @param {string} table @returns {Row[]} */
    function rowsOf(table) {
        var row = /(?:([-A-Za-z]) )?(\w+)\((\w*)\)(?::(\S+))?/g;
        var rows = [];
        for (var match = row.exec(table); match; match = row.exec(table)) {
            rows.push({
                kind: match[1] || "", name: match[2], takes: match[3],
                attribute: match[4] === "-" ? "" : match[4] || "on" + match[2]
            });
        }
        return rows;
    }

    /**
     * The names of a class.
     * @param {string} name @returns {string[]}
     */
    function namesOf(name) {
        var names = ["addEventListener", "removeEventListener"];
        rowsOf(MEMBERS[name]).forEach(function (row) { names.push(row.name); });
        rowsOf(EVENTS[name] || "").forEach(function (row) {
            if (row.attribute) {
                names.push(row.attribute);
            }
        });
        return names;
    }

    /** @param {any} object @param {string[]} names */
    function missing(object, names) {
        return names.filter(function (name) {
            try {
                return !(name in object);
            } catch (error) {
                return true;
            }
        });
    }

    // ---- Values -----------------------------------------------------------------------------------

    /** @param {any} value */
    function show(value) {
        if (typeof value === "string") {
            return JSON.stringify(value.length > 60 ? value.slice(0, 60) + "..." : value);
        }
        if (typeof value === "function") {
            return "a function";
        }
        if (typeof value === "object" && value) {
            if (typeof value.length === "number") {
                return "a list of " + value.length;
            }
            for (var name in MEMBERS) {
                if (missing(value, namesOf(name)).length === 0) {
                    return "object " + name;
                }
            }
            return "an object";
        }
        return String(value);
    }

    /**
     * A host may throw its messages as they are.
     * @param {any} error
     */
    function messageOf(error) {
        return error && error.message !== undefined ? error.message : String(error);
    }

    /** @type {{ [kind: string]: string }} */
    var KINDS = {
        n: "a number", b: "true or false", t: "a text", i: "28 characters of Base64", l: "a list",
        v: "undefined"
    };

    /** @param {string} kind */
    function nameOf(kind) { return KINDS[kind] || "object " + CLASS_OF[kind]; }

    /** @param {any} value @param {string} kind */
    function isOf(value, kind) {
        switch (kind) {
        case "n": return typeof value === "number";
        case "b": return typeof value === "boolean";
        case "t": return typeof value === "string";
        case "i": return typeof value === "string" && /^[A-Za-z0-9+\/]{27}=$/.test(value);
        case "l": return typeof value === "object" && value && typeof value.length === "number";
        case "v": return value === undefined;
        default:
            return typeof value === "object" && value &&
                missing(value, namesOf(CLASS_OF[kind])).length === 0;
        }
    }

    // ---- The run ----------------------------------------------------------------------------------

    /** @type {Options} */
    var options;
    /** @type {(result: Result) => void} */
    var onResult;
    /** @type {(counts: Counts) => void} */
    var onEnd;
    var counts = { passed: 0, failed: 0, skipped: 0 };
    /** @type {any} what the steps hand on */
    var found = { tracks: [], watched: {} };
    /** @type {Spotify.Session} */
    var session;
    /** @type {Spotify.Sonolet} */
    var plugin;

    // ---- Reporting ----

    /** @param {string} what @param {boolean} ok @param {any} [more] */
    function report(what, ok, more) {
        var result = more || {};
        result.ok = ok;
        result.what = what;
        ++counts[result.skip ? "skipped" : ok ? "passed" : "failed"];
        result.number = counts.passed + counts.failed + counts.skipped;
        onResult(result);
        return ok;
    }
    /** @param {string} what @param {string} reason */
    function skip(what, reason) { report(what, true, { skip: reason }); }
    /** @param {string} what @param {any} got @param {any} expected */
    function same(what, got, expected) {
        return report(what, got === expected, { got: show(got), expected: show(expected) });
    }
    /** @param {string} what @param {any} condition @param {string} got @param {string} expected */
    function holds(what, condition, got, expected) {
        return report(what, !!condition, { got: got, expected: expected });
    }
    /** @param {string} what @param {() => any} call @param {string} [message] without one: any */
    function throws(what, call, message) {
        var got;
        var expected = message === undefined ? "an exception" : show(message);
        try {
            got = "no exception, but " + show(call());
        } catch (error) {
            got = message === undefined ? expected : show(messageOf(error));
        }
        holds(what + " throws " + expected, got === expected, got, expected);
    }
    /** @param {string} what @param {string} kind @param {() => any} call */
    function answers(what, kind, call) {
        var got;
        var ok = false;
        var value;
        try {
            value = call();
            got = show(value);
            ok = isOf(value, kind);
        } catch (error) {
            got = "the exception " + show(messageOf(error));
        }
        holds(what + " answers " + nameOf(kind), ok, got, nameOf(kind));
        return ok ? value : undefined;
    }
    /** @param {string} what @param {any} object @param {string[]} names */
    function has(what, object, names) {
        var lacking = missing(object, names);
        holds(what + " has its " + names.length + " names", lacking.length === 0,
            "without " + lacking.join(", "), names.join(", "));
    }

    // ---- Arguments, from the tables ----

    /** @param {string} kind @returns {any} one that is right */
    function sample(kind) {
        return { n: 0, t: "", b: false, f: function () {}, T: found.track, A: found.album,
            R: found.artist }[kind];
    }
    /** @param {string} kind @returns {[any, string][]} those that are wrong */
    function wrong(kind) {
        switch (kind) {
        case "n": return [["0", "Not a number"]];
        case "t": return [[5, "Not a string"]];
        case "b": return [[1, "Not a boolean"]];
        case "f": return [["text", "Not an object"]];
        default:
            return [[5, "Not an interface"], [{}, "Not a jspp interface"],
                [plugin.version, "Not a jspp interface"],
                [plugin, "Parameter is not of the requested interface type."]];
        }
    }
    /**
     * Every argument left out, and every one wrong, after those before it right.
     * @param {string} path @param {any} object @param {string} table
     */
    function checkArguments(path, object, table) {
        rowsOf(table).forEach(function (row) {
            /** @type {any[]} */
            var before = [];
            /** @param {any[]} values @param {string} message */
            function refused(values, message) {
                throws(path + "." + row.name + "(" + values.map(show).join(", ") + ")",
                    function () { return object[row.name].apply(object, values); }, message);
            }
            row.takes.split("").forEach(function (kind) {
                refused(before, "Not enough arguments");
                wrong(kind).forEach(function (pair) { refused(before.concat([pair[0]]), pair[1]); });
                before = before.concat([sample(kind)]);
            });
            if (row.takes === "n" && CLASS_OF[row.kind]) {
                refused([-1], NOT_RETRIEVED);
            }
        });
    }
    /**
     * The answers of all members that can be asked, with `index` where one is taken; with an
     * index of -1 only of those that take none.
     * @param {string} name @param {any} object @param {number} index @param {string[]} [without]
     */
    function checkAnswers(name, object, index, without) {
        rowsOf(MEMBERS[name]).forEach(function (row) {
            var values = row.takes === "n" ? [index] : [];
            if (row.kind === "-" || row.takes.length > values.length ||
                    (values.length > 0 && index < 0) ||
                    (without && without.indexOf(row.name) >= 0)) {
                return;
            }
            answers(name + "." + row.name + "(" + values.join() + ")", row.kind,
                function () { return object[row.name].apply(object, values); });
        });
    }
    /** @param {string} name @param {any} object @param {number} index @param {string[]} [without] */
    function checkObject(name, object, index, without) {
        has(name, object, namesOf(name));
        checkArguments(name, object, MEMBERS[name]);
        checkAnswers(name, object, index, without);
    }

    // ---- Events ----

    /**
     * Listens to everything: how often it came, and whether its arguments were of their kinds.
     * @param {string} name @param {any} object
     */
    function watch(name, object) {
        rowsOf(EVENTS[name]).forEach(function (row) {
            var key = name + " \"" + row.name + "\"";
            var seen = found.watched[key];
            if (!seen) {
                seen = found.watched[key] = { listener: 0, handler: 0, fault: "", row: row };
            }
            object.addEventListener(row.name, function () {
                var values = Array.prototype.slice.call(arguments);
                ++seen.listener;
                if (values.length !== row.takes.length || !values.every(function (value, i) {
                    return isOf(value, row.takes.charAt(i));
                })) {
                    seen.fault = values.map(show).join(", ");
                }
            });
            if (row.attribute && row.name !== "PlaylistMoved") {
                object[row.attribute] = function () { ++seen.handler; };
            }
        });
    }
    /**
     * Calls `then` with the arguments of the event when it comes and is wanted.
     * @param {any} object @param {string} event @param {(...values: any[]) => any} wanted
     * @param {(...values: any[]) => void} then
     */
    function when(object, event, wanted, then) {
        var listener = guarded(function () {
            if (wanted.apply(null, Array.prototype.slice.call(arguments))) {
                object.removeEventListener(event, listener);
                then.apply(null, Array.prototype.slice.call(arguments));
            }
        });
        object.addEventListener(event, listener);
    }
    function always() { return true; }

    /** @param {() => any} condition @param {() => void} then */
    function until(condition, then) {
        var current = step;
        var timer = setInterval(guarded(function () {
            var holdsNow = condition();
            if (holdsNow || current !== step) {
                clearInterval(timer);
            }
            if (holdsNow && current === step) {
                then();
            }
        }), 100);
    }

    // ---- Steps ----

    /** @type {{ title: string, needs: string, body: (done: () => void) => void,
     *     seconds: number }[]} */
    var steps = [];
    var step = -1;
    /** @type {any} */
    var limit;
    var failedAt = "";

    /**
     * @param {string} title @param {string} needs what an earlier step has to have found
     * @param {(done: () => void) => void} body
     * @param {number} [seconds] after which it is given up
     */
    function add(title, needs, body, seconds) {
        steps.push({ title: title, needs: needs, body: body, seconds: seconds || 60 });
    }

    /**
     * Ends the step instead of the page.
     * @param {(...values: any[]) => any} call
     */
    function guarded(call) {
        var current = step;
        return function () {
            try {
                return call.apply(null, Array.prototype.slice.call(arguments));
            } catch (error) {
                holds(steps[current].title + " goes through", false,
                    "the exception " + show(messageOf(error)), "none");
                finish(current);
            }
        };
    }
    /** @param {number} ended */
    function finish(ended) {
        if (ended === step) {
            clearTimeout(limit);
            ++step;
            setTimeout(next, 0);
        }
    }
    function next() {
        var current = step;
        if (current === steps.length) {
            onEnd(counts);
            return;
        }
        var todo = steps[current];
        if (todo.needs && !found[todo.needs]) {
            skip(todo.title, "there is no " + todo.needs + (failedAt ? ": " + failedAt : ""));
            finish(current);
            return;
        }
        limit = setTimeout(function () {
            holds(todo.title + " comes to its end", false, "not within " + todo.seconds + " s",
                "the next event");
            finish(current);
        }, todo.seconds * 1000);
        guarded(function () { todo.body(function () { finish(current); }); })();
    }

    // ---- What is there before a session ----

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

    // ---- Session and events ----

    add("Session.create", "", function (done) {
        same("Session.create(SessionConfig)", session.create(Spotify.SessionConfig), session);
        same("Session.create() again", /** @type {any} */ (session).create(), session);
        found.session = true;
        checkArguments("Session", session, MEMBERS.Session.replace("N create(G)", "")
            .replace(/- player(Load|Prefetch)\(T\)/g, ""));
        checkArguments("Session", session,
            "v addEventListener(tf) v removeEventListener(tf)");
        ["Session", "Sonolet"].forEach(function (name) {
            var object = /** @type {any} */ (Spotify)[name];
            rowsOf(EVENTS[name]).forEach(function (row) {
                if (!row.attribute) {
                    return;
                }
                var path = name + "." + row.attribute;
                var handler = function () {};
                throws(path + " = 5", function () { object[row.attribute] = 5; }, "Not an object");
                throws(path + " = null", function () { object[row.attribute] = null; },
                    "Not an object");
                object[row.attribute] = handler;
                same(path + " answers its handler", object[row.attribute], handler);
            });
            watch(name, object);
        });
        done();
    });

    add("listeners", "session", function (done) {
        /** @type {string[]} */
        var order = [];
        var inside = true;
        function once() { order.push(inside ? "inside" : "once"); }
        function twice() { order.push("twice"); }
        function never() { order.push("never"); }
        plugin.addEventListener("TrackProgress", never);
        plugin.addEventListener("TrackProgress", once);
        plugin.addEventListener("TrackProgress", twice);
        plugin.addEventListener("TrackProgress", twice);
        plugin.removeEventListener("TrackProgress", never);
        plugin.removeEventListener("TrackProgress", function () {});
        plugin.onTrackProgress = function () { order.push("replaced"); };
        plugin.onTrackProgress = function () { order.push("handler"); };
        when(plugin, "TrackProgress", always, function () {
            // This listener is the last of them, and the handler comes after it.
            setTimeout(guarded(function () {
                same("listeners come in their order, as often as added, before the handler",
                    order.slice(0, 4).join(), "once,twice,twice,handler");
                plugin.removeEventListener("TrackProgress", twice);
                // Calls that were queued before the removal still come.
                var more = 4;
                when(plugin, "TrackProgress", function () { return --more === 0; }, function () {
                    setTimeout(guarded(function () {
                        same("one removal takes one entry", order.slice(-6).join(),
                            "once,twice,handler,once,twice,handler");
                        plugin.removeEventListener("TrackProgress", once);
                        plugin.removeEventListener("TrackProgress", twice);
                        watch("Sonolet", plugin);
                        done();
                    }), 0);
                });
            }), 0);
        });
        inside = false;
    });

    // ---- Account ----

    add("a login that fails", "session", function (done) {
        when(session, "LoggedIn", always, function (error) {
            same("\"LoggedIn\" tells that a user is not known", error,
                Spotify.SP_ERROR.SP_ERROR_BAD_USERNAME_OR_PASSWORD);
            done();
        });
        answers("Session.login(unknown)", "n", function () {
            return session.login("no-such-user-here", "no password", false, "");
        });
    });

    add("a login", "session", function (done) {
        found.remembers = session.rememberedUser() === null;
        if (found.remembers) {
            holds("Session.relogin() without a remembered user", session.relogin() !== 0, "0",
                "an error");
        }
        when(session, "CredentialsBlobUpdated", always, function (blob) { found.blob = blob; });
        when(session, "LoggedIn", always, function (error) {
            if (!same("\"LoggedIn\" brings no error", Spotify.errorMessage(error),
                Spotify.errorMessage(0))) {
                failedAt = "login: " + Spotify.errorMessage(error);
                done();
                return;
            }
            found.login = true;
            same("Session.connectionstate()", session.connectionstate(), 1);
            done();
        });
        same("Session.login", session.login(options.user, options.password, found.remembers, ""), 0);
    });

    add("the account", "login", function (done) {
        checkAnswers("Session", session, -1, ["create"]);
        found.user = session.user();
        checkObject("User", found.user, -1);
        same("User.canonicalName()", found.user.canonicalName().toLowerCase(),
            options.user.toLowerCase());
        same("Session.user() answers a new wrapper", session.user() === found.user, false);
        throws("Session.friend(numFriends())",
            function () { return session.friend(session.numFriends()); }, NOT_RETRIEVED);
        if (found.remembers) {
            same("Session.rememberedUser()", String(session.rememberedUser()).toLowerCase(),
                options.user.toLowerCase());
        } else {
            skip("Session.rememberedUser() after a login", "somebody is remembered already");
        }
        done();
    });

    // ---- Search, and a track ----

    /** @param {string} query @param {(result: Spotify.Search) => void} then */
    function search(query, then) {
        return Spotify.Search.create(query, 0, 20, 0, 5, 0, 5, 0, 5, 0, guarded(then));
    }
    /** Tries one query after the other until something is found that can be played. */
    function discover(/** @type {string[]} */ queries, /** @type {() => void} */ done) {
        if (queries.length === 0) {
            failedAt = "no search finds a track that can be played; give a link";
            skip("a track to play", failedAt);
            done();
            return;
        }
        search(queries[0], function (result) {
            for (var i = 0; i < result.numTracks(); ++i) {
                var track = result.track(i);
                if (track.isLoaded() && track.getAvailability() && track.duration() > 5000) {
                    found.tracks.push(track);
                }
            }
            if (found.tracks.length === 0) {
                discover(queries.slice(1), done);
                return;
            }
            found.query = queries[0];
            take(found.tracks[0]);
            done();
        });
    }
    /** @param {Spotify.Track} track */
    function take(track) {
        found.track = track;
        found.album = track.album();
        found.artist = track.artist(0);
    }

    add("a track to play", "login", function (done) {
        // A track that nobody has stops loading once a library that is being read is complete.
        var track = Spotify.Track.create(options.track || "spotify:track:0000000000000000000000");
        var patience = 600;
        until(function () {
            return track.error() !== Spotify.SP_ERROR.SP_ERROR_IS_LOADING || --patience === 0;
        }, function () {
            if (!options.track) {
                discover("a e i o u the 1 s".split(" "), done);
                return;
            }
            if (same("the track of the link", Spotify.errorMessage(track.error()),
                Spotify.errorMessage(0))) {
                found.tracks.push(track);
                found.query = track.name();
                take(track);
            } else {
                failedAt = "the link leads to none";
            }
            done();
        });
    }, 120);

    add("Track", "track", function (done) {
        checkObject("Track", found.track, 0);
        same("Track.error()", found.track.error(), 0);
        same("indexes are truncated", found.track.artist(0.9).name(), found.artist.name());
        throws("Track.artist(numArtists())",
            function () { return found.track.artist(found.track.numArtists()); }, NOT_RETRIEVED);
        ["Track", "Album", "Artist"].forEach(function (name) {
            var maker = /** @type {any} */ (Spotify)[name];
            var other = name === "Album" ? "artist" : "album";
            checkArguments("Spotify." + name, maker, "- create(t)");
            ["no link", "", "spotify:" + other + ":4SprhmPLcL2HXbgohKWAmd"].forEach(function (link) {
                throws("Spotify." + name + ".create(" + show(link) + ")",
                    function () { return maker.create(link); }, NOT_RETRIEVED);
            });
        });
        checkArguments("Session", session, "- playerLoad(T) - playerPrefetch(T)");
        done();
    });

    add("Album and Artist", "track", function (done) {
        checkObject("Album", found.album, -1);
        checkObject("Artist", found.artist, -1);
        done();
    });

    add("Search", "track", function (done) {
        checkArguments("Spotify.Search", Spotify.Search, CREATE.Search);
        var lent = search(found.query, function (result) {
            found.search = result;
            same("the function of a search gets a wrapper of its own", result === lent, false);
            checkObject("Search", result, -1);
            same("Search.query()", result.query(), found.query);
            same("Search.error()", result.error(), 0);
            same("both wrappers have the same tracks", lent.numTracks(), result.numTracks());
            answers("Search.track(0)", "T", function () { return result.track(0); });
            throws("Search.track(numTracks())",
                function () { return result.track(result.numTracks()); }, NOT_RETRIEVED);
            done();
        });
        has("what Search.create answers", lent, namesOf("Search"));
    });

    add("Albumbrowse", "track", function (done) {
        checkArguments("Spotify.Albumbrowse", Spotify.Albumbrowse, CREATE.Albumbrowse);
        var lent = Spotify.Albumbrowse.create(found.album, guarded(function (result) {
            same("the function of a browse gets a wrapper of its own", result === lent, false);
            checkObject("Albumbrowse", result, 0, ["copyright"]);
            same("Albumbrowse.error()", result.error(), 0);
            same("Albumbrowse.album()", result.album().name(), found.album.name());
            done();
        }));
    });

    add("Artistbrowse", "track", function (done) {
        checkArguments("Spotify.Artistbrowse", Spotify.Artistbrowse, CREATE.Artistbrowse);
        var types = Spotify.SP_ARTISTBROWSE_TYPE;
        Spotify.Artistbrowse.create(found.artist, types.SP_ARTISTBROWSE_FULL,
            guarded(function (full) {
                checkObject("Artistbrowse", full, -1);
                same("Artistbrowse.error()", full.error(), 0);
                same("Artistbrowse.artist()", full.artist().name(), found.artist.name());
                Spotify.Artistbrowse.create(found.artist, types.SP_ARTISTBROWSE_NO_TRACKS,
                    guarded(function (noTracks) {
                        same("SP_ARTISTBROWSE_NO_TRACKS", noTracks.numTophitTracks(), 0);
                        Spotify.Artistbrowse.create(found.artist, types.SP_ARTISTBROWSE_NO_ALBUMS,
                            guarded(function (noAlbums) {
                                same("SP_ARTISTBROWSE_NO_ALBUMS", noAlbums.numAlbums(), 0);
                                done();
                            }));
                    }));
            }));
    });

    add("Toplistbrowse", "login", function (done) {
        checkArguments("Spotify.Toplistbrowse", Spotify.Toplistbrowse, CREATE.Toplistbrowse);
        Spotify.Toplistbrowse.create(Spotify.SP_TOPLIST_TYPE.SP_TOPLIST_TYPE_TRACKS,
            Spotify.SP_TOPLIST_REGION.SP_TOPLIST_REGION_EVERYWHERE, "",
            guarded(function (result) {
                checkObject("Toplistbrowse", result, -1);
                same("Toplistbrowse.error()", result.error(), 0);
                same("a list of tracks has no albums and artists",
                    result.numAlbums() + result.numArtists(), 0);
                done();
            }));
    });

    // ---- Images ----

    add("SpImage", "track", function (done) {
        checkArguments("Spotify.SpImage", Spotify.SpImage, CREATE.SpImage);
        var id = "";
        try {
            id = found.album.cover(0);
        } catch (error) {
            skip("SpImage", "the album has no cover");
            done();
            return;
        }
        var image = Spotify.SpImage.create(id);
        watch("SpImage", image);
        until(function () { return image.isLoaded(); }, function () {
            found.image = image;
            checkObject("SpImage", image, -1);
            same("SpImage.error()", image.error(), 0);
            same("SpImage.id()", image.id(), id);
            same("SpImage.format()", image.format(), 0);
            same("SpImage.data() is a JPEG in Base64", image.data().slice(0, 4), "/9j/");
            same("SpImage.create(id) answers a new wrapper",
                Spotify.SpImage.create(id) === image, false);
            var nobody = Spotify.SpImage.create("AAAAAAAAAAAAAAAAAAAAAAAAAAA=");
            when(nobody, "ImageLoaded", always, function (told) {
                same("\"ImageLoaded\" brings its image", told, nobody);
                holds("an image that is nowhere has an error", nobody.error() !== 0, "0", "an error");
                throws("SpImage.data() without an image", function () { return nobody.data(); },
                    "Image size is zero");
                done();
            });
        });
    });

    // ---- Playlists ----

    add("Playlistcontainer", "login", function (done) {
        var container = session.Playlistcontainer();
        watch("Playlistcontainer", container);
        until(function () { return container.isLoaded(); }, function () {
            found.container = container;
            var count = container.numPlaylists();
            checkObject("Playlistcontainer", container, -1);
            throws("Playlistcontainer.playlist(numPlaylists())",
                function () { return container.playlist(count); }, NOT_RETRIEVED);
            if (count > 0) {
                checkAnswers("Playlistcontainer", container, 0);
            } else {
                skip("the entries of Playlistcontainer", "the user has no playlist");
            }
            try {
                /** @type {any} */ (container).onPlaylistMoved = function () {};
            } catch (error) {
                // As good as silence.
            }
            same("onPlaylistMoved can only be read", container.onPlaylistMoved, null);
            skip("Playlistcontainer.addPlaylist", "a page cannot take back what it adds");
            done();
        });
    });

    add("the lists of a user", "login", function (done) {
        answers("Session.starredForUserCreate", "P",
            function () { return session.starredForUserCreate(options.user); });
        answers("Session.publishedContainerForUserCreate", "C",
            function () { return session.publishedContainerForUserCreate(options.user); });
        checkArguments("Spotify.Playlist", Spotify.Playlist, CREATE.Playlist);
        throws("Spotify.Playlist.create(\"no link\")",
            function () { return Spotify.Playlist.create("no link"); }, NOT_RETRIEVED);
        done();
    });

    /** Ends what a failed step may have left. */
    function unstar() {
        if (found.starred) {
            found.starred = false;
            found.star.setStarred(false);
        }
    }

    add("Playlist", "track", function (done) {
        var star = found.tracks.filter(function (/** @type {Spotify.Track} */ track) {
            return !track.isStarred();
        })[0];
        var list = session.starredCreate();
        watch("Playlist", list);
        until(function () { return list.isLoaded(); }, function () {
            found.playlist = list;
            checkObject("Playlist", list, -1);
            same("Spotify.Playlist.create(uri())", Spotify.Playlist.create(list.uri()).uri(),
                list.uri());
            same("Playlist.owner()", list.owner().canonicalName(), found.user.canonicalName());
            same("Playlist.subscribers().item(0) and [0] agree, or both are out of range",
                outcome(function () { return list.subscribers().item(0); }),
                outcome(function () { return list.subscribers()[0]; }));
            throws("Playlist.subscribers()[-1]", function () { return list.subscribers()[-1]; },
                "Invalid index");
            var inRam = list.isInRam();
            same("Playlist.setInRam", list.setInRam(inRam), undefined);
            if (!star) {
                skip("changes of a playlist", "every track that was found is starred");
                done();
                return;
            }
            found.star = star;
            changePlaylist(list, star, done);
        });
    });

    /** @param {() => any} call */
    function outcome(call) {
        try {
            return show(call());
        } catch (error) {
            return messageOf(error);
        }
    }

    /**
     * Stars the track, looks at its entry, takes the star away, and the same by `addTracks`.
     * @param {Spotify.Playlist} list @param {Spotify.Track} star @param {() => void} done
     */
    function changePlaylist(list, star, done) {
        var before = list.numTracks();
        when(list, "TracksAddedEvent", always, function (told, tracks, position) {
            same("\"TracksAddedEvent\" brings its playlist", told, list);
            checkArray("a list of tracks", tracks, "Out of bounds array access");
            same("what was added, by function", tracks.item(0).name(), star.name());
            same("what was added, by index", tracks[0].name(), star.name());
            same("Playlist.numTracks() has it", list.numTracks(), before + 1);
            same("Track.isStarred()", star.isStarred(), true);
            checkAnswers("Playlist", list, position);
            same("Playlist.track(position)", list.track(position).name(), star.name());
            same("Spotify.Track.create(placeholderUri(position))",
                Spotify.Track.create(list.placeholderUri(position)).name(), star.name());
            holds("Playlist.trackCreateTime(position) is in seconds",
                list.trackCreateTime(position) > 1e9 && list.trackCreateTime(position) < 1e10,
                String(list.trackCreateTime(position)), "1e9 to 1e10");
            var seen = !list.trackSeen(position);
            when(list, "TrackSeenChanged", always, function (_, at, now) {
                same("\"TrackSeenChanged\" brings position and flag", at + " " + now,
                    position + " " + seen);
                same("Playlist.trackSeen(position)", list.trackSeen(position), seen);
                takeAway(position);
            });
            same("Playlist.trackSetSeen", list.trackSetSeen(position, seen), undefined);
        });
        found.starred = true;
        same("Track.setStarred(true)", star.setStarred(true), undefined);

        /** @param {number} position */
        function takeAway(position) {
            when(list, "TracksRemoved", always, function (_, positions) {
                checkArray("a list of numbers", positions, "Out of bounds array access");
                same("\"TracksRemoved\" brings the position", positions[0], position);
                positions[0] = 5;
                same("a list of numbers can be written", positions.item(0), 5);
                throws("positions[0] = \"5\"", function () { positions[0] = "5"; }, "Not a number");
                addAgain();
            });
            unstar();
        }
        function addAgain() {
            when(list, "TracksAddedEvent", always, function (_, tracks) {
                same("Playlist.addTracks adds the track", tracks[0].name(), star.name());
                when(list, "TracksRemoved", always, function () {
                    same("the playlist is as before", list.numTracks(), before);
                    done();
                });
                unstar();
            });
            found.starred = true;
            same("Playlist.addTracks", list.addTracks(star, list.numTracks()), undefined);
        }
    }
    /** @param {string} what @param {any} array @param {string} outOfRange */
    function checkArray(what, array, outOfRange) {
        same(what + ": length", array.length, 1);
        checkArguments(what, array, "- item(n)");
        throws(what + ": item(1)", function () { return array.item(1); }, outOfRange);
        throws(what + ": [1]", function () { return array[1]; }, outOfRange);
        throws(what + ": item(-1)", function () { return array.item(-1); }, outOfRange);
        throws(what + ": another name", function () { return array.nothing; }, "bad_lexical_cast");
    }

    add("the user's stars", "login", function (done) {
        unstar();
        done();
    });

    // ---- Playback ----

    add("playback", "track", function (done) {
        var track = found.track;
        var ended = false;
        answers("Session.playerPrefetch", "n", function () { return session.playerPrefetch(track); });
        same("Session.playerLoad", session.playerLoad(track), 0);
        same("Session.playerPlay(true)", session.playerPlay(true), 0);
        when(plugin, "TrackProgress", function (at) { return at > 1.5; }, function () {
            same("Session.playerPlay(false)", session.playerPlay(false), 0);
            /** @type {number[]} */
            var positions = [];
            when(plugin, "TrackProgress", function (at) { return positions.push(at) === 5; },
                function () {
                    var moved = positions[4] - positions[2];
                    holds("a pause holds the position", moved < 0.05, moved + " s later",
                        "less than 0.05 s");
                    goOn(positions[4]);
                });
        });
        /** @param {number} held */
        function goOn(held) {
            same("Session.playerPlay(true) again", session.playerPlay(true), 0);
            when(plugin, "TrackProgress", function (at) { return at > held + 0.3; }, function () {
                when(session, "EndOfTrack", always, function () { ended = true; });
                when(plugin, "TrackComplete", always, function () {
                    same("\"TrackComplete\" follows \"EndOfTrack\"", ended, true);
                    same("Session.playerUnload()", session.playerUnload(), undefined);
                    done();
                });
                same("Session.playerSeek", session.playerSeek(track.duration() - 1500), undefined);
            });
        }
    });

    add("a track that is nowhere", "login", function (done) {
        var nowhere = Spotify.Track.create("spotify:track:0000000000000000000001");
        same("its name", nowhere.name(), "");
        throws("its album", function () { return nowhere.album(); }, NOT_RETRIEVED);
        holds("Session.playerLoad of it", session.playerLoad(nowhere) !== 0, "0", "an error");
        done();
    });

    // ---- Logout ----

    add("a logout", "login", function (done) {
        if (found.remembers) {
            same("Session.forgetMe()", session.forgetMe(), 0);
            same("Session.rememberedUser() then", session.rememberedUser(), null);
        }
        when(session, "LoggedOut", always, function () {
            holds("Session.connectionstate() then", session.connectionstate() !== 1, "1", "another");
            done();
        });
        /** @type {any} */
        var untouched = {};
        if (found.playlist) {
            untouched.playlist = session.starredCreate();
        }
        if (found.image) {
            untouched.image = Spotify.SpImage.create(found.image.id());
        }
        same("Session.logout()", session.logout(), undefined);
        ["user", "track", "album", "artist", "search"].forEach(function (name) {
            var object = found[name];
            if (object) {
                throws("a member of the " + name + " after a logout",
                    function () { return object.isLoaded(); }, NOT_RETRIEVED);
            }
        });
        if (found.track) {
            throws("a wrong argument of an empty track", function () { return found.track.artist("0"); },
                "Not a number");
            throws("Session.playerLoad of an empty track",
                function () { return session.playerLoad(found.track); }, NOT_RETRIEVED);
        }
        Object.keys(untouched).forEach(function (name) {
            // A host may keep a function that was read before.
            same("a logout takes the members of the " + name, "isLoaded" in untouched[name], false);
            same("but not its listeners", typeof untouched[name].addEventListener, "function");
            throws("a member of the " + name + " that was read before", function () { found[name].isLoaded(); });
        });
        if (found.container) {
            answers("a container outlives it: owner()", "U",
                function () { return found.container.owner(); });
        }
    });

    add("a login by blob", "blob", function (done) {
        when(session, "LoggedIn", always, function (error) {
            same("a blob stands in for the password", error, 0);
            when(session, "LoggedOut", always, function () { done(); });
            session.logout();
        });
        session.login(options.user, "", false, found.blob);
    });

    add("events", "session", function (done) {
        Object.keys(found.watched).forEach(function (key) {
            var seen = found.watched[key];
            var row = seen.row;
            if (seen.listener === 0) {
                skip(key, "nothing here raised it");
                return;
            }
            holds(key + " brings " + (row.takes ? row.takes.split("").map(nameOf).join(", ") :
                "nothing"), seen.fault === "", seen.fault, "values of these kinds");
            if (row.attribute) {
                holds(key + " calls " + row.attribute, seen.handler > 0, "never", "calls");
            }
        });
        done();
    });

    // ---- TAP --------------------------------------------------------------------------------------

    /** What is checked: the plug-in with its library, and the browser. */
    function setting() {
        return "Sonolet " + Spotify.Sonolet.version() +
            (typeof navigator === "undefined" ? "" : ", " + navigator.userAgent);
    }

    /**
     * As YAML has it.
     * @param {string} [text]
     */
    function quote(text) { return "'" + String(text).replace(/'/g, "''") + "'"; }

    /** @param {Result} result */
    function print(result) {
        console.log((result.ok ? "ok " : "not ok ") + result.number + " - " +
            result.what.replace(/[#\n]/g, " ") + (result.skip ? " # SKIP " + result.skip : ""));
        if (!result.ok) {
            console.log("  ---\n  expected: " + quote(result.expected) + "\n  got: " +
                quote(result.got) + "\n  ...");
        }
    }

    /**
     * Runs everything, with TAP on the console. Once for each page.
     * @param {Options} account
     * @param {(result: Result) => void} [resultListener]
     * @param {(counts: Counts) => void} [endListener]
     */
    function start(account, resultListener, endListener) {
        console.log("TAP version 13");
        if (typeof Spotify === "undefined") {
            console.log("Bail out! There is no global \"Spotify\": the plug-in is not loaded");
            throw new Error("There is no global \"Spotify\": the plug-in is not loaded");
        }
        options = account;
        session = Spotify.Session;
        plugin = Spotify.Sonolet;
        console.log("# " + setting());
        onResult = function (result) {
            print(result);
            if (resultListener) {
                resultListener(result);
            }
        };
        onEnd = function () {
            console.log("1.." + (counts.passed + counts.failed + counts.skipped));
            console.log("# " + counts.passed + " passed, " + counts.failed + " failed, " +
                counts.skipped + " skipped");
            if (endListener) {
                endListener(counts);
            }
        };
        step = 0;
        next();
    }

    return { defaults: DEFAULTS, setting: setting, start: start };
}());

if (typeof document === "undefined") {
    conformance.start(conformance.defaults, undefined, function () { close(); });
}
