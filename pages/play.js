// Plays one track from start to end and tells what happens. Links of other tracks: ./sonolet tracks

const LINK = "spotify:track:0INEKqIDiUKLCYorc7sG9d"; // "Kettle Song", of the demo library
const USER = { name: "listener", password: "listener" };

const session = Spotify.Session;
const say = (/** @type {unknown[]} */ ...words) => console.log(...words);
const check = (/** @type {string} */ what, /** @type {Spotify.ErrorCode} */ error) => {
    if (error !== Spotify.SP_ERROR.SP_ERROR_OK) {
        throw new Error(`${what}: ${Spotify.errorMessage(error)}`);
    }
};

session.addEventListener("LoggedIn", (error) => {
    check("login", error);
    say("logged in as", session.user().canonicalName());
    awaitMetadata(Spotify.Track.create(LINK), play);
});
session.addEventListener("StreamingError", (error) => check("playback", error));
session.addEventListener("ConnectionError", (error) => check("connection", error));

/**
 * A link names a track at once; what is known of it may come later.
 * @param {Spotify.Track} track
 * @param {(track: Spotify.Track) => void} ready
 */
function awaitMetadata(track, ready) {
    if (track.isLoaded()) {
        ready(track);
        return;
    }
    const look = () => {
        const error = track.error();
        if (error === Spotify.SP_ERROR.SP_ERROR_IS_LOADING) {
            return;
        }
        session.removeEventListener("MetadataUpdated", look);
        check(`${LINK} is not in this library`, error);
        ready(track);
    };
    session.addEventListener("MetadataUpdated", look);
}

/** @param {Spotify.Track} track */
function play(track) {
    const artists = Array.from({ length: track.numArtists() }, (_, i) => track.artist(i).name());
    const album = track.album();
    say(`track: "${track.name()}" by ${artists.join(", ")}`);
    say(`from "${album.name()}" (${album.year()}), ${time(track.duration() / 1000)}`);

    let lastSecond = -1;
    Spotify.Sonolet.addEventListener("TrackProgress", (position) => {
        if (Math.floor(position) > lastSecond) {
            lastSecond = Math.floor(position);
            say(`  ${time(position)} of ${time(track.duration() / 1000)}`);
        }
    });
    Spotify.Sonolet.addEventListener("TrackComplete", () => {
        say("complete");
        close();
    });
    check("load", session.playerLoad(track));
    check("play", session.playerPlay(true));
}

/** @param {number} seconds */
function time(seconds) {
    const whole = Math.floor(seconds);
    return `${Math.floor(whole / 60)}:${String(whole % 60).padStart(2, "0")}`;
}

session.create(Spotify.SessionConfig);
say(`session created, libspotify API ${Spotify.SPOTIFY_API_VERSION}, plug-in ${Spotify.Sonolet.version()}`);
check("login", session.login(USER.name, USER.password, false, ""));
