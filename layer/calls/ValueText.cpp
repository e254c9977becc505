#include "calls/ValueText.h"

#include "calls/Event.h"
#include "calls/Json.h"
#include "tap/Utf8.h"

#include <cmath>

namespace {

void appendArray(std::string& out, const Value& value) {
    const std::size_t count = value.size < limits.array ? value.size : limits.array;
    const char* const kind = value.tag == Tag::Handles ? handleNames[value.kind] : "texts";
    out += value.tag == Tag::Integers ? "[" : std::string("{\"") + kind + "\":[";
    const char* text = value.u.text;
    for (std::size_t i = 0; value.u.pointer != nullptr && i < count; ++i) {
        out += i > 0 ? "," : "";
        if (value.tag == Tag::Integers) {
            json::integer(out, static_cast<const int*>(value.u.pointer)[i]);
        } else if (value.tag == Tag::Handles) {
            json::address(out, static_cast<const void* const*>(value.u.pointer)[i]);
        } else {
            json::text(out, text);
            text += std::char_traits<char>::length(text) + 1;
        }
    }
    out += value.tag == Tag::Integers ? "]" : "]}";
}

}  // namespace

void appendValue(std::string& out, const Value& value) {
    const auto open = [&](const char* kind) {
        out += "{\"";
        out += kind;
        out += "\":";
    };
    switch (value.tag) {
    case Tag::Nothing:
        if (value.kind != 0) {
            open("type");
            json::integer(out, static_cast<std::int32_t>(value.size));
            out += '}';
        } else {
            out += "{}";
        }
        break;
    case Tag::Undefined:
        out += "{\"undefined\":true}";
        break;
    case Tag::Null:
        out += "null";
        break;
    case Tag::Boolean:
        out += value.u.integer != 0 ? "true" : "false";
        break;
    case Tag::Integer:
        json::integer(out, value.u.integer);
        break;
    case Tag::Number:
        if (std::isfinite(value.u.number)) {
            json::number(out, value.u.number);
        } else {
            open("number");
            json::number(out, value.u.number);
            out += '}';
        }
        break;
    case Tag::Secret:
        out += "{\"secret\":true}";
        break;
    case Tag::Text:
        if (value.u.text == nullptr) {
            out += "{\"text\":null}";
        } else if (value.size <= limits.text && !isUtf8(storedText(value))) {
            open("bytes of text");
            json::hex(out, value.u.text, value.size);
            out += '}';
        } else if (value.size > limits.text) {
            open("text");
            json::text(out, storedText(value));
            out += ",\"bytes\":";
            json::integer(out, value.size);
            out += '}';
        } else {
            json::text(out, storedText(value));
        }
        break;
    case Tag::Expression:
        open("expression");
        json::text(out, storedText(value));
        out += '}';
        break;
    case Tag::Object:
        open(value.kind != 0 ? "native" : "object");
        json::address(out, value.u.pointer);
        out += '}';
        break;
    case Tag::Handle:
        open(handleNames[value.kind]);
        json::address(out, value.u.pointer);
        out += '}';
        break;
    case Tag::Pointer:
        open("at");
        json::address(out, value.u.pointer);
        out += '}';
        break;
    case Tag::Bytes:
        open("hex");
        json::hex(out, value.u.pointer, storedBytes(value));
        out += ",\"bytes\":";
        json::integer(out, value.size);
        out += '}';
        break;
    default:
        appendArray(out, value);
    }
}
