// What crosses between the two halves: values in shared memory, texts beside them.

#include "engine/glib/Context.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <functional>
#include <iterator>
#include <utility>

namespace {

// As kernel.js knows them.
constexpr std::int32_t keptString = 7;
constexpr std::int32_t newString = 8;
constexpr std::int32_t newFunction = 9;
constexpr std::int32_t newFront = 10;
constexpr std::int32_t kindMask = 15;
constexpr unsigned detailShift = 5;

constexpr std::size_t longestKept = 32;

template <class T>
std::int32_t withDetail(std::int32_t kind, T detail) {
    return kind | static_cast<std::int32_t>(static_cast<std::uint32_t>(detail) << detailShift);
}

std::size_t hashOf(const std::string& text) {
    return std::hash<std::string>{}(text);
}

std::string textOf(JSCValue* value) {
    // As bytes: there may be a NUL in it.
    GBytes* const bytes = jsc_value_to_string_as_bytes(value);
    if (bytes == nullptr) {
        return {};
    }
    gsize size = 0;
    const auto* const data = static_cast<const char*>(g_bytes_get_data(bytes, &size));
    std::string text(data != nullptr ? data : "", size);
    g_bytes_unref(bytes);
    return text;
}

// As a string in a script.
std::string literalOf(const std::string& text) {
    std::string literal = "\"";
    for (const char c : text) {
        if (std::isalnum(static_cast<unsigned char>(c)) != 0 || (c & 0x80) != 0) {
            literal += c;
        } else {
            std::array<char, 5> escaped{};
            std::snprintf(escaped.data(), escaped.size(), "\\x%02x", c);
            literal += escaped.data();
        }
    }
    return literal + '"';
}

}  // namespace

OpaqueJSValue* OpaqueJSContext::take(std::size_t place, JSCValue* text) {
    const auto kind = static_cast<Kind>(kinds[place] & kindMask);
    return kind == Kind::Object   ? &objects[static_cast<std::size_t>(numbers[place])]
           : kind == Kind::String ? make(kind, 0, textOf(text))
                                  : make(kind, numbers[place]);
}

void OpaqueJSContext::put(std::size_t place, OpaqueJSValue& value) {
    auto kind = static_cast<std::int32_t>(value.kind);
    switch (std::exchange(value.future, OpaqueJSValue::Future::None)) {
    case OpaqueJSValue::Future::Function:
        kind = withDetail(newFunction, shapeOf(value));
        break;
    case OpaqueJSValue::Future::Front:
        kind = withDetail(newFront, value.futureOf);
        break;
    default:
        break;
    }
    kinds[place] = kind;
    numbers[place] = value.number;
}

bool OpaqueJSContext::putResult(OpaqueJSValue& value, bool bringsText) {
    put(0, value);
    if (value.kind != Kind::String) {
        return false;
    }
    const bool isShort = !value.text.empty() && value.text.size() < longestKept;
    const std::size_t place = isShort ? hashOf(value.text) % keptTexts.size() : 0;
    if (isShort && keptTexts[place] == value.text) {
        kinds[0] = withDetail(keptString, place);
        return false;
    }
    textOfResult = std::move(value.text);
    if (!bringsText ||
        g_utf8_validate_len(textOfResult.data(), textOfResult.size(), nullptr) == FALSE) {
        return false;
    }
    if (isShort) {
        kinds[0] = withDetail(newString, place);
        keptTexts[place] = textOfResult;
    }
    return true;
}

JSCValue* OpaqueJSContext::makeText(const std::string& text) {
    GBytes* const bytes = g_bytes_new(text.data(), text.size());
    JSCValue* const made = jsc_value_new_string_from_bytes(context, bytes);
    g_bytes_unref(bytes);
    return made;
}

std::size_t OpaqueJSContext::shapeOf(const OpaqueJSValue& function) {
    const std::size_t place = hashOf(function.text) % shapes.size();
    Shape& known = shapes[place];
    if (known.callback != function.futureOf || known.name != function.text) {
        const std::string name = literalOf(function.text);
        const std::string script =
            "(function (invoke, callback, shape) { 'use strict'; return (number) => ({ " + name +
            "(...values) { return invoke(this, values, number, callback, shape); } })[" + name +
            "]; })";
        JSCValue* parameters[] = {
            jsc_value_new_number(context, static_cast<double>(place)),
            jsc_value_new_number(context, function.futureOf),
            jsc_context_evaluate(context, script.data(), static_cast<gssize>(script.size())),
        };
        g_object_unref(
            jsc_value_function_callv(this->function("shape"), std::size(parameters), parameters));
        std::for_each(std::begin(parameters), std::end(parameters), g_object_unref);
        if (jsc_context_get_exception(context) != nullptr) {
            jsc_context_clear_exception(context);
            return shapes.size();  // none is there
        }
        known = {function.text, function.futureOf};
    }
    return place;
}
