#include "replay/Twins.h"

#include "calls/ValueText.h"
#include "replay/Recording.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

using nlohmann::json;

namespace {

[[noreturn]] void refuse(const json& value, const char* what) {
    throw NotReplayable(value.dump(-1, ' ', false, json::error_handler_t::replace) + " is " + what);
}

bool has(const json& value, const char* kind) {
    return value.is_object() && value.contains(kind);
}

json addressed(const char* kind, Twins::Address address) {
    char text[24];
    std::snprintf(text, sizeof text, "%llx", static_cast<unsigned long long>(address));
    return json{{kind, text}};
}

}  // namespace

Twins::Address Twins::address(const json& value) {
    if (!value.is_object() || value.empty() || !value.begin()->is_string()) {
        refuse(value, "no address");
    }
    const std::string& digits = value.begin()->get_ref<const std::string&>();
    char* end = nullptr;
    const unsigned long long address = std::strtoull(digits.c_str(), &end, 16);
    if (digits.empty() || *end != '\0' || address > UINTPTR_MAX) {
        refuse(value, "no address");
    }
    return static_cast<Address>(address);
}

int Twins::count(const json& value, std::size_t there) {
    if (value != there) {
        refuse(value, ("no number of the " + std::to_string(there) + " values there").c_str());
    }
    return value.get<int>();
}

Twins::Object* Twins::object(const json& value) {
    const Address recorded = address(value);
    if (recorded == 0) {
        return nullptr;
    }
    std::unique_ptr<Object>& twin = objects[recorded];
    if (!twin) {
        twin = std::make_unique<Object>();
        pair(recorded, &twin->own);
    }
    return twin.get();
}

Twins::Object& Twins::makeObject(const json& value) {
    Object* const twin = object(value);
    if (twin == nullptr) {
        refuse(value, "no object");
    }
    *twin = Object();
    return *twin;
}

const char* Twins::text(const json& value) {
    if (value.is_string()) {
        return keep(value.get<std::string>());
    }
    if (has(value, "secret") && has(value, "bytes")) {
        const auto bytes = value["bytes"].get<std::int64_t>();
        if (bytes < 0 || bytes > static_cast<std::int64_t>(mostBytes)) {
            refuse(value, "no secret");
        }
        return keep(standIn(value["secret"].get<std::int64_t>(), static_cast<std::size_t>(bytes)));
    }
    if (has(value, "bytes of text")) {
        return keep(bytes(json{{"hex", value["bytes of text"]}}));
    }
    if (!value.is_null() && !(has(value, "text") && value["text"].is_null())) {
        refuse(value, "no text");
    }
    return nullptr;
}

const std::string& Twins::bytes(const json& value) {
    std::string all;
    const std::string digits = has(value, "hex") ? value["hex"].get<std::string>() : std::string();
    if (digits.size() % 2 != 0 ||
        digits.find_first_not_of("0123456789abcdef") != std::string::npos) {
        refuse(value, "no bytes");
    }
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        all += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    }
    return *kept.insert(std::move(all)).first;
}

jsplugin_value Twins::slot(const json& value) {
    jsplugin_value slot{};
    if (value.is_null()) {
        slot.type = JSP_TYPE_NULL;
    } else if (value.is_boolean()) {
        slot.type = JSP_TYPE_BOOLEAN;
        slot.u.boolean = value.get<bool>() ? 1 : 0;
    } else if (value.is_number()) {
        slot.type = JSP_TYPE_NUMBER;
        slot.u.number = value.get<double>();
    } else if (has(value, "number")) {
        slot.type = JSP_TYPE_NUMBER;
        slot.u.number = value["number"] == "NaN"        ? std::nan("")
                        : value["number"] == "Infinity" ? HUGE_VAL
                                                        : -HUGE_VAL;
    } else if (has(value, "object") || has(value, "native")) {
        slot.type = has(value, "native") ? JSP_TYPE_NATIVE_OBJECT : JSP_TYPE_OBJECT;
        Object* const twin = object(value);
        slot.u.object = twin != nullptr ? &twin->own : nullptr;
    } else if (has(value, "type")) {
        slot.type = value["type"].get<int>();
    } else if (!has(value, "undefined")) {
        slot.type = JSP_TYPE_STRING;
        slot.u.string = text(value);
    }
    return slot;
}

void Twins::pair(Address recorded, const void* here) {
    const auto old = pairs.find(recorded);
    if (old != pairs.end()) {
        backwards.erase(old->second);
    }
    const auto oldHere = backwards.find(here);
    if (oldHere != backwards.end()) {
        pairs.erase(oldHere->second);
    }
    pairs[recorded] = here;
    backwards[here] = recorded;
}

json Twins::told(const Value& value, const json& expected) {
    const void* const pointer = value.u.pointer;
    const bool isObject = value.tag == Tag::Object;
    if ((isObject || value.tag == Tag::Pointer) && pointer != nullptr) {
        const char* const kind = !isObject ? "at" : value.kind != 0 ? "native" : "object";
        if (backwards.count(pointer) == 0 && has(expected, kind) && !isObject &&
            address(expected) != 0 && pairs.count(address(expected)) == 0) {
            pair(address(expected), pointer);
        }
        const auto known = backwards.find(pointer);
        return known != backwards.end() ? addressed(kind, known->second)
                                        : json{{kind, "that is not in the recording"}};
    }
    const bool isText = value.tag == Tag::Text && value.u.text != nullptr;
    if (value.tag == Tag::Secret || (isText && has(expected, "secret"))) {
        const auto secret =
            secrets.find(std::string(value.size > 0 ? value.u.text : "", value.size));
        const std::int64_t number = secret != secrets.end() ? secret->second : 0;
        return json{{"secret", number}, {"bytes", value.size}};
    }
    std::string text;
    appendValue(text, value);
    return json::parse(text, nullptr, false);
}

// The number, and what makes it as long as the secret was.
std::string Twins::standIn(std::int64_t number, std::size_t bytes) {
    static constexpr char digits[] = "0123456789abcdefghijklmnopqrstuvwxyz";
    std::string text;
    for (std::int64_t left = number; left > 0; left /= 36) {
        text += digits[left % 36];
    }
    text.resize(bytes, '*');
    if (bytes > 0) {
        secrets.emplace(text, number);
    }
    return text;
}
