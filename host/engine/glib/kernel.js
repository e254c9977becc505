// The script half of the engine's C interface over GLib's: which object has which number, and how
// calls cross. Evaluated once in each document, before any script of the page. As in fronts.js,
// nothing is looked up where a page could have put something of its own.
//
// Values cross as a kind and a number each, in memory that both sides see, and texts as arguments
// and results, which is what GLib's interface does fastest. The first place is the header: how many
// values follow; then the result's.
(function (callNative, callWithTexts, diedNative, shareNative) {
    'use strict';

    const { apply, construct, get, set } = Reflect;
    const global = globalThis, ErrorConstructor = Error, toText = String, toObject = Object,
          Bytes = Uint8Array, Kinds = Int32Array, Numbers = Float64Array, Weak = WeakRef;
    const { deref } = WeakRef.prototype;

    // As enum Kind in Context.h.
    const UNDEFINED = 0, NULL = 1, BOOLEAN = 2, NUMBER = 3, STRING = 4, OBJECT = 5, OTHER = 6;
    const THROWN = 16;  // a flag of the result's
    const OUTSIDE = 1 << 30;  // a flag of the count's: no call from script is under way

    let room = 0, kinds, numbers;
    function makeRoom(count) {
        if (count > room) {
            room = 2 * count;
            kinds = new Kinds(room);
            numbers = new Numbers(room);
            shareNative(kinds, numbers);
        }
    }
    makeRoom(32);

    function makeMap(Constructor) {
        const made = new Constructor();
        for (const method of ['get', 'set', 'delete']) {
            made[method] = Constructor.prototype[method];
        }
        return made;
    }
    const numberOf = makeMap(WeakMap);
    const weak = makeMap(Map);       // by number
    const protectedOnes = makeMap(Map);
    let last = 0;
    let isClosed = false;
    let other;  // a symbol or big integer on its way

    const registry = new FinalizationRegistry((number) => {
        weak.delete(number);
        diedNative(number);
    });
    registry.register = FinalizationRegistry.prototype.register;

    function identify(object) {
        let number = numberOf.get(object);
        if (number === undefined) {
            number = ++last;
            numberOf.set(object, number);
            const reference = new Weak(object);
            reference.deref = deref;
            weak.set(number, reference);
            registry.register(object, number);
        }
        return number;
    }

    // While a script runs, the engine keeps what weak references have seen. Outside of that nobody
    // does until the native half has come to the end of what it is at, so the latest are kept here.
    const MOST_HELD = 1024;
    let held = { __proto__: null }, nextHeld = 0;
    function hold(value) {
        held[nextHeld] = value;
        nextHeld = (nextHeld + 1) % MOST_HELD;
    }

    // Answers the text, if it is one.
    function put(place, value) {
        switch (typeof value) {
        case 'undefined':
            kinds[place] = UNDEFINED;
            return undefined;
        case 'boolean':
            kinds[place] = BOOLEAN;
            numbers[place] = value ? 1 : 0;
            return undefined;
        case 'number':
            kinds[place] = NUMBER;
            numbers[place] = value;
            return undefined;
        case 'string':
            kinds[place] = STRING;
            return value;
        case 'object':
        case 'function':
            if (value === null) {
                kinds[place] = NULL;
            } else {
                kinds[place] = OBJECT;
                numbers[place] = identify(value);
            }
            return undefined;
        default:
            kinds[place] = OTHER;
            other = value;
            return undefined;
        }
    }

    function take(place, text) {
        switch (kinds[place] & ~THROWN) {
        case NULL:
            return null;
        case BOOLEAN:
            return numbers[place] !== 0;
        case NUMBER:
            return numbers[place];
        case STRING:
            return text;
        case OBJECT: {
            const reference = weak.get(numbers[place]);
            return reference === undefined ? undefined : reference.deref();
        }
        case OTHER:
            return other;
        default:
            return undefined;
        }
    }

    // The texts of a call, for `apply`; without a prototype, which could have setters.
    const texts = { __proto__: null, length: 0 };
    function add(place, value) {
        const text = put(place, value);
        if (text !== undefined) {
            texts[texts.length++] = text;
        }
    }

    // A function of the native half's.
    function makeFunction(name, callback) {
        let number = 0;
        const made = {
            [name](...values) {
                if (isClosed) {
                    return undefined;
                }
                const count = values.length + 2;
                makeRoom(count + 1);
                texts.length = 0;
                kinds[1] = OBJECT;
                numbers[1] = number;
                add(2, this === undefined || this === null ? global : toObject(this));
                for (let i = 2; i < count; ++i) {
                    add(i + 1, values[i - 2]);
                }
                kinds[0] = count;
                numbers[0] = callback;
                const text = texts.length === 0 ? callNative()
                                                : apply(callWithTexts, undefined, texts);
                const result = take(0, text);
                if ((kinds[0] & THROWN) !== 0) {
                    throw result;
                }
                return result;
            },
        }[name];
        number = identify(made);
        return made;
    }

    // What the native half calls: takes the values that it has put down, puts the result, and
    // answers its text.
    function operation(body) {
        return (...given) => {
            const isOutside = kinds[0] >= OUTSIDE;
            const count = kinds[0] % OUTSIDE;
            const values = { __proto__: null, length: count };
            for (let i = 0, next = 0; i < count; ++i) {
                values[i] = take(i + 1, kinds[i + 1] === STRING ? given[next++] : undefined);
                if (isOutside) {
                    hold(values[i]);
                }
            }
            let result;
            let hasThrown = 0;
            try {
                result = body(values);
            } catch (error) {
                result = error;
                hasThrown = THROWN;
            }
            if (isOutside) {
                hold(result);
            }
            const text = put(0, result);
            kinds[0] |= hasThrown;
            return text;
        };
    }

    function rest(values, from) {
        const list = { __proto__: null, length: values.length - from };
        for (let i = from; i < values.length; ++i) {
            list[i - from] = values[i];
        }
        return list;
    }

    return {
        __proto__: null,
        makeRoom,
        close() { isClosed = true; },
        letGo() {
            held = { __proto__: null };
            nextHeld = 0;
        },
        accept(value) {
            hold(value);
            return put(0, value);
        },
        bytes: (number) => new Bytes(weak.get(number).deref()),
        call: operation((values) => apply(values[0], values[1] === undefined ? global : values[1],
                                          rest(values, 2))),
        construct: operation((values) => construct(values[0], rest(values, 1))),
        array: operation((values) => apply((...all) => all, undefined, values)),
        object: operation(() => ({})),
        error: operation((values) => new ErrorConstructor(values[0])),
        text: operation((values) => toText(values[0])),
        global: operation(() => global),
        get: operation((values) => get(values[0], values[1])),
        set: operation((values) => set(values[0], values[1], values[2])),
        makeFunction: operation((values) => makeFunction(values[0], values[1])),
        isFunction: operation((values) => typeof values[0] === 'function'),
        isAlive: operation((values) => values[0] !== undefined),
        protect: operation((values) => { protectedOnes.set(identify(values[0]), values[0]); }),
        unprotect: operation((values) => { protectedOnes.delete(identify(values[0])); }),
    };
})
