// Search, a track that can be played, its album and artist, and what is browsed.

"use strict";

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
