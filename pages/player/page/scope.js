// @ts-check

/**
 * An event of the page's own.
 * @template T
 */
export class Signal {
    constructor() {
        /** @type {Set<(value: T) => void>} */
        this.listeners = new Set();
    }

    /** @param {(value: T) => void} listener */
    add(listener) {
        this.listeners.add(listener);
        return () => {
            this.listeners.delete(listener);
        };
    }

    /** @param {T} value */
    emit(value) {
        for (const listener of Array.from(this.listeners)) {
            listener(value);
        }
    }
}

/** Everything that has to end with a view, a row or a sign-in: listeners, timers, lists. */
export class Scope {
    constructor() {
        this.closed = false;
        /** @type {(() => void)[]} */
        this.ends = [];
    }

    /** @param {() => void} end */
    onClose(end) {
        if (this.closed) {
            end();
        } else {
            this.ends.push(end);
        }
    }

    /**
     * Listens to an element or to an object of the plug-in. The plug-in queues its calls: one may
     * arrive after its listener was removed, so the handler looks whether the scope still is open.
     * @param {any} target
     * @param {string} event
     * @param {(...args: any[]) => void} handler
     */
    listen(target, event, handler) {
        const guarded = (/** @type {any[]} */ ...args) => {
            if (!this.closed) {
                handler(...args);
            }
        };
        target.addEventListener(event, guarded);
        this.onClose(() => target.removeEventListener(event, guarded));
    }

    /**
     * @template T
     * @param {Signal<T>} signal
     * @param {(value: T) => void} handler
     */
    on(signal, handler) {
        this.onClose(signal.add(handler));
    }

    /**
     * The promise's outcome while the scope is open. After that it stays pending for ever, so that
     * nothing after an `await` runs for a view that has gone.
     * @template T
     * @param {Promise<T>} promise
     * @returns {Promise<T>}
     */
    until(promise) {
        return new Promise((resolve, reject) => {
            promise.then(
                (value) => this.closed || resolve(value),
                (error) => this.closed || reject(error));
        });
    }

    /**
     * @param {number} milliseconds
     * @param {() => void} action
     */
    after(milliseconds, action) {
        const timer = setTimeout(action, milliseconds);
        this.onClose(() => clearTimeout(timer));
    }

    close() {
        if (this.closed) {
            return;
        }
        this.closed = true;
        for (const end of this.ends.splice(0)) {
            end();
        }
    }
}

/**
 * A function that runs `action` once, a little after the last of several calls.
 * @param {number} milliseconds
 * @param {() => void} action
 */
export function debounce(milliseconds, action) {
    let timer = 0;
    const call = () => {
        call.cancel();
        timer = window.setTimeout(action, milliseconds);
    };
    call.cancel = () => clearTimeout(timer);
    return call;
}
