// Plays a track of the demo library, in ten lines.
const { Session, SessionConfig, Sonolet, Track } = Spotify;
let playing = false;
const play = () => { // at login, or when the track's data has come
    const track = Track.create("spotify:track:3Bv2coKkW2f26EGHu2IofY"); // "Ropes and Tar"
    playing = playing || (Session.playerLoad(track) === 0 && Session.playerPlay(true) === 0);
};
Session.onLoggedIn = Session.onMetaDataUpdated = play;
Sonolet.onTrackComplete = () => close();
Session.create(SessionConfig);
Session.login("listener", "listener", false, "");
