#include "Site.h"

#include <stdexcept>
#include <utility>

Site::Site(std::map<std::string, std::string> htmlPages)
    : pages(std::move(htmlPages)), context(g_main_context_new()),
      loop(g_main_loop_new(context, FALSE)) {
    g_main_context_push_thread_default(context);
    server = soup_server_new(nullptr, nullptr);
    soup_server_add_handler(
        server, nullptr,
        [](SoupServer*, SoupServerMessage* message, const char* path, GHashTable*, gpointer self) {
            const auto& all = static_cast<Site*>(self)->pages;
            const auto found = all.find(path);
            const std::string page = found != all.end() ? found->second : "";
            soup_server_message_set_status(message, found != all.end() ? 200 : 404, nullptr);
            soup_server_message_set_response(message, "text/html", SOUP_MEMORY_COPY, page.data(),
                                             page.size());
        },
        this, nullptr);
    GError* error = nullptr;
    if (soup_server_listen_local(server, 0, SOUP_SERVER_LISTEN_IPV4_ONLY, &error) == 0) {
        throw std::runtime_error(error->message);
    }
    GSList* const uris = soup_server_get_uris(server);
    port = static_cast<guint>(g_uri_get_port(static_cast<GUri*>(uris->data)));
    g_slist_free_full(uris, reinterpret_cast<GDestroyNotify>(g_uri_unref));
    g_main_context_pop_thread_default(context);
    thread = std::thread([this] {
        g_main_context_push_thread_default(context);
        g_main_loop_run(loop);
        g_main_context_pop_thread_default(context);
    });
}

Site::~Site() {
    g_main_context_invoke(
        context,
        [](gpointer self) -> gboolean {
            g_main_loop_quit(static_cast<Site*>(self)->loop);
            return G_SOURCE_REMOVE;
        },
        this);
    thread.join();
    g_object_unref(server);
    g_main_loop_unref(loop);
    g_main_context_unref(context);
}

std::string Site::address(const std::string& host, const std::string& path) const {
    return "http://" + host + ":" + std::to_string(port) + path;
}
