#include "calls/Event.h"

#include <cstring>

namespace {

const char* readValues(const char* from, std::size_t count, std::vector<Value>& values) {
    values.resize(count);
    for (Value& value : values) {
        std::memcpy(&value, from, sizeof value);
        from += sizeof value;
        if (value.tag == Tag::Texts) {
            const char* const texts = from;
            for (std::uint32_t i = 0; i < value.size && i < limits.array; ++i) {
                from += std::strlen(from) + 1;
            }
            from = texts + padded(static_cast<std::size_t>(from - texts));
            value.u.pointer = texts;
        } else if (const std::size_t stored = storedBytes(value)) {
            value.u.pointer = from;
            from += padded(stored);
        }
    }
    return from;
}

const Value* at(const std::vector<Value>& values, std::size_t index) {
    return index < values.size() ? &values[index] : nullptr;
}

const void* pointerOf(const Value* value) {
    const bool has = value != nullptr && (value->tag == Tag::Object || value->tag == Tag::Handle ||
                                          value->tag == Tag::Pointer);
    return has ? value->u.pointer : nullptr;
}

std::int64_t integerOf(const Value* value) {
    const bool has = value != nullptr && (value->tag == Tag::Integer || value->tag == Tag::Boolean);
    return has ? value->u.integer : 0;
}

}  // namespace

const char* Event::read(const char* from) {
    std::memcpy(&head, from, sizeof head);
    const char* const values = readValues(from + sizeof head, head.argumentCount, arguments);
    readValues(values, head.resultCount, results);
    return from + head.bytes;
}

const void* Event::pointer(std::size_t argument) const {
    return pointerOf(at(arguments, argument));
}

std::int64_t Event::integer(std::size_t argument) const {
    return integerOf(at(arguments, argument));
}

std::string_view Event::text(std::size_t argument) const {
    const Value* const value = at(arguments, argument);
    return value != nullptr ? storedText(*value) : std::string_view();
}

const void* Event::resultPointer(std::size_t result) const {
    return pointerOf(at(results, result));
}

std::int64_t Event::resultInteger(std::size_t result) const {
    return integerOf(at(results, result));
}

std::string_view storedText(const Value& value) {
    const bool isText =
        value.tag == Tag::Text || value.tag == Tag::Expression || value.tag == Tag::Secret;
    return isText && value.u.text != nullptr ? std::string_view(value.u.text, storedBytes(value))
                                             : std::string_view();
}
