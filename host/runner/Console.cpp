#include "runner/Console.h"

#include "engine/Text.h"
#include "runner/Function.h"

#include <cstdio>
#include <string>

namespace console {

namespace {

// Called with the two functions that write a line. Everything that it uses is taken before the page
// can change it, and every look at an object of the page may throw.
const char* const script = R"js((function (out, err) {
    'use strict';
    const { getOwnPropertyDescriptor, getOwnPropertyNames } = Object;
    const { isArray } = Array;
    const { stringify } = JSON;
    const toStringTag = Object.prototype.toString;
    const apply = Reflect.apply;
    const TextOf = String;
    const ErrorType = Error;
    const limit = 100;

    function inspectObject(value, depth, seen) {
        if (typeof value === 'function') {
            const name = getOwnPropertyDescriptor(value, 'name');
            return name && typeof name.value === 'string' && name.value !== ''
                ? `[Function ${name.value}]` : '[Function]';
        }
        if (value instanceof ErrorType) {
            return `${TextOf(value)}${value.stack ? `\n${indent(TextOf(value.stack))}` : ''}`;
        }
        const tag = apply(toStringTag, value, []);
        if (tag === '[object Date]' || tag === '[object RegExp]') {
            return TextOf(value);
        }
        if (seen.includes(value)) {
            return '[Circular]';
        }
        const array = isArray(value);
        if (depth > 3) {
            return array ? '[Array]' : '[Object]';
        }
        const inner = [...seen, value];
        const parts = [];
        if (array) {
            for (let i = 0; i < value.length && i < limit; ++i) {
                parts.push(inspect(value[i], depth + 1, inner));
            }
            if (value.length > limit) {
                parts.push(`${value.length - limit} more`);
            }
            return `[${parts.join(', ')}]`;
        }
        // What a native object keeps stands behind accessors of the host.
        const native = tag === '[object NativeObject]';
        for (const key of getOwnPropertyNames(value)) {
            const property = getOwnPropertyDescriptor(value, key);
            if (property === undefined || (!property.enumerable && tag === '[object Object]')) {
                continue;
            }
            if (parts.length === limit) {
                parts.push('...');
                break;
            }
            parts.push(`${key}: ${'value' in property || native
                ? inspect(value[key], depth + 1, inner) : '[Getter]'}`);
        }
        const name = tag.slice(8, -1);
        const prefix = name === 'Object' ? '' : `${name} `;
        return `${prefix}${parts.length === 0 ? '{}' : `{ ${parts.join(', ')} }`}`;
    }

    function indent(text) {
        return text.split('\n').map((line) => `    ${line}`).join('\n');
    }

    function inspect(value, depth, seen) {
        if (typeof value === 'string') {
            return depth === 0 ? value : stringify(value);
        }
        if (typeof value === 'bigint') {
            return `${value}n`;
        }
        if (typeof value === 'number') {
            return Object.is(value, -0) ? '-0' : TextOf(value);
        }
        if (value === null || (typeof value !== 'object' && typeof value !== 'function')) {
            return TextOf(value);
        }
        try {
            return inspectObject(value, depth, seen);
        } catch (error) {
            return '[object that cannot be shown]';
        }
    }

    function substitute(format, values) {
        return format.replace(/%([sdifoOjc%])/g, (whole, kind) => {
            if (kind === '%') {
                return '%';
            }
            if (values.length === 0) {
                return whole;
            }
            const value = values.shift();
            try {
                switch (kind) {
                case 's': return inspect(value, 0, []);
                case 'd': return TextOf(Number(value));
                case 'i': return TextOf(parseInt(value, 10));
                case 'f': return TextOf(parseFloat(value));
                case 'j': return stringify(value);
                case 'c': return '';
                default: return inspect(value, 1, []);
                }
            } catch (error) {
                return '[object that cannot be shown]';
            }
        });
    }

    function line(values) {
        const rest = [...values];
        const parts = [];
        if (rest.length > 1 && typeof rest[0] === 'string') {
            parts.push(substitute(rest.shift(), rest));
        }
        for (const value of rest) {
            parts.push(inspect(value, 0, []));
        }
        return parts.join(' ');
    }

    function table(rows) {
        if (rows === null || typeof rows !== 'object') {
            return line([rows]);
        }
        const columns = [];
        const entries = Object.keys(rows).map((key) => {
            const row = rows[key];
            const cells = new Map();
            if (row !== null && typeof row === 'object') {
                for (const column of Object.keys(row)) {
                    if (!columns.includes(column)) {
                        columns.push(column);
                    }
                    cells.set(column, inspect(row[column], 1, []));
                }
            } else {
                cells.set('value', inspect(row, 1, []));
            }
            return [key, cells];
        });
        if (entries.some(([, cells]) => cells.has('value')) && !columns.includes('value')) {
            columns.push('value');
        }
        const text = [['', ...columns],
            ...entries.map(([key, cells]) => [key, ...columns.map((c) => cells.get(c) ?? '')])];
        const widths = text[0].map((_, i) => Math.max(...text.map((row) => row[i].length)));
        return text.map((row) =>
            row.map((cell, i) => cell.padEnd(widths[i])).join('  ').trimEnd()).join('\n');
    }

    function tableOrLine(rows) {
        try {
            return table(rows);
        } catch (error) {
            return line([rows]);
        }
    }

    return {
        log(...values) { out(line(values)); },
        info(...values) { out(line(values)); },
        debug(...values) { out(line(values)); },
        warn(...values) { err(line(values)); },
        error(...values) { err(line(values)); },
        table(rows) { out(tableOrLine(rows)); },
    };
}))js";

// Lines of the page go out at once, in order with what others write.
function::Body writer(std::FILE* stream) {
    return [stream](JSContextRef context, size_t argc, const JSValueRef argv[]) {
        const std::string line = (argc > 0 ? text::toUtf8(context, argv[0]) : "") + '\n';
        std::fwrite(line.data(), 1, line.size(), stream);
        std::fflush(stream);
        return JSValueMakeUndefined(context);
    };
}

}  // namespace

void install(JSGlobalContextRef context) {
    const text::EngineString source(script);
    const JSObjectRef maker = JSValueToObject(
        context, JSEvaluateScript(context, source.get(), nullptr, nullptr, 1, nullptr), nullptr);
    const JSValueRef writers[] = {function::make(context, "out", writer(stdout)),
                                  function::make(context, "err", writer(stderr))};
    function::setProperty(context, JSContextGetGlobalObject(context), "console",
                          JSObjectCallAsFunction(context, maker, nullptr, 2, writers, nullptr));
}

}  // namespace console
