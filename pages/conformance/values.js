// Rows of the tables, and values of the plug-in: of which kind they are, and how they are shown.

"use strict";

/** @typedef {{ kind: string, name: string, takes: string, attribute: string }} Row */

/** @param {string} table @returns {Row[]} */
function rowsOf(table) {
    var row = /(?:([-A-Za-z]) )?(\w+)\((\w*)\)(?::(\S+))?/g;
    var rows = [];
    for (var match = row.exec(table); match; match = row.exec(table)) {
        rows.push({
            kind: match[1] || "", name: match[2], takes: match[3],
            attribute: match[4] === "-" ? "" : match[4] || "on" + match[2]
        });
    }
    return rows;
}

/**
 * The names of a class.
 * @param {string} name @returns {string[]}
 */
function namesOf(name) {
    var names = ["addEventListener", "removeEventListener"];
    rowsOf(MEMBERS[name]).forEach(function (row) { names.push(row.name); });
    rowsOf(EVENTS[name] || "").forEach(function (row) {
        if (row.attribute) {
            names.push(row.attribute);
        }
    });
    return names;
}

/** @param {any} object @param {string[]} names */
function missing(object, names) {
    return names.filter(function (name) {
        try {
            return !(name in object);
        } catch (error) {
            return true;
        }
    });
}

/** @param {any} value */
function show(value) {
    if (typeof value === "string") {
        return JSON.stringify(value.length > 60 ? value.slice(0, 60) + "..." : value);
    }
    if (typeof value === "function") {
        return "a function";
    }
    if (typeof value === "object" && value) {
        if (typeof value.length === "number") {
            return "a list of " + value.length;
        }
        for (var name in MEMBERS) {
            if (missing(value, namesOf(name)).length === 0) {
                return "object " + name;
            }
        }
        return "an object";
    }
    return String(value);
}

/**
 * A host may throw its messages as they are.
 * @param {any} error
 */
function messageOf(error) {
    return error && error.message !== undefined ? error.message : String(error);
}

/** @type {{ [kind: string]: string }} */
var KINDS = {
    n: "a number", b: "true or false", t: "a text", i: "28 characters of Base64", l: "a list",
    v: "undefined"
};

/** @param {string} kind */
function nameOf(kind) { return KINDS[kind] || "object " + CLASS_OF[kind]; }

/** @param {any} value @param {string} kind */
function isOf(value, kind) {
    switch (kind) {
    case "n": return typeof value === "number";
    case "b": return typeof value === "boolean";
    case "t": return typeof value === "string";
    case "i": return typeof value === "string" && /^[A-Za-z0-9+\/]{27}=$/.test(value);
    case "l": return typeof value === "object" && value && typeof value.length === "number";
    case "v": return value === undefined;
    default:
        return typeof value === "object" && value &&
            missing(value, namesOf(CLASS_OF[kind])).length === 0;
    }
}
