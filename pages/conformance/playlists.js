// Playlists, their changes, and lists of values.

"use strict";

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
