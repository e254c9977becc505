// A player that is never closed and never signed out: one tune after the other, with what people do
// meanwhile, and a reload every hour. At the end of each hour it says how far it came.
const HOUR = 3600 * 1000;
const session = Spotify.Session;
const words = ["low tide", "a", "salt wind", "year:1990-2030", "nothing like it", "fog"];
const done = { loaded: 0, complete: 0, searches: 0, images: 0, errors: 0 };
let tracks = [];
let turn = 0;

function look(found) {
    ++done.searches;
    if (found.numTracks() === 0) {
        return;
    }
    const track = found.track(turn % found.numTracks());
    tracks.push(track);
    track.setStarred(turn % 2 === 0);
    Spotify.Albumbrowse.create(track.album(), (album) => album.numTracks());
    Spotify.Artistbrowse.create(track.artist(0), 0, (artist) => artist.numAlbums());
    try {
        const image = Spotify.SpImage.create(track.album().cover(turn % 3));
        image.addEventListener("ImageLoaded", () => {
            done.images += image.data().length > 0 ? 1 : 0;
        });
    } catch (error) {
        // An album without a cover.
    }
}

function search() {
    const query = words[turn++ % words.length];
    Spotify.Search.create(query, 0, 20, 0, 5, 0, 5, 0, 5, 0, look);
    const lists = session.Playlistcontainer();
    for (let i = 0; i < lists.numPlaylists(); ++i) {
        const list = lists.playlist(i);
        for (let n = 0; n < list.numTracks(); ++n) {
            list.track(n).name();
        }
    }
}

function playNext() {
    const track = tracks.shift();
    if (track !== undefined && track.isLoaded() && session.playerLoad(track) === 0) {
        ++done.loaded;
        session.playerPlay(true);
    } else {
        setTimeout(playNext, 5000);
    }
}

session.addEventListener("LoggedIn", (error) => {
    done.errors += error === 0 ? 0 : 1;
    search();
    playNext();
    setInterval(search, 20 * 1000);
});
session.addEventListener("StreamingError", () => ++done.errors);
Spotify.Sonolet.addEventListener("TrackComplete", () => {
    ++done.complete;
    playNext();
});
setTimeout(() => {
    console.log(JSON.stringify(done));
    location.reload();
}, HOUR);
session.create(Spotify.SessionConfig);
session.login("listener", "listener", false, "");
