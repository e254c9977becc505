// What a logout leaves, a login by blob, and which events have come.

"use strict";

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
