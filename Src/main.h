#ifndef SONOLET_MAIN_H
#define SONOLET_MAIN_H

#include "jspp/result_context.h"

#include "jsplugin.h"

#include <string>

// The plug-in's hooks; js_load_plugin() hangs them into the framework. Script thread.

// Serves the global name "Spotify".
void js_getter(const std::string& name, jspp::result_context& context);
void js_init_global_context(jsplugin_obj* ctx);
void js_destroy_global_context();

// Tells in the log that the plug-in is loaded.
void js_plugin_loaded();

// The plug-in's tick: drives libspotify and the player, and reports the progress.
int document_interval(const jsplugin_obj* ctx) noexcept;

#endif
