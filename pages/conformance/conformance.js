// Checks the whole script interface on the host that runs it, and reports TAP (version 13) on the
// console. Without a document, as in the runner, it starts by itself:
//
//     ./sonolet run pages/conformance/conformance.js --audio null
//
// index.html asks for the account and shows the results as a table. ECMAScript 5 throughout and no
// library: browsers of devices are old. The scripts share one scope, and each subject's adds its
// steps to the run. What the user has is as before when it is over.

"use strict";

if (typeof document === "undefined") {
    /** @type {any} */ (this).importScripts("interface.js", "values.js", "run.js", "root.js",
        "session.js", "catalogue.js", "images.js", "playlists.js", "playback.js", "logout.js");
}

/** What is checked: the plug-in with its library, and the browser. */
function setting() {
    return "Sonolet " + Spotify.Sonolet.version() +
        (typeof navigator === "undefined" ? "" : ", " + navigator.userAgent);
}

/**
 * As YAML has it.
 * @param {string} [text]
 */
function quote(text) { return "'" + String(text).replace(/'/g, "''") + "'"; }

/** @param {Result} result */
function printResult(result) {
    console.log((result.ok ? "ok " : "not ok ") + result.number + " - " +
        result.what.replace(/[#\n]/g, " ") + (result.skip ? " # SKIP " + result.skip : ""));
    if (!result.ok) {
        console.log("  ---\n  expected: " + quote(result.expected) + "\n  got: " +
            quote(result.got) + "\n  ...");
    }
}

/**
 * Runs everything, with TAP on the console. Once for each page.
 * @param {Options} account
 * @param {(result: Result) => void} [resultListener]
 * @param {(counts: Counts) => void} [endListener]
 */
function start(account, resultListener, endListener) {
    console.log("TAP version 13");
    if (typeof Spotify === "undefined") {
        console.log("Bail out! There is no global \"Spotify\": the plug-in is not loaded");
        throw new Error("There is no global \"Spotify\": the plug-in is not loaded");
    }
    options = account;
    session = Spotify.Session;
    plugin = Spotify.Sonolet;
    console.log("# " + setting());
    onResult = function (result) {
        printResult(result);
        if (resultListener) {
            resultListener(result);
        }
    };
    onEnd = function () {
        console.log("1.." + (counts.passed + counts.failed + counts.skipped));
        console.log("# " + counts.passed + " passed, " + counts.failed + " failed, " +
            counts.skipped + " skipped");
        if (endListener) {
            endListener(counts);
        }
    };
    step = 0;
    next();
}

// What an account without a page is checked with: the local music service's first one.
var conformance = {
    defaults: { user: "listener", password: "listener", track: "" },
    setting: setting,
    start: start
};

if (typeof document === "undefined") {
    conformance.start(conformance.defaults, undefined, function () { close(); });
}
