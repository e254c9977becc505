#ifndef SONOLET_TESTS_SERVICE_SERVER_ANSWERS_H
#define SONOLET_TESTS_SERVICE_SERVER_ANSWERS_H

#include "subsonic/Reply.h"

#include <json-glib/json-glib.h>

#include <algorithm>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace sonolet::test {

// Answers that a server has given, by the names that record.sh has for them.
class Answers final {
public:
    Answers() : parser(json_parser_new(), g_object_unref) {
        g_autoptr(GError) error = nullptr;
        if (json_parser_load_from_file(parser.get(), SONOLET_ANSWERS, &error) == FALSE) {
            throw std::runtime_error(error->message);
        }
    }
    JsonNode* node(const std::string& name) const {
        JsonObject* all = json_node_get_object(json_parser_get_root(parser.get()));
        JsonNode* found = json_object_get_member(all, name.c_str());
        return found == nullptr ? throw std::runtime_error("no " + name) : found;
    }
    static std::string text(JsonNode* node) {
        g_autofree gchar* json = json_to_string(node, FALSE);
        return json;
    }
    std::string text(const std::string& name) const { return text(node(name)); }
    service::Reply operator[](const std::string& name) const {
        return service::Reply::parse(text(name))["subsonic-response"];
    }

private:
    const std::shared_ptr<JsonParser> parser;
};

// What stands at a path of an answer, as "album/song"; of a list, each. Borrowed.
inline std::vector<JsonObject*> objectsAt(JsonNode* root, const std::string& path) {
    std::vector<JsonNode*> nodes = {root};
    std::istringstream names("subsonic-response/" + path);
    for (std::string name; std::getline(names, name, '/');) {
        std::vector<JsonNode*> inside;
        for (JsonNode* node : nodes) {
            JsonNode* found = json_object_get_member(json_node_get_object(node), name.c_str());
            if (found != nullptr && JSON_NODE_HOLDS_ARRAY(found)) {
                g_autoptr(GList) elements = json_array_get_elements(json_node_get_array(found));
                for (GList* each = elements; each != nullptr; each = each->next) {
                    inside.push_back(static_cast<JsonNode*>(each->data));
                }
            } else if (found != nullptr) {
                inside.push_back(found);
            }
        }
        nodes = inside;
    }
    std::vector<JsonObject*> objects(nodes.size());
    std::transform(nodes.begin(), nodes.end(), objects.begin(), json_node_get_object);
    return objects;
}

}  // namespace sonolet::test

#endif
