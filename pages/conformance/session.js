// The session, its events, and the account.

"use strict";

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
