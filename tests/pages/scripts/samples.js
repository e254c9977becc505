// Plays every track of the library, one after the other, for who compares the samples.
const { Search, Session, SessionConfig, Sonolet } = Spotify;
let queue = [];

const playNext = () => {
    if (queue.length === 0) {
        close();
        return;
    }
    const { track } = queue.shift();
    if (Session.playerLoad(track) !== 0 || Session.playerPlay(true) !== 0) {
        throw new Error(`cannot play ${track.name()}`);
    }
};

// As soon as the library has been read: the demo library has twelve.
const begin = () => Search.create("year:1000-2999", 0, 100, 0, 0, 0, 0, 0, 0, 0, (found) => {
    if (found.totalTracks() < 12) {
        setTimeout(begin, 100);
        return;
    }
    for (let i = 0; i < found.numTracks(); ++i) {
        const track = found.track(i);
        queue.push({ track, place: [track.album().name(), track.disc(), track.index()].join() });
    }
    queue.sort((left, right) => (left.place < right.place ? -1 : 1));
    playNext();
});

Session.onLoggedIn = begin;
Sonolet.onTrackComplete = playNext;
Session.create(SessionConfig);
Session.login("listener", "listener", false, "");
