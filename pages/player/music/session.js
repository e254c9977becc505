// @ts-check
// Signing in and out, and the connection.

import { Signal } from "../page/scope.js";

/** @type {"out" | "signing in" | "in"} */
let state = "out";

/** @type {Signal<void>} */
export const signedIn = new Signal();
/**
 * Why nobody is signed in (any more); "" when that was wanted.
 * @type {Signal<string>}
 */
export const signedOut = new Signal();
/**
 * Whether the service can be reached.
 * @type {Signal<boolean>}
 */
export const connection = new Signal();

const CONNECTED = 1; // what `connectionstate` answers then

/** Creates the session and tries the remembered user; answers whether one is being signed in. */
export function startSession() {
    const { Session, SessionConfig, SP_ERROR } = Spotify;
    SessionConfig.userAgent = "Sonolet Player";
    Session.create(SessionConfig);
    Session.addEventListener("LoggedIn", (error) => {
        if (error === SP_ERROR.SP_ERROR_OK) {
            const late = state === "in";
            state = "in";
            late ? connection.emit(true) : signedIn.emit();
        } else if (state === "signing in") {
            state = "out";
            signedOut.emit(why(error));
        }
    });
    Session.addEventListener("LoggedOut", () => {
        // The one of the page before comes while this one is signing in already.
        if (state === "in") {
            state = "out";
            signedOut.emit("You have been signed out.");
        }
    });
    Session.addEventListener("ConnectionError", (error) => {
        // The service may tell the end of the trouble in the same way.
        if (state === "in" && error !== SP_ERROR.SP_ERROR_OK) {
            watchConnection();
        }
    });
    if (Session.rememberedUser() === null || Session.relogin() !== SP_ERROR.SP_ERROR_OK) {
        return false;
    }
    state = "signing in";
    return true;
}

/**
 * The outcome comes as `signedIn` or `signedOut`.
 * @param {string} name
 * @param {string} password
 * @param {boolean} remembered
 */
export function signIn(name, password, remembered) {
    state = "signing in";
    const error = Spotify.Session.login(name, password, remembered, "");
    if (error !== Spotify.SP_ERROR.SP_ERROR_OK) {
        state = "out";
        signedOut.emit(why(error));
    }
}

/** Views and queue have to be gone: this empties all wrappers. */
export function signOut() {
    state = "out";
    Spotify.Session.forgetMe();
    Spotify.Session.logout();
    signedOut.emit("");
}

let watching = false;

/** The library connects again by itself, and does not say when it has. */
function watchConnection() {
    if (watching) {
        return;
    }
    watching = true;
    connection.emit(false);
    const timer = setInterval(() => {
        if (state !== "in" || Spotify.Session.connectionstate() === CONNECTED) {
            clearInterval(timer);
            watching = false;
            connection.emit(true);
        }
    }, 1000);
}

/** @param {Spotify.ErrorCode} error */
function why(error) {
    const { SP_ERROR } = Spotify;
    switch (error) {
    case SP_ERROR.SP_ERROR_BAD_USERNAME_OR_PASSWORD:
        return "The name or the password is wrong.";
    case SP_ERROR.SP_ERROR_UNABLE_TO_CONTACT_SERVER:
        return "The music service cannot be reached. Is this device connected?";
    default:
        return Spotify.errorMessage(error);
    }
}
