// @ts-check
// A list of which only the rows that can be seen exist, whatever its length. Rows have one height.
// The arrows move through it: up and down from row to row, left and right within a row.

import { h } from "./dom.js";
import { Scope } from "./scope.js";

const OVERSCAN = 4;

/**
 * @typedef {object} Options
 * @property {HTMLElement} scroller    the box that scrolls; the list may be anywhere in it
 * @property {Scope} scope             ends the list
 * @property {string} label
 * @property {number} length
 * @property {(index: number, scope: Scope) => HTMLElement} row  makes a row; `scope` ends with it
 * @property {HTMLElement} [above]     stays over the top of the box; rows are not shown below it
 * @property {string} [role]           of the list: "grid" or "tree"; rows bring their own
 */

export class VirtualList {
    /** @param {Options} options */
    constructor(options) {
        this.options = options;
        this.length = options.length;
        /** @type {Map<number, { element: HTMLElement, scope: Scope }>} */
        this.rows = new Map();
        /** The row that Tab reaches. */
        this.active = 0;
        /** Of a row, in pixels; 0: not measured yet. */
        this.height = 0;
        this.element = h("div", { class: "rows", role: options.role || "grid",
            "aria-label": options.label });
        const { scope, scroller } = options;
        scope.listen(scroller, "scroll", () => this.draw());
        scope.listen(window, "resize", () => {
            this.height = 0;
            this.refresh();
        });
        scope.listen(this.element, "keydown", (event) => {
            if (this.key(event)) {
                event.preventDefault();
            }
        });
        scope.listen(this.element, "focusin", (event) => this.setActive(this.indexOf(event.target)));
        scope.onClose(() => this.empty());
        // Its place in the scroller is known once it is in the document.
        const frame = requestAnimationFrame(() => this.refresh());
        scope.onClose(() => cancelAnimationFrame(frame));
    }

    /**
     * Makes the rows anew, for another length or other contents.
     * @param {number} [length]
     * @param {(index: number) => number} [moved] where rows went; keeps the focus on its row
     */
    refresh(length, moved) {
        const { scroller } = this.options;
        const focused = this.indexOf(document.activeElement);
        const away = focused >= 0 && !this.isSeen(focused) ? scroller.scrollTop : -1;
        const cell = focused < 0 ? 0 : this.cells(focused).indexOf(
            /** @type {HTMLElement} */ (document.activeElement));
        if (length !== undefined) {
            this.length = length;
        }
        const last = this.length - 1;
        if (moved) {
            const to = moved(this.active);
            this.active = to < 0 ? this.active : to;
        }
        const active = this.active = Math.max(0, Math.min(this.active, last));
        this.empty();
        this.draw();
        if (focused >= 0 && last >= 0) {
            this.focus(active, cell);
            if (away >= 0) {
                scroller.scrollTop = away; // whoever has scrolled on from the focused row stays there
            }
        }
    }

    /** @param {number} index of a row that exists */
    isSeen(index) {
        const row = /** @type {{ element: HTMLElement }} */ (this.rows.get(index));
        const [inner, outer] = [row.element, this.options.scroller].map(
            (element) => element.getBoundingClientRect());
        return inner.bottom > outer.top && inner.top < outer.bottom;
    }

    empty() {
        for (const index of Array.from(this.rows.keys())) {
            this.drop(index);
        }
    }

    /** Makes the rows that can be seen and drops the others, but never the focused one. */
    draw() {
        const { scroller } = this.options;
        if (!this.element.isConnected) {
            return;
        }
        const height = this.rowHeight();
        this.element.style.height = `${this.length * height}px`;
        if (this.options.role !== "tree") {
            this.element.setAttribute("aria-rowcount", String(this.length));
        }
        const above = scroller.getBoundingClientRect().top - this.element.getBoundingClientRect().top;
        const first = Math.max(0, Math.floor(above / height) - OVERSCAN);
        const last = Math.min(this.length - 1,
            Math.ceil((above + scroller.clientHeight) / height) + OVERSCAN);
        const focused = this.indexOf(document.activeElement);
        for (const index of Array.from(this.rows.keys())) {
            if ((index < first || index > last) && index !== focused) {
                this.drop(index);
            }
        }
        for (let index = first; index <= last; ++index) {
            if (!this.rows.has(index)) {
                this.make(index);
            }
        }
        if (!this.rows.has(this.active)) { // scrolled away: Tab shall find what is seen
            this.setActive(Math.min(first + OVERSCAN, last));
        }
    }

