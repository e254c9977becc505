// The run of the checks, one step after the other: what they report, and what many of them do.

"use strict";

/**
 * @typedef {{ number: number, ok: boolean, what: string, skip?: string, expected?: string,
 *     got?: string }} Result
 * @typedef {{ user: string, password: string, track: string }} Options `track`: the link of the
 *     one to play; "": one that is found
 * @typedef {{ passed: number, failed: number, skipped: number }} Counts
 */

/** @type {Options} */
var options;
/** @type {(result: Result) => void} */
var onResult;
/** @type {(counts: Counts) => void} */
var onEnd;
var counts = { passed: 0, failed: 0, skipped: 0 };
/** @type {any} what the steps hand on */
var found = { tracks: [], watched: {} };
/** @type {Spotify.Session} */
var session;
/** @type {Spotify.Sonolet} */
var plugin;

// ---- Reporting ----

/** @param {string} what @param {boolean} ok @param {any} [more] */
function report(what, ok, more) {
    var result = more || {};
    result.ok = ok;
    result.what = what;
    ++counts[result.skip ? "skipped" : ok ? "passed" : "failed"];
    result.number = counts.passed + counts.failed + counts.skipped;
    onResult(result);
    return ok;
}
/** @param {string} what @param {string} reason */
function skip(what, reason) { report(what, true, { skip: reason }); }
/** @param {string} what @param {any} got @param {any} expected */
function same(what, got, expected) {
    return report(what, got === expected, { got: show(got), expected: show(expected) });
}
/** @param {string} what @param {any} condition @param {string} got @param {string} expected */
function holds(what, condition, got, expected) {
    return report(what, !!condition, { got: got, expected: expected });
}
/** @param {string} what @param {() => any} call @param {string} [message] without one: any */
function throws(what, call, message) {
    var got;
    var expected = message === undefined ? "an exception" : show(message);
    try {
        got = "no exception, but " + show(call());
    } catch (error) {
        got = message === undefined ? expected : show(messageOf(error));
    }
    holds(what + " throws " + expected, got === expected, got, expected);
}
/** @param {string} what @param {string} kind @param {() => any} call */
function answers(what, kind, call) {
    var got;
    var ok = false;
    var value;
    try {
        value = call();
        got = show(value);
        ok = isOf(value, kind);
    } catch (error) {
        got = "the exception " + show(messageOf(error));
    }
    holds(what + " answers " + nameOf(kind), ok, got, nameOf(kind));
    return ok ? value : undefined;
}
/** @param {string} what @param {any} object @param {string[]} names */
function has(what, object, names) {
    var lacking = missing(object, names);
    holds(what + " has its " + names.length + " names", lacking.length === 0,
        "without " + lacking.join(", "), names.join(", "));
}

// ---- Arguments, from the tables ----

/** @param {string} kind @returns {any} one that is right */
function sample(kind) {
    return { n: 0, t: "", b: false, f: function () {}, T: found.track, A: found.album,
        R: found.artist }[kind];
}
/** @param {string} kind @returns {[any, string][]} those that are wrong */
function wrong(kind) {
    switch (kind) {
    case "n": return [["0", "Not a number"]];
    case "t": return [[5, "Not a string"]];
    case "b": return [[1, "Not a boolean"]];
    case "f": return [["text", "Not an object"]];
    default:
        return [[5, "Not an interface"], [{}, "Not a jspp interface"],
            [plugin.version, "Not a jspp interface"],
            [plugin, "Parameter is not of the requested interface type."]];
    }
}
/**
 * Every argument left out, and every one wrong, after those before it right.
 * @param {string} path @param {any} object @param {string} table
 */
function checkArguments(path, object, table) {
    rowsOf(table).forEach(function (row) {
        /** @type {any[]} */
        var before = [];
        /** @param {any[]} values @param {string} message */
        function refused(values, message) {
            throws(path + "." + row.name + "(" + values.map(show).join(", ") + ")",
                function () { return object[row.name].apply(object, values); }, message);
        }
        row.takes.split("").forEach(function (kind) {
            refused(before, "Not enough arguments");
            wrong(kind).forEach(function (pair) { refused(before.concat([pair[0]]), pair[1]); });
            before = before.concat([sample(kind)]);
        });
        if (row.takes === "n" && CLASS_OF[row.kind]) {
            refused([-1], NOT_RETRIEVED);
        }
    });
}
/**
 * The answers of all members that can be asked, with `index` where one is taken; with an
 * index of -1 only of those that take none.
 * @param {string} name @param {any} object @param {number} index @param {string[]} [without]
 */
