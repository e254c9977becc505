// Plays a track, and tells of it on the console and in "state".
import { LINK } from "./lib/link.js";

const { Session, SessionConfig, Sonolet, Track } = Spotify;

function play() {
    if (!state.loaded && Session.playerLoad(Track.create(LINK)) === 0) {
        state.loaded = Session.playerPlay(true) === 0;
    }
}

document.getElementById("pause").addEventListener("click", () => {
    state.paused = Session.playerPlay(false) === 0;
});
addEventListener("unload", () => console.log("unload:", Sonolet.version().length > 0));
Session.onLoggedIn = Session.onMetaDataUpdated = play;
Sonolet.addEventListener("TrackProgress", (position) => { state.position = position; });

Sonolet.onTrackComplete = () => console.log("complete");

Session.create(SessionConfig);
play();
if (!state.loaded) {
    Session.login("listener", "listener", false, "");
}
await until(() => state.position > 0.2);
console.log("plays from", self.origin);
document.documentElement.dataset.ready = "true";
