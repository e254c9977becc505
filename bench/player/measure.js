// @ts-check
// Opens the player in this document, which so has the plug-in's ticks once, as the player has them
// alone; types words into its search, scrolls a playlist ("?playlist=LINK") and says how long it
// took, in lines of the console that begin with "bench: ".

const player = new URL("../../pages/player/", import.meta.url);
/** @param {string} selector @returns {any} */
const find = (selector) => document.querySelector(selector);
/** @param {number} milliseconds */
const pause = (milliseconds) => new Promise((resolve) => setTimeout(resolve, milliseconds));
const frame = () => new Promise(requestAnimationFrame);

/** @template T @param {() => T} look @returns {Promise<T>} what it saw, as soon as the page shows it */
const until = (look) => new Promise((resolve, reject) => {
    setTimeout(() => reject(new Error(`nothing after 30 s: ${look}`)), 30000);
    const again = () => {
        const seen = look();
        if (seen) {
            observer.disconnect();
            resolve(seen);
        }
    };
    const observer = new MutationObserver(again);
    observer.observe(document, { subtree: true, childList: true, attributes: true,
        characterData: true });
    again();
});

async function open() {
    const text = await (await fetch(new URL("index.html", player).href)).text();
    const page = new DOMParser().parseFromString(text, "text/html");
    await Promise.all(Array.from(page.querySelectorAll("link"), (link) => new Promise((loaded) => {
        link.href = new URL(link.getAttribute("href") || "", player).href;
        link.onload = loaded;
        document.head.append(link);
    })));
    document.body.replaceWith(page.body);
    await import(new URL("app.js", player).href);
    await until(() => !find("#signin").hidden);
    find("#name").value = find("#password").value = "listener";
    find("#signin-button").click();
    await until(() => !find("#app").hidden);
}

const WORDS = ["love", "night", "th", "time", "live", "blu", "song", "li", "baby", "wor", "heart",
    "n", "away", "dance", "caf", "home", "yo", "you", "don't", "g"];

/** From the last letter until a track that was found is there, and until it has been drawn. */
async function search() {
    const there = [];
    const drawn = [];
    for (const word of WORDS.concat(WORDS)) {
        let typed = 0;
        for (let letters = 1; letters <= word.length; ++letters) {
            await pause(100 + Math.random() * 80);
            typed = performance.now();
            find("#search").value = word.slice(0, letters);
            find("#search").dispatchEvent(new Event("input"));
        }
        await until(() => find(`[aria-label="Tracks found for ${word}"] .track-title bdi`));
        there.push(performance.now() - typed);
        await frame();
        await new Promise((painted) => {
            const channel = new MessageChannel();
            channel.port1.onmessage = painted;
            channel.port2.postMessage("");
        });
        drawn.push(performance.now() - typed);
        await pause(300 + Math.random() * 250);
    }
    const order = (/** @type {number} */ a, /** @type {number} */ b) => a - b;
    there.sort(order);
    drawn.sort(order);
    const middle = there.length >> 1;
    console.log(`bench: searched ${there[middle]} ${there[there.length - 2]} ${drawn[middle]}`);
}

const FRAMES = 240;
const STEP = 60; // pixels a frame: a row comes with each

async function scroll() {
    const main = find("#main");
    main.scrollTop = 400;
    await pause(500);
    console.log("bench: begins");
    const start = performance.now();
    for (let i = 0; i < FRAMES; ++i) {
        // There and back, for there may not be so many rows.
        main.scrollTop += i % 120 < 60 ? STEP : -STEP;
        await frame();
    }
    console.log(`bench: ends ${FRAMES} ${performance.now() - start}`);
    await pause(200);
}

async function scrollAll() {
    location.hash = `#/playlist/${new URLSearchParams(location.search).get("playlist")}`;
    await until(() => find(".hero") && find(".track-title bdi"));
    await pause(1000);
    await scroll();
    // The peer: as many rows as are passed, there from the beginning, and nobody who listens.
    const main = find("#main");
    const view = find(".view");
    const rows = view.cloneNode(true);
    const table = rows.querySelector(".tracks");
    const some = Array.from(table.children);
    const height = find(".tracks .track").offsetHeight;
    table.textContent = "";
    for (let i = 0; i < 120; ++i) {
        const row = some[i % some.length].cloneNode(true);
        row.style.transform = `translateY(${i * height}px)`;
        table.append(row);
    }
    view.style.display = "none";
    main.append(rows);
    await scroll();
}

open().then(search).then(scrollAll).catch((error) => console.log(`bench: failed: ${error}`));
