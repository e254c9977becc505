// Plays two tracks of the demo library, one after the other.
const queue = ["spotify:track:3Bv2coKkW2f26EGHu2IofY", "spotify:track:0INEKqIDiUKLCYorc7sG9d"];
const { Session, SessionConfig, Sonolet, Track } = Spotify;
let ready = true;
const next = () => { // at login, when a track's data has come, after a track
    if (ready && queue.length > 0 && Session.playerLoad(Track.create(queue[0])) === 0) {
        ready = Session.playerPlay(true) !== 0;
        queue.shift();
    }
};
Session.onLoggedIn = Session.onMetaDataUpdated = next;
Session.onEndOfTrack = () => queue.length > 0 && Session.playerPrefetch(Track.create(queue[0]));
Sonolet.onTrackComplete = () => {
    ready = true;
    if (queue.length > 0) {
        next();
    } else {
        console.log("both complete");
        close();
    }
};
Session.create(SessionConfig);
Session.login("listener", "listener", false, "");