    /** @param {number} index */
    make(index) {
        const scope = new Scope();
        const element = this.options.row(index, scope);
        element.style.transform = `translateY(${index * this.rowHeight()}px)`;
        element.tabIndex = index === this.active ? 0 : -1;
        element.dataset.index = String(index);
        element.dataset.key = `row ${index}`;
        if (this.options.role === "tree") {
            element.setAttribute("aria-posinset", String(index + 1));
            element.setAttribute("aria-setsize", String(this.length));
        } else {
            element.setAttribute("aria-rowindex", String(index + 1));
        }
        this.rows.set(index, { element, scope });
        // Screen readers follow the document's order, not the look.
        const after = Array.from(this.element.children).find(
            (other) => Number(/** @type {HTMLElement} */ (other).dataset.index) > index);
        this.element.insertBefore(element, after || null);
    }

    /** @param {number} index */
    drop(index) {
        const row = this.rows.get(index);
        if (row) {
            this.rows.delete(index);
            row.scope.close();
            row.element.remove();
        }
    }

    rowHeight() {
        if (!this.height) {
            const style = getComputedStyle(this.element);
            this.height = parseFloat(style.getPropertyValue("--row-height")) *
                parseFloat(getComputedStyle(document.documentElement).fontSize);
        }
        return this.height;
    }

    /** @param {EventTarget | null} target */
    indexOf(target) {
        const row = target instanceof Element && this.element.contains(target) &&
            target.closest("[data-index]");
        return row instanceof HTMLElement ? Number(row.dataset.index) : -1;
    }

    /** @param {number} index */
    setActive(index) {
        if (index < 0 || index === this.active) {
            return;
        }
        const before = this.rows.get(this.active);
        const now = this.rows.get(index);
        this.active = index;
        if (before) {
            before.element.tabIndex = -1;
        }
        if (now) {
            now.element.tabIndex = 0;
        }
    }

    /**
     * What the arrows stop at in a row: the row and then its buttons.
     * @param {number} index
     */
    cells(index) {
        const row = this.rows.get(index);
        return row ? [row.element, .../** @type {NodeListOf<HTMLElement>} */ (
            row.element.querySelectorAll("button"))] : [];
    }

    /** @param {number} index @param {number} [cell] */
    focus(index, cell = 0) {
        const { scroller } = this.options;
        const height = this.rowHeight();
        const box = scroller.getBoundingClientRect();
        const top = this.element.getBoundingClientRect().top + index * height;
        const margin = height / 2;
        const { above } = this.options;
        const edge = box.top + margin + (above ? above.offsetHeight : 0);
        if (top < edge) {
            scroller.scrollTop -= edge - top;
        } else if (top + height > box.bottom - margin) {
            scroller.scrollTop += top + height - box.bottom + margin;
        }
        this.draw();
        const cells = this.cells(index);
        const target = cells[Math.min(Math.max(cell, 0), cells.length - 1)];
        if (target) {
            (target.matches(":disabled") ? cells[0] : target).focus({ preventScroll: true });
        }
    }

    /** @param {KeyboardEvent} event */
    key(event) {
        const index = this.indexOf(event.target);
        if (index < 0 || event.ctrlKey || event.altKey || event.metaKey) {
            return false;
        }
        const cells = this.cells(index);
        const cell = cells.indexOf(/** @type {HTMLElement} */ (event.target));
        const page = Math.max(1, Math.floor(this.options.scroller.clientHeight / this.rowHeight()) - 1);
        /** @type {Record<string, number>} */
        const steps = { ArrowUp: -1, ArrowDown: 1, PageUp: -page, PageDown: page,
            Home: -this.length, End: this.length };
        const step = steps[event.key];
        if (step !== undefined) {
            const to = Math.max(0, Math.min(index + step, this.length - 1));
            if (to !== index) {
                this.focus(to, cell);
            }
            return to !== index;
        }
        const side = { ArrowLeft: -1, ArrowRight: 1 }[event.key];
        const enabled = cells.filter((other) => !other.matches(":disabled"));
        const beside = side === undefined ? undefined
            : enabled[enabled.indexOf(cells[cell]) + side];
        if (beside) {
            beside.focus({ preventScroll: true });
        }
        return beside !== undefined;
    }
}
