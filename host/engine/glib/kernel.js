// The script half of the engine's C interface over GLib's: which object has which number, and how
// calls cross. Evaluated once in each document, before any script of the page. As in fronts.js,
// nothing is looked up where a page could have put something of its own.
//
// Values cross as a kind and a number each, in memory that both sides see, and texts as arguments
// and results, which is what GLib's interface does fastest. The first place is the header: how many
// values follow; then the result's. What the native half makes in a call is made here when that
// returns, so that nothing else has to cross.
(function (callNative, callForText, callWithTexts, textNative, numberNative, shareNative) {
    'use strict';

    const { apply, construct, get, set } = Reflect;
    const global = globalThis, ErrorConstructor = Error, toText = String, toObject = Object,
          Bytes = Uint8Array, Kinds = Int32Array, Numbers = Float64Array, Weak = WeakRef;
    const { deref } = WeakRef.prototype;
    const nothing = Object.freeze({ __proto__: null, length: 0 });

    // As enum Kind in Context.h.
    const UNDEFINED = 0, NULL = 1, BOOLEAN = 2, NUMBER = 3, STRING = 4, OBJECT = 5, OTHER = 6,
          KEPT_STRING = 7, NEW_STRING = 8, NEW_FUNCTION = 9, NEW_FRONT = 10;
    const KIND = 15, THROWN = 16;  // a flag of the result's
    const DETAIL = 5;  // from this bit on: which kept text, shape of function, or front
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
    const protectedOnes = makeMap(Map);
    let isClosed = false;
    let other;  // a symbol or big integer on its way

    // Which object has a number, weakly: the native half gives numbers, and takes them back from
    // what is gone. Undefined: nobody's; null: that of one that could not be made.
    const references = { __proto__: null };
    let last = 0;
    function objectNumbered(number) {
        const reference = references[number];
        return reference === undefined || reference === null ? undefined
                                                             : apply(deref, reference, nothing);
    }
    function remember(object, number) {
        references[number] = new Weak(object);
        return object;
    }

    // A function of the native half's has its number with it, which costs less than an entry of a
    // table.
    class Numbered extends (function (object) { return object; }) {
        #number;
        constructor(object, number) {
            super(object);
            this.#number = number;
        }
        static of(object) { return #number in object ? object.#number : undefined; }
    }

    function identify(object) {
        let number = numberOf.get(object);
        if (number === undefined && typeof object === 'function') {
            number = Numbered.of(object);
        }
        if (number === undefined) {
            number = numberNative();
            last = number > last ? number : last;
            numberOf.set(object, number);
            remember(object, number);
        }
        return number;
    }

    // Puts down the numbers of those that have gone since the last time.
    function sweep() {
        const gone = { __proto__: null };
        let count = 0;
        for (let number = 1; number <= last; ++number) {
            const reference = references[number];
            if (reference === null ||
                (reference !== undefined && apply(deref, reference, nothing) === undefined)) {
                references[number] = undefined;
                gone[++count] = number;
            }
        }
        makeRoom(count + 1);
        for (let i = 1; i <= count; ++i) {
            numbers[i] = gone[i];
        }
        kinds[0] = count;
    }

    // While a script runs, the engine keeps what weak references have seen. Outside of that nobody
    // does until the native half has come to the end of what it is at, so the latest are kept here.
    const MOST_HELD = 1024;
    let held = { __proto__: null }, nextHeld = 0;
    function hold(value) {
        held[nextHeld] = value;
        nextHeld = (nextHeld + 1) % MOST_HELD;
    }

    const keptTexts = { __proto__: null };

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
        const kind = kinds[place];
        switch (kind & KIND) {
        case NULL:
            return null;
        case BOOLEAN:
            return numbers[place] !== 0;
        case NUMBER:
            return numbers[place];
        case STRING:
            return text;
        case NEW_STRING:
        case KEPT_STRING:
            return keptTexts[kind >> DETAIL];
        case OBJECT:
            return objectNumbered(numbers[place]);
        case OTHER:
            return other;
        case NEW_FUNCTION:
        case NEW_FRONT:
            return makeNumbered(kind & KIND, kind >> DETAIL, numbers[place]);
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

    // What each function of the native half's does. A function that once answered a text is called
    // in the way that brings one along, which takes the others longer.
    function invoke(on, values, number, callback, shape) {
        if (isClosed) {
            return undefined;
        }
        const count = values.length + 2;
        makeRoom(count + 1);
        texts.length = 0;
        kinds[1] = OBJECT;
        numbers[1] = number;
        add(2, on === undefined || on === null ? undefined : toObject(on));
        for (let i = 2; i < count; ++i) {
            add(i + 1, values[i - 2]);
        }
        kinds[0] = count;
        numbers[0] = callback;
        let text = texts.length !== 0 ? apply(callWithTexts, undefined, texts)
            : shape.answersText ? callForText() : callNative();
        // Before anything that fails where the stack ends: the native half counts on it.
        const header = kinds[0], kind = header & KIND;
        if (kind === NEW_STRING) {
            keptTexts[header >> DETAIL] = text;
        } else if (kind > NEW_STRING) {
            references[numbers[0]] = null;
        } else if (kind === STRING) {
            shape.answersText = true;
            text = text === undefined || text === null ? textNative() : text;
        }
        const result = take(0, text);
        if ((header & THROWN) !== 0) {
            throw result;
        }
        return result;
    }

    // What the native half has given a number to and is now to be: a function of a name, which it
    // has told how to make, or a front.
    const shapes = { __proto__: null };
    let makeFront;
    function makeNumbered(kind, detail, number) {
        references[number] = null;
        last = number > last ? number : last;
        if (kind === NEW_FUNCTION) {
            const made = shapes[detail](number);
            new Numbered(made, number);
            return remember(made, number);
        }
        const made = makeFront(detail);
        numberOf.set(made, number);
        return remember(made, number);
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
        bytes: (number) => new Bytes(objectNumbered(number)),
        sweep,
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
        shape(place, callback, makeMaker) {
            shapes[place] = makeMaker(invoke, callback, { __proto__: null, answersText: false });
        },
        frontsBy: operation((values) => { makeFront = values[0]; }),
        be: operation((values) => values[0]),
        isFunction: operation((values) => typeof values[0] === 'function'),
        isAlive: operation((values) => values[0] !== undefined),
        protect: operation((values) => { protectedOnes.set(identify(values[0]), values[0]); }),
        unprotect: operation((values) => { protectedOnes.delete(identify(values[0])); }),
    };
})
