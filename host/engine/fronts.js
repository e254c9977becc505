// The script half of the fronts: a front is a Proxy, and this is how it behaves, and how the
// plug-in's names on the global object do. Evaluated once in each document, before any script of the
// page. Nothing here is looked up where a page could have put something of its own: functions are
// taken now, and no object that is read has a prototype of the page's.
//
// `native` is the other half. A call of it takes and gives numbers through shared memory, since each
// value of the engine's interface costs as much as the call.
(function (native) {
    'use strict';

    const { read: readNative, write: writeNative, name: nameNative, take: takeNative,
            part: partNative } = native;
    const { apply, get: reflectGet, set: reflectSet, has: reflectHas, defineProperty,
            deleteProperty, getOwnPropertyDescriptor, getPrototypeOf, isExtensible,
            ownKeys } = Reflect;
    const global = globalThis, ProxyConstructor = Proxy;

    // As struct Shared in Fronts.h.
    const shared = new ArrayBuffer(512);
    const doubles = new Float64Array(shared, 0, 1);
    const numbers = new Int32Array(shared, 8);
    const RECORD = 0, NAME = 1, QUIET = 2, ANSWER = 3, BATCH = 4;
    const NONE = 0, NUMBER = 2, KEPT = 4, PART = 8;  // of an answer; all but NONE are flags
    const BATCH_SIZE = 32;

    // A page may read names without end: so many are kept of one object, and numbered for all.
    const MOST_KEPT = 1000;
    const MOST_NAMES = 1000;

    // Names cross as numbers: a string costs as much as a call.
    let named = { __proto__: null };
    let names = 0;
    function numberOf(name) {
        let number = named[name];
        if (number === undefined) {
            if (names === MOST_NAMES) {
                named = { __proto__: null };
                names = 0;
            }
            number = named[name] = names++;
            nameNative(number, name);
        }
        return number;
    }

    // A function that is part of an object keeps it, so that the two go together: by a field that
    // no page sees.
    class Part extends (function (object) { return object; }) {
        #whole;
        constructor(part, whole) {
            super(part);
            this.#whole = whole;
        }
    }
    const holders = new WeakMap();  // what else an object keeps
    holders.set = WeakMap.prototype.set;

    // Answers by their names.
    function Kept() {}
    Kept.prototype = Object.freeze({ __proto__: null });
    const nothing = Kept.prototype;

    // The state of one front, and its traps by inheritance.
    function Handler(number) {
        this.number = number;   // the native half's
        this.front = undefined;
        this.kept = nothing;
        this.count = 0;         // of `kept`
        this.hasOwn = false;    // the page has put something on the target
    }

    function keep(handler, name, value) {
        if (handler.count === MOST_KEPT) {
            return false;
        }
        if (handler.kept === nothing) {
            handler.kept = new Kept();
        }
        handler.kept[name] = value;
        ++handler.count;
        return true;
    }

    function drop(handler, name) {
        const value = handler.kept[name];
        if (value !== undefined) {
            delete handler.kept[name];
            --handler.count;
            if (typeof value === 'function') {
                partNative(value);
            }
        }
    }

    // Whether a name is the plug-in's to answer: a symbol never is, nor what is the page's own.
    function isPlugins(handler, target, name) {
        return typeof name !== 'symbol' && name !== '__proto__' &&
            !(handler.hasOwn && getOwnPropertyDescriptor(target, name) !== undefined);
    }

    // Asks the plug-in; numbers[ANSWER] tells what came. Throws what it throws, unless `quiet`.
    function read(record, name, quiet) {
        const number = numberOf(name);
        numbers[RECORD] = record;
        numbers[NAME] = number;
        numbers[QUIET] = quiet;
        const object = readNative();
        return (numbers[ANSWER] & NUMBER) !== 0 ? doubles[0] : object;
    }

    // Answers whether the plug-in has taken the value.
    function write(record, name, value) {
        const number = numberOf(name);
        numbers[RECORD] = record;
        numbers[NAME] = number;
        writeNative(value);
        return numbers[ANSWER] !== NONE;
    }

    function ask(handler, name, quiet) {
        const value = read(handler.number, name, quiet);
        const answer = numbers[ANSWER];
        if ((answer & KEPT) !== 0) {
            if ((answer & PART) !== 0) {
                new Part(value, handler.front);
            }
            if (!keep(handler, name, value) && (answer & PART) !== 0) {
                partNative(value);
            }
        }
        return value;
    }

    function askOrInherit(handler, target, name, receiver) {
        if (isPlugins(handler, target, name)) {
            const value = ask(handler, name, 0);
            if (numbers[ANSWER] !== NONE) {
                return value;
            }
        }
        return reflectGet(target, name, receiver);
    }

    function describe(value, enumerable = false) {
        return { __proto__: null, value, writable: true, enumerable, configurable: true };
    }

    // Whether a write for `receiver` is one to the front: a Proxy of the page's before it says that
    // its prototype is the front's, an object that inherits from the front does not.
    function isFront(handler, target, receiver) {
        return receiver === handler.front ||
            ((typeof receiver === 'object' ? receiver !== null : typeof receiver === 'function') &&
             getPrototypeOf(receiver) === getPrototypeOf(target));
    }

    Handler.prototype = {
        __proto__: null,

        get(target, name, receiver) {
            const value = this.kept[name];
            return value !== undefined ? value : askOrInherit(this, target, name, receiver);
        },

        has(target, name) {
            if (isPlugins(this, target, name)) {
                if (this.kept[name] !== undefined) {
                    return true;
                }
                ask(this, name, 1);
                if (numbers[ANSWER] !== NONE) {
                    return true;
                }
            }
            return reflectHas(target, name);
        },

        set(target, name, value, receiver) {
            if (isPlugins(this, target, name) && isFront(this, target, receiver)) {
                const isTaken = write(this.number, name, value);
                drop(this, name);
                if (isTaken) {
                    return true;
                }
            }
            return reflectSet(target, name, value, receiver);
        },

        // What a page defines is its own from then on.
        defineProperty(target, name, descriptor) {
            if (!defineProperty(target, name, descriptor)) {
                return false;
            }
            this.hasOwn = true;
            drop(this, name);
            return true;
        },

        deleteProperty(target, name) {
            drop(this, name);
            return deleteProperty(target, name);
        },

        // What is kept shows as hidden properties, unless the page has frozen the object.
        ownKeys(target) {
            const keys = ownKeys(target);
            if (isExtensible(target)) {
                for (const name in this.kept) {
                    defineProperty(keys, keys.length, describe(name));
                }
            }
            return keys;
        },

        getOwnPropertyDescriptor(target, name) {
            const value = this.kept[name];
            return value !== undefined && isExtensible(target)
                ? describe(value)
                : getOwnPropertyDescriptor(target, name);
        },
    };

    function Target() {}
    // All fronts have it: no page may change it for the others.
    Target.prototype = Object.freeze({ [Symbol.toStringTag]: 'NativeObject' });

    // `batch` has all its elements from the start: what a page does to Array.prototype changes
    // nothing. It keeps what is in it alive.
    const batch = new Array(BATCH_SIZE).fill(undefined);

    function makeFront(number, target) {
        const handler = new Handler(number);
        return handler.front = new ProxyConstructor(target, handler);
    }

    function makeObjectFront(number) {
        return makeFront(number, new Target());
    }

    return {
        __proto__: null,
        shared,
        makeObjectFront,

        // A call makes many, for the numbers after BATCH: a call from the native half costs more
        // than several fronts.
        makeBatch() {
            for (let i = 0; i < BATCH_SIZE; ++i) {
                batch[i] = makeObjectFront(numbers[BATCH + i]);
            }
            apply(takeNative, undefined, batch);
        },

        dropBatch() {
            for (let i = 0; i < BATCH_SIZE; ++i) {
                batch[i] = undefined;
            }
        },

        // The plug-in's name on the global object is an accessor until the plug-in gives a value
        // that may be kept, or the page assigns one of its own: then it is a plain property.
        defineGlobal(record, name) {
            const replace = (value) => { defineProperty(global, name, describe(value, true)); };
            defineProperty(global, name, {
                __proto__: null,
                enumerable: true,
                configurable: true,
                get() {
                    const value = read(record, name, 0);
                    if ((numbers[ANSWER] & KEPT) !== 0) {
                        replace(value);
                    }
                    return value;
                },
                set(value) {
                    if (!write(record, name, value)) {
                        replace(value);
                    }
                },
            });
        },

        // `holder` keeps these alive from now on, and nothing that it kept before.
        hold(holder, held) {
            holders.set(holder, held);
        },

        // Of a function that has names.
        makeFunctionFront(callable) {
            return makeFront(numbers[BATCH], callable);
        },
    };
})
