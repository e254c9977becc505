// @ts-check
// Starts the player and joins its parts: the session decides whether the sign-in or the app is seen.

import { closeDialog, openDialog, openMenu } from "./page/dialog.js";
import { byId, h, icon, replace } from "./page/dom.js";
import { forgetImages } from "./music/images.js";
import { shownName, watchMetadata } from "./music/library.js";
import { notify } from "./page/notices.js";
import { watchHistory } from "./music/history.js";
import { reset, watchPlayer } from "./music/playback.js";
import { startRemote } from "./page/remote.js";
import { parseAddress, reload, startRouter, stopRouter } from "./page/router.js";
import { Scope } from "./page/scope.js";
import { connection, signOut, signedIn, signedOut, startSession } from "./music/session.js";
import { hasMargins, setMargins, startTheme, toggleTheme } from "./page/theme.js";
import { albumsView, artistsView } from "./views/all.js";
import { albumView } from "./views/album.js";
import { artistView } from "./views/artist.js";
import { homeView } from "./views/home.js";
import { peopleView } from "./views/people.js";
import { startPlayerBar } from "./views/playerbar.js";
import { playingView } from "./views/playing.js";
import { inboxView, playlistView, starredView } from "./views/playlist.js";
import { recentView } from "./views/recent.js";
import { searchView, startSearchField } from "./views/search.js";
import { fillSidebar } from "./views/sidebar.js";
import { showGreeting, showSignIn, showSigningIn, startSignIn } from "./views/signin.js";

const views = {
    home: homeView,
    search: searchView,
    albums: albumsView,
    artists: artistsView,
    album: albumView,
    artist: artistView,
    playlist: playlistView,
    starred: starredView,
    inbox: inboxView,
    people: peopleView,
    playing: playingView,
    recent: recentView,
    missing: async () => {
        throw new Error("There is nothing at this address.");
    },
};

/**
 * What lasts as long as somebody is signed in; null while nobody is.
 * @type {Scope | null}
 */
let signedInScope = null;

function start() {
    startTheme(parseAddress().options.get("theme"));
    if (typeof Spotify === "undefined") {
        showSignIn("This browser has no Sonolet plug-in, so there is nothing to play with.", true);
        return;
    }
    startRemote(showKeys);
    startSignIn();
    startSearchField();
    startPlayerBar();
    byId("menu").addEventListener("click", showMenu);
    byId("back").addEventListener("click", () => history.back());
    signedIn.add(openApp);
    signedOut.add((why) => {
        closeApp();
        showSignIn(why);
    });
    connection.add((connected) => {
        const back = connected && !byId("connection").hidden;
        byId("connection").hidden = connected;
        if (back && signedInScope !== null) {
            reload();
        }
    });
    try {
        if (startSession()) {
            showSigningIn();
        } else {
            showSignIn("");
        }
    } catch (error) {
        showSignIn("The music service did not start. Reload the page to try again.", true);
        return;
    }
    watchMetadata();
    watchPlayer();
    watchHistory();
    Spotify.Session.addEventListener("MessageToUser", (message) =>
        signedInScope === null ? showGreeting(message) : notify(message));
}

function openApp() {
    signedInScope = new Scope();
    byId("signin").hidden = true;
    byId("app").hidden = false;
    byId("user").textContent = shownName();
    fillSidebar(signedInScope);
    startRouter(views);
}

function closeApp() {
    closeDialog();
    byId("app").hidden = true;
    document.title = "Sonolet Player";
    if (signedInScope !== null) {
        reset();
        stopRouter();
        signedInScope.close();
        signedInScope = null;
        forgetImages();
    }
}

function showMenu() {
    openMenu(shownName(), [
        { label: "Light or dark", icon: icon("theme"), run: toggleTheme },
        { label: hasMargins() ? "No margins" : "Margins for a television that hides its edges",
            icon: icon("screen"), run: () => setMargins(!hasMargins()) },
        { label: "Keys", icon: icon("keys"), run: showKeys },
        { label: "Sign out", icon: icon("exit"), run: () => {
            closeApp();
            signOut();
        } },
    ]);
}

function showKeys() {
    const keys = [
        ["Arrows", "move, as on a remote control"],
        ["Enter", "open or play"],
        ["Space", "play or pause"],
        ["Ctrl + →, Ctrl + ←", "next track, previous track"],
        ["→, ← on the progress bar", "five seconds on, back"],
        ["Alt + ↑, Alt + ↓", "move a track of the queue"],
        ["A letter", "to it, among albums and artists"],
        ["Menu", "what can be done with a track"],
        ["/", "search"],
        ["Page Up, Page Down, Home, End", "through lists"],
        ["Backspace, Back", "back"],
        ["Escape", "close what is open"],
    ];
    openDialog("Keys", (body) => {
        replace(body, h("dl", { class: "keys" }, keys.map(([key, what]) =>
            h("div", null, h("dt", null, key), h("dd", null, what)))));
    });
}

start();