function checkAnswers(name, object, index, without) {
    rowsOf(MEMBERS[name]).forEach(function (row) {
        var values = row.takes === "n" ? [index] : [];
        if (row.kind === "-" || row.takes.length > values.length ||
                (values.length > 0 && index < 0) ||
                (without && without.indexOf(row.name) >= 0)) {
            return;
        }
        answers(name + "." + row.name + "(" + values.join() + ")", row.kind,
            function () { return object[row.name].apply(object, values); });
    });
}
/** @param {string} name @param {any} object @param {number} index @param {string[]} [without] */
function checkObject(name, object, index, without) {
    has(name, object, namesOf(name));
    checkArguments(name, object, MEMBERS[name]);
    checkAnswers(name, object, index, without);
}

// ---- Events ----

/**
 * Listens to everything: how often it came, and whether its arguments were of their kinds.
 * @param {string} name @param {any} object
 */
function watch(name, object) {
    rowsOf(EVENTS[name]).forEach(function (row) {
        var key = name + " \"" + row.name + "\"";
        var seen = found.watched[key];
        if (!seen) {
            seen = found.watched[key] = { listener: 0, handler: 0, fault: "", row: row };
        }
        object.addEventListener(row.name, function () {
            var values = Array.prototype.slice.call(arguments);
            ++seen.listener;
            if (values.length !== row.takes.length || !values.every(function (value, i) {
                return isOf(value, row.takes.charAt(i));
            })) {
                seen.fault = values.map(show).join(", ");
            }
        });
        if (row.attribute && row.name !== "PlaylistMoved") {
            object[row.attribute] = function () { ++seen.handler; };
        }
    });
}
/**
 * Calls `then` with the arguments of the event when it comes and is wanted.
 * @param {any} object @param {string} event @param {(...values: any[]) => any} wanted
 * @param {(...values: any[]) => void} then
 */
function when(object, event, wanted, then) {
    var isOver = false; // calls that are queued come after the removal, too
    var listener = guarded(function () {
        if (!isOver && wanted.apply(null, Array.prototype.slice.call(arguments))) {
            isOver = true;
            object.removeEventListener(event, listener);
            then.apply(null, Array.prototype.slice.call(arguments));
        }
    });
    object.addEventListener(event, listener);
}
function always() { return true; }

/** @param {() => any} condition @param {() => void} then */
function until(condition, then) {
    var current = step;
    var timer = setInterval(guarded(function () {
        var holdsNow = condition();
        if (holdsNow || current !== step) {
            clearInterval(timer);
        }
        if (holdsNow && current === step) {
            then();
        }
    }), 100);
}

// ---- Steps ----

/** @type {{ title: string, needs: string, body: (done: () => void) => void,
 *     seconds: number }[]} */
var steps = [];
var step = -1;
/** @type {any} */
var limit;
var failedAt = "";

/**
 * @param {string} title @param {string} needs what an earlier step has to have found
 * @param {(done: () => void) => void} body
 * @param {number} [seconds] after which it is given up
 */
function add(title, needs, body, seconds) {
    steps.push({ title: title, needs: needs, body: body, seconds: seconds || 60 });
}

/**
 * Ends the step instead of the page.
 * @param {(...values: any[]) => any} call
 */
function guarded(call) {
    var current = step;
    return function () {
        try {
            return call.apply(null, Array.prototype.slice.call(arguments));
        } catch (error) {
            holds(steps[current].title + " goes through", false,
                "the exception " + show(messageOf(error)), "none");
            finish(current);
        }
    };
}
/** @param {number} ended */
function finish(ended) {
    if (ended === step) {
        clearTimeout(limit);
        ++step;
        setTimeout(next, 0);
    }
}
function next() {
    var current = step;
    if (current === steps.length) {
        onEnd(counts);
        return;
    }
    var todo = steps[current];
    if (todo.needs && !found[todo.needs]) {
        skip(todo.title, "there is no " + todo.needs + (failedAt ? ": " + failedAt : ""));
        finish(current);
        return;
    }
    limit = setTimeout(function () {
        holds(todo.title + " comes to its end", false, "not within " + todo.seconds + " s",
            "the next event");
        finish(current);
    }, todo.seconds * 1000);
    guarded(function () { todo.body(function () { finish(current); }); })();
}
