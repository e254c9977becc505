// @ts-check

/** @typedef {Node | string | null | undefined | false} Child */

/**
 * Makes an element. Properties that begin with "on" are handlers, all others are attributes;
 * false, null and undefined leave an attribute out.
 * @template {keyof HTMLElementTagNameMap} K
 * @param {K} tag
 * @param {Record<string, any> | null} [attributes]
 * @param {...(Child | Child[])} children
 * @returns {HTMLElementTagNameMap[K]}
 */
export function h(tag, attributes, ...children) {
    const element = document.createElement(tag);
    for (const [name, value] of Object.entries(attributes || {})) {
        if (typeof value === "function") {
            element.addEventListener(name.slice(2), value);
        } else if (value !== false && value !== null && value !== undefined) {
            element.setAttribute(name, value === true ? "" : String(value));
        }
    }
    put(element, ...children);
    return element;
}

/**
 * Appends children; leaves out what is none.
 * @param {Element} parent
 * @param {...(Child | Child[])} children
 */
export function put(parent, ...children) {
    for (const child of children) {
        if (Array.isArray(child)) {
            put(parent, ...child);
        } else if (child) {
            parent.append(child);
        }
    }
}

/**
 * @param {Element} parent
 * @param {...(Child | Child[])} children
 */
export function replace(parent, ...children) {
    parent.textContent = "";
    put(parent, ...children);
}

/**
 * An icon of the sheet in index.html.
 * @param {string} name
 */
export function icon(name) {
    const space = "http://www.w3.org/2000/svg";
    const svg = document.createElementNS(space, "svg");
    svg.setAttribute("class", "icon");
    svg.setAttribute("aria-hidden", "true");
    const use = document.createElementNS(space, "use");
    use.setAttribute("href", `#i-${name}`);
    svg.append(use);
    return svg;
}

/**
 * A button that is an icon; `label` is what a screen reader says and what the pointer shows.
 * @param {string} name
 * @param {string} label
 * @param {Record<string, any>} attributes
 */
export function iconButton(name, label, attributes) {
    return h("button", Object.assign(
        { type: "button", class: "icon-button", "aria-label": label, title: label }, attributes),
    icon(name));
}

/**
 * A name as it came: in its own direction, whatever stands beside it, and in the font of its language.
 * @param {string} text
 */
export function named(text) {
    return h("bdi", { lang: languageOf(text) }, text);
}

/**
 * The same among the words of a sentence.
 * @param {string} text
 */
export function quoted(text) {
    return `“\u2068${text}\u2069”`;
}

/**
 * Han characters look different in Chinese and Japanese; kana and hangul tell.
 * @param {string} text
 */
function languageOf(text) {
    return /[\u3040-\u30ff]/.test(text) ? "ja" : /[\u1100-\u11ff\uac00-\ud7af]/.test(text) ? "ko"
        : /[\u3400-\u9fff]/.test(text) ? "zh" : null;
}

/**
 * The element of index.html with this id.
 * @template {HTMLElement} [T=HTMLElement]
 * @param {string} id
 * @returns {T}
 */
export function byId(id) {
    return /** @type {T} */ (document.getElementById(id));
}

/** @param {number} milliseconds */
export function clock(milliseconds) {
    const whole = Math.max(0, Math.floor(milliseconds / 1000));
    const seconds = String(whole % 60).padStart(2, "0");
    const minutes = Math.floor(whole / 60);
    return minutes < 60
        ? `${minutes}:${seconds}`
        : `${Math.floor(minutes / 60)}:${String(minutes % 60).padStart(2, "0")}:${seconds}`;
}

/**
 * @param {number} count
 * @param {string} noun
 */
export function counted(count, noun) {
    return `${count.toLocaleString("en")} ${noun}${count === 1 ? "" : "s"}`;
}
