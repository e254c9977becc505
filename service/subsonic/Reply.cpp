#include "subsonic/Reply.h"

#include "store/GlibText.h"

#include <json-glib/json-glib.h>

#include <cmath>
#include <cstddef>
#include <utility>

namespace sonolet::service {

namespace {

// The deepest answer, of a directory of songs with their artists, has some eight levels. The parser
// calls itself for each.
constexpr int deepest = 64;

bool isTooDeep(std::string_view json) {
    int depth = 0;
    bool inText = false;
    for (std::size_t place = 0; place < json.size(); ++place) {
        const char character = json[place];
        if (inText) {
            place += character == '\\' ? 1 : 0;
            inText = character != '"';
        } else if (character == '"') {
            inText = true;
        } else if (character == '[' || character == '{') {
            if (++depth > deepest) {
                return true;
            }
        } else if (character == ']' || character == '}') {
            --depth;
        }
    }
    return false;
}

std::string clean(const char* text) {
    std::string cleaned;
    const GlibText valid(g_utf8_make_valid(text, -1));
    for (const char* place = valid.get(); *place != '\0'; ++place) {
        const bool control = static_cast<unsigned char>(*place) < ' ' || *place == 0x7f;
        cleaned += control ? ' ' : *place;
    }
    return cleaned;
}

}  // namespace

Reply Reply::parse(std::string_view json) {
    if (isTooDeep(json)) {
        throw Malformed("the answer is nested too deep");
    }
    const std::shared_ptr<JsonParser> parser(json_parser_new(), g_object_unref);
    GError* error = nullptr;
    if (!json_parser_load_from_data(parser.get(), json.data(), static_cast<gssize>(json.size()),
                                    &error)) {
        const std::string why = error->message;
        g_error_free(error);
        throw Malformed("the answer is no JSON: " + clean(why.c_str()));
    }
    Reply reply;
    reply.node = json_parser_get_root(parser.get());
    reply.whole = parser;
    if (reply.node == nullptr || JSON_NODE_HOLDS_NULL(reply.node)) {
        throw Malformed("the answer is empty");
    }
    return reply;
}

Reply Reply::operator[](const char* name) const {
    Reply member;
    if (node != nullptr && JSON_NODE_HOLDS_OBJECT(node)) {
        JsonNode* found = json_object_get_member(json_node_get_object(node), name);
        if (found != nullptr && !JSON_NODE_HOLDS_NULL(found)) {
            member.whole = whole;
            member.node = found;
        }
    }
    return member;
}

std::vector<Reply> Reply::list() const {
    if (node == nullptr || !JSON_NODE_HOLDS_ARRAY(node)) {
        return exists() ? std::vector<Reply>{*this} : std::vector<Reply>{};
    }
    std::vector<Reply> elements;
    JsonArray* array = json_node_get_array(node);
    for (guint index = 0; index < json_array_get_length(array); ++index) {
        Reply element;
        element.whole = whole;
        element.node = json_array_get_element(array, index);
        if (!JSON_NODE_HOLDS_NULL(element.node)) {
            elements.push_back(std::move(element));
        }
    }
    return elements;
}

std::string Reply::text() const {
    if (node == nullptr || !JSON_NODE_HOLDS_VALUE(node)) {
        return {};
    }
    switch (json_node_get_value_type(node)) {
    case G_TYPE_STRING:
        return clean(json_node_get_string(node));
    case G_TYPE_INT64:
        return std::to_string(json_node_get_int(node));
    case G_TYPE_DOUBLE: {
        char digits[G_ASCII_DTOSTR_BUF_SIZE];
        return g_ascii_dtostr(digits, sizeof(digits), json_node_get_double(node));
    }
    case G_TYPE_BOOLEAN:
        return json_node_get_boolean(node) ? "true" : "false";
    default:
        return {};
    }
}

std::int64_t Reply::number() const {
    if (node == nullptr || !JSON_NODE_HOLDS_VALUE(node)) {
        return 0;
    }
    if (json_node_get_value_type(node) == G_TYPE_INT64) {
        return json_node_get_int(node);
    }
    const double value = g_ascii_strtod(text().c_str(), nullptr);
    constexpr double largest = 9e18;
    return std::isfinite(value) && std::fabs(value) < largest ? static_cast<std::int64_t>(value)
                                                              : 0;
}

bool Reply::flag() const {
    const std::string value = text();
    return value == "true" || value == "1";
}

std::int64_t Reply::time() const {
    GTimeZone* local = g_time_zone_new_local();
    GDateTime* read = g_date_time_new_from_iso8601(text().c_str(), local);
    g_time_zone_unref(local);
    if (read == nullptr) {
        return 0;
    }
    const std::int64_t seconds = g_date_time_to_unix(read);
    const std::int64_t fraction = g_date_time_get_microsecond(read);
    g_date_time_unref(read);
    return seconds * G_USEC_PER_SEC + fraction;
}

}  // namespace sonolet::service
