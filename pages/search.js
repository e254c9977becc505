// Searches the library, prints what was found as a table, and plays the top result.

const QUERY = "low tide";
const USER = { name: "listener", password: "listener" };

const session = Spotify.Session;
const { SP_ERROR_OK, SP_ERROR_IS_LOADING } = Spotify.SP_ERROR;
const check = (/** @type {string} */ what, /** @type {Spotify.ErrorCode} */ error) => {
    if (error !== SP_ERROR_OK) {
        throw new Error(`${what}: ${Spotify.errorMessage(error)}`);
    }
};

session.addEventListener("LoggedIn", (error) => {
    check("login", error);
    console.log("logged in, reading the library");
    whenScanned(() => search(QUERY));
});
session.addEventListener("StreamingError", (error) => check("playback", error));

/**
 * The library is complete once a track that nobody has is known to be missing.
 * @param {() => void} ready
 */
function whenScanned(ready) {
    const probe = Spotify.Track.create("spotify:track:0000000000000000000000");
    const look = () => {
        if (probe.error() !== SP_ERROR_IS_LOADING) {
            session.removeEventListener("MetadataUpdated", look);
            ready();
        }
    };
    session.addEventListener("MetadataUpdated", look);
    look();
}

/** @param {string} query */
function search(query) {
    // Offsets and counts of tracks, albums, artists and playlists follow the query, then the type.
    Spotify.Search.create(query, 0, 10, 0, 5, 0, 5, 0, 0, 0, (found) => {
        check("search", found.error());
        console.log(`"${found.query()}": ${found.totalTracks()} tracks, ` +
            `${found.totalAlbums()} albums, ${found.totalArtists()} artists`);
        if (found.numTracks() === 0) {
            const better = found.didYouMean();
            console.log(better ? `did you mean "${better}"?` : "nothing found");
            close();
            return;
        }
        table(list(found.numTracks(), (i) => found.track(i)).map((track) => [
            track.name(),
            list(track.numArtists(), (i) => track.artist(i).name()).join(", "),
            track.album().name(),
            time(track.duration() / 1000),
        ]), ["track", "artist", "album", "time"]);
        showCover(found.track(0).album());
        play(found.track(0));
    });
}

/** @param {Spotify.Album} album */
function showCover(album) {
    let id = "";
    try {
        id = album.cover(0);
    } catch (error) {
        console.log(`"${album.name()}" has no cover`);
        return;
    }
    const image = Spotify.SpImage.create(id);
    const show = () => {
        if (image.error() !== SP_ERROR_OK) {
            console.log(`the cover of "${album.name()}": ${Spotify.errorMessage(image.error())}`);
            return;
        }
        const jpeg = decode(image.data());
        const size = pixels(jpeg);
        console.log(`the cover of "${album.name()}": ` +
            `${size.width} x ${size.height} pixels, ${jpeg.length} bytes`);
    };
    if (image.isLoaded()) {
        show();
    } else {
        image.addEventListener("ImageLoaded", show);
    }
}

/** @param {Spotify.Track} track */
function play(track) {
    Spotify.Sonolet.addEventListener("TrackComplete", () => {
        console.log("complete");
        close();
    });
    console.log(`playing "${track.name()}"`);
    check("load", session.playerLoad(track));
    check("play", session.playerPlay(true));
}

// ---- Helpers ----

/**
 * @template T
 * @param {number} count
 * @param {(index: number) => T} at
 */
function list(count, at) {
    return Array.from({ length: count }, (_, i) => at(i));
}

/** @param {number} seconds */
function time(seconds) {
    const whole = Math.floor(seconds);
    return `${Math.floor(whole / 60)}:${String(whole % 60).padStart(2, "0")}`;
}

/**
 * @param {string[][]} rows
 * @param {string[]} head
 */
function table(rows, head) {
    const widths = head.map((title, column) =>
        Math.max(...rows.concat([head]).map((row) => row[column].length)));
    for (const row of [head, widths.map((width) => "-".repeat(width)), ...rows]) {
        console.log(row.map((cell, column) => cell.padEnd(widths[column])).join("  ").trimEnd());
    }
}

/**
 * Bytes from Base64 (RFC 4648).
 * @param {string} text
 */
function decode(text) {
    const alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const bytes = [];
    let bits = 0;
    let held = 0;
    for (const character of text.replace(/=+$/, "")) {
        held = (held << 6 | alphabet.indexOf(character)) & 0xffffff;
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            bytes.push(held >> bits & 0xff);
        }
    }
    return bytes;
}

/**
 * The size that a JPEG's frame header tells (ITU-T T.81, B.2.2).
 * @param {number[]} jpeg
 */
function pixels(jpeg) {
    const short = (/** @type {number} */ at) => jpeg[at] << 8 | jpeg[at + 1];
    for (let at = 2; at + 9 < jpeg.length; at += 2 + short(at + 2)) {
        const marker = jpeg[at + 1];
        if (marker >= 0xc0 && marker <= 0xcf && ![0xc4, 0xc8, 0xcc].includes(marker)) {
            return { width: short(at + 7), height: short(at + 5) };
        }
    }
    throw new Error("no JPEG");
}

session.create(Spotify.SessionConfig);
check("login", session.login(USER.name, USER.password, false, ""));
