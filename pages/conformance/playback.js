// A track from its start to its end.

"use strict";

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
