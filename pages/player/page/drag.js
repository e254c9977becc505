// @ts-check

/** @typedef {import("./virtual-list.js").VirtualList} VirtualList */

/**
 * Lets the rows of a list be dragged by their first cell. The row follows the pointer; where it is
 * let go is where it goes.
 * @param {VirtualList} table
 * @param {import("./scope.js").Scope} scope
 * @param {(from: number, to: number) => void} drop
 */
export function dragRows(table, scope, drop) {
    /** @type {{ row: HTMLElement, from: number, y: number, scroll: number, far: boolean } | null} */
    let drag = null;
    const { scroller } = table.options;
    const distance = (/** @type {PointerEvent} */ event) =>
        drag ? event.clientY - drag.y + scroller.scrollTop - drag.scroll : 0;
    const target = (/** @type {PointerEvent} */ event) => drag ? Math.max(0, Math.min(table.length - 1,
        drag.from + Math.round(distance(event) / table.rowHeight()))) : 0;
    scope.listen(table.element, "pointerdown", (event) => {
        const handle = event.target.closest(".track-lead");
        const row = event.target.closest("[data-index]");
        if (handle && row && event.button === 0) {
            drag = { row, from: table.indexOf(row), y: event.clientY, scroll: scroller.scrollTop,
                far: false };
        }
    });
    scope.listen(window, "pointermove", (event) => {
        if (drag === null) {
            return;
        }
        drag.far = drag.far || Math.abs(distance(event)) > 5;
        if (drag.far) {
            drag.row.classList.add("dragged");
            drag.row.style.transform = `translateY(${drag.from * table.rowHeight() + distance(event)}px)`;
        }
    });
    const end = (/** @type {PointerEvent} */ event) => {
        if (drag === null) {
            return;
        }
        const { row, from, far } = drag;
        const to = event.type === "pointerup" ? target(event) : from;
        drag = null;
        row.classList.remove("dragged");
        row.style.transform = `translateY(${from * table.rowHeight()}px)`;
        if (far) {
            // The click that follows is the end of this and not a choice.
            const swallow = (/** @type {Event} */ click) => click.stopPropagation();
            window.addEventListener("click", swallow, true);
            setTimeout(() => {
                window.removeEventListener("click", swallow, true);
                drop(from, to);
            });
        }
    };
    scope.listen(window, "pointerup", end);
    scope.listen(window, "pointercancel", end);
}
