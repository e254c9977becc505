// @ts-check
// Pictures for what has none: a pattern in two colours, made from a name and always the same for it.

const SIZE = 120;
const CONTRAST = 3; // of the two colours, as of things that have to be told apart

/** @typedef {() => number} Dice  the next of a row of numbers from 0 up to 1 */

/**
 * Draws the picture of a name: some tenths of a millisecond.
 * @param {string} name
 * @param {number} pixels of its width and its height
 */
export function artwork(name, pixels) {
    const canvas = document.createElement("canvas");
    canvas.width = canvas.height = pixels;
    // Many of them scroll by, so none shall be a layer of its own on the graphics processor.
    const context = canvas.getContext("2d", { willReadFrequently: true });
    if (context !== null) {
        const dice = diceOf(name);
        const [ground, figure] = colours(dice);
        context.scale(pixels / SIZE, pixels / SIZE);
        context.fillStyle = css(ground);
        context.fillRect(0, 0, SIZE, SIZE);
        context.fillStyle = context.strokeStyle = css(figure);
        patterns[Math.floor(dice() * patterns.length)](context, dice);
    }
    return canvas;
}

/**
 * Ground and figure of the picture of a name: red, green and blue from 0 to 1.
 * @param {string} name
 */
export const coloursOf = (name) => colours(diceOf(name));

/** @type {((context: CanvasRenderingContext2D, dice: Dice) => void)[]} */
const patterns = [
    (context, dice) => { // rings around a point
        const [x, y] = [at(dice), at(dice)];
        context.lineWidth = 5;
        range(7).forEach((i) => context.stroke(circle(x, y, 8 + i * 14)));
    },
    (context, dice) => { // waves
        const height = 4 + dice() * 10;
        context.lineWidth = 5;
        range(6).forEach((i) => context.stroke(new Path2D(`M-20 ${14 + i * 19}${range(4).map(() =>
            `q10 ${-height} 20 0t20 0`).join("")}`)));
    },
    (context, dice) => range(8).forEach((i) => { // bars
        const height = 15 + dice() * 85;
        context.fillRect(8 + i * 13.5, SIZE - 8 - height, 9, height);
    }),
    (context, dice) => range(25).forEach((i) => // dots
        context.fill(circle(16 + i % 5 * 22, 16 + Math.floor(i / 5) * 22, 2 + dice() * 8))),
    (context, dice) => { // a sun above water
        const x = at(dice);
        context.fill(circle(x, 44, 26));
        range(4).forEach((i) => context.fillRect(x - 30 + i * 4, 80 + i * 10, 60 - i * 8, 4));
    },
    (context, dice) => range(3).forEach((i) => { // mountains
        const [x, top] = [20 + i * 40, 20 + dice() * 50];
        const mountain = new Path2D(`M${x - 45} ${SIZE}L${x} ${top}L${x + 45} ${SIZE}z`);
        context.lineWidth = 3;
        context.lineJoin = "round";
        context.globalAlpha = .4 + i * .3;
        context.fill(mountain);
        context.globalAlpha = 1;
        context.stroke(mountain);
    }),
    (context, dice) => { // quarters of circles
        const turns = range(9).map(() => Math.floor(dice() * 4) * Math.PI / 2);
        turns.forEach((turn, i) => {
            context.save();
            context.translate(i % 3 * 40 + 20, Math.floor(i / 3) * 40 + 20);
            context.rotate(turn);
            context.fill(new Path2D("M-20 -20h40a40 40 0 0 1-40 40z"));
            context.restore();
        });
    },
];

/** @param {number} x @param {number} y @param {number} radius */
function circle(x, y, radius) {
    const path = new Path2D();
    path.arc(x, y, radius, 0, 2 * Math.PI);
    return path;
}

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
    return [ground, figure];
}

/** @param {number[]} colour */
const css = (colour) => `rgb(${colour.map((part) => Math.round(part * 255)).join(",")})`;

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
