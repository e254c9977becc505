// @ts-check
// Pictures for what has none: a pattern in two colours, made from a name and always the same for it.

const SIZE = 120;
const CONTRAST = 3; // of the two colours, as of things that have to be told apart

/** @typedef {() => number} Dice  the next of a row of numbers from 0 up to 1 */

/**
 * A picture as an address: an SVG of some hundred characters.
 * @param {string} name
 */
export function artwork(name) {
    const dice = diceOf(name);
    const [ground, figure] = colours(dice);
    const pattern = patterns[Math.floor(dice() * patterns.length)];
    const drawing = `<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 ${SIZE} ${SIZE}" ` +
        `width="${4 * SIZE}" height="${4 * SIZE}">` +
        `<path fill="${ground}" d="M0 0h${SIZE}v${SIZE}H0z"/>` +
        `<g fill="${figure}" stroke="${figure}" stroke-width="0">${pattern(dice)}</g></svg>`;
    return `data:image/svg+xml,${encodeURIComponent(drawing)}`;
}

/** @type {((dice: Dice) => string)[]} */
const patterns = [
    (dice) => { // rings around a point
        const [x, y] = [at(dice), at(dice)];
        return range(7).map((i) => `<circle fill="none" stroke-width="5" cx="${x}" cy="${y}" r="${
            8 + i * 14}"/>`).join("");
    },
    (dice) => { // waves
        const height = 4 + dice() * 10;
        return range(6).map((i) => {
            const y = 14 + i * 19;
            return `<path fill="none" stroke-width="5" d="M-20 ${y}${range(4).map(() =>
                `q10 ${-height} 20 0t20 0`).join("")}"/>`;
        }).join("");
    },
    (dice) => range(8).map((i) => { // bars
        const height = 15 + dice() * 85;
        return `<path d="M${8 + i * 13.5} ${SIZE - 8}v${-height}h9v${height}z"/>`;
    }).join(""),
    (dice) => range(25).map((i) => // dots
        `<circle cx="${16 + i % 5 * 22}" cy="${16 + Math.floor(i / 5) * 22}" r="${2 + dice() * 8}"/>`)
        .join(""),
    (dice) => { // a sun above water
        const x = at(dice);
        return `<circle cx="${x}" cy="44" r="26"/>${range(4).map((i) =>
            `<path d="M${x - 30 + i * 4} ${80 + i * 10}h${60 - i * 8}v4h${i * 8 - 60}z"/>`).join("")}`;
    },
    (dice) => range(3).map((i) => { // mountains
        const [x, top] = [20 + i * 40, 20 + dice() * 50];
        return `<path stroke-width="3" stroke-linejoin="round" fill-opacity="${.4 + i * .3}" d="M${
            x - 45} ${SIZE}L${x} ${top}L${x + 45} ${SIZE}z"/>`;
    }).join(""),
    (dice) => { // quarters of circles
        const turns = range(9).map(() => Math.floor(dice() * 4) * 90);
        return turns.map((turn, i) => `<path transform="translate(${i % 3 * 40 + 20} ${
            Math.floor(i / 3) * 40 + 20}) rotate(${turn})" d="M-20 -20h40a40 40 0 0 1-40 40z"/>`).join("");
    },
];

/** @param {Dice} dice */
const at = (dice) => Math.round(30 + dice() * 60);

/** @param {number} count */
const range = (count) => Array.from({ length: count }, (_, i) => i);

/**
 * A dark ground, and a figure that is lighter until it can be told from it.
 * @param {Dice} dice
 */
function colours(dice) {
    const hue = dice() * 360;
    const other = hue + 25 + dice() * 170;
    const ground = rgb(hue, .3 + dice() * .25, .2 + dice() * .12);
    let figure = ground;
    for (let lightness = .5; contrast(ground, figure) < CONTRAST; lightness += .05) {
        figure = rgb(other, .45, lightness);
    }
    return [ground, figure].map((colour) =>
        `rgb(${colour.map((part) => Math.round(part * 255)).join(",")})`);
}

/** @param {number} hue @param {number} saturation @param {number} lightness */
function rgb(hue, saturation, lightness) {
    const reach = saturation * Math.min(lightness, 1 - lightness);
    return [0, 8, 4].map((n) => {
        const k = (n + hue / 30) % 12;
        return lightness - reach * Math.max(-1, Math.min(k - 3, 9 - k, 1));
    });
}

/** @param {number[]} dark @param {number[]} light */
function contrast(dark, light) {
    const [low, high] = [dark, light].map((colour) => {
        const [red, green, blue] = colour.map((part) =>
            part <= .04045 ? part / 12.92 : ((part + .055) / 1.055) ** 2.4);
        return .2126 * red + .7152 * green + .0722 * blue;
    });
    return (high + .05) / (low + .05);
}

/** @param {string} name @returns {Dice} */
function diceOf(name) {
    let state = 0x811c9dc5;
    for (const character of name) {
        state = Math.imul(state ^ (character.codePointAt(0) || 0), 0x01000193);
    }
    return () => {
        state = Math.imul(state ^ state >>> 15, 0x2c1b3c6d) + 0x9e3779b9 | 0;
        const mixed = Math.imul(state ^ state >>> 13, 0x297a2d39);
        return ((mixed ^ mixed >>> 16) >>> 0) / 2 ** 32;
    };
}
