// Plays a track of the demo library, in ten lines.
const { Session, SessionConfig, Sonolet, Track } = Spotify;
Session.create(SessionConfig);
Session.onLoggedIn = () => {
    const track = Track.create("spotify:track:3Bv2coKkW2f26EGHu2IofY"); // "Ropes and Tar"
    Session.playerLoad(track);
    Session.playerPlay(true);
};
Sonolet.onTrackComplete = () => close();
Session.login("listener", "listener", false, "");
