// What every test page starts with. A page reports TAP on its console and closes itself.
const test = (() => {
    let count = 0;

    function ok(condition, what) {
        console.log(`${condition ? "ok" : "not ok"} ${++count} - ${what}`);
        return condition;
    }

    function same(actual, expected, what) {
        if (!ok(Object.is(actual, expected), what)) {
            console.log(`  got ${String(actual)}, expected ${String(expected)}`);
        }
    }

    function throws(call, message, what) {
        try {
            call();
        } catch (error) {
            same(error.message, message, what || message);
            return;
        }
        ok(false, `${what || message}: nothing was thrown`);
    }

    // Resolves with the arguments of the event when it is next raised and `wanted` accepts them.
    function next(target, event, wanted = () => true) {
        return new Promise((resolve) => {
            const listener = (...values) => {
                if (wanted(...values)) {
                    target.removeEventListener(event, listener);
                    resolve(values);
                }
            };
            target.addEventListener(event, listener);
        });
    }

    async function loaded(object) {
        while (!object.isLoaded()) {
            await next(Spotify.Session, "MetadataUpdated");
        }
        return object;
    }

    async function login(name = "listener", password = "listener", remember = false, blob = "") {
        Spotify.Session.create(Spotify.SessionConfig);
        const outcome = next(Spotify.Session, "LoggedIn");
        Spotify.Session.login(name, password, remember, blob);
        return (await outcome)[0];
    }

    // Runs the page's steps one after the other.
    function run(...steps) {
        steps.reduce((before, step) => before.then(step), Promise.resolve())
            .catch((error) => ok(false, `${error.message}\n${error.stack}`))
            .then(() => {
                console.log(`1..${count}`);
                close();
            });
    }

    return { ok, same, throws, next, loaded, login, run };
})();
