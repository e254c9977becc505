#include "browser/Browser.h"

#include "browser/Protocol.h"

#include <glib-unix.h>
#include <sys/prctl.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <utility>

namespace {

namespace fs = std::filesystem;

constexpr unsigned findingsIntervalMs = 250;

// Where pages keep what they store, beside the music service's state.
std::string dataFolder() {
    const char* state = g_getenv("SONOLET_STATE");
    return state != nullptr && *state != '\0'
               ? (fs::path(state) / "browser").string()
               : (fs::path(g_get_user_state_dir()) / "sonolet" / "browser").string();
}

// "x-p2.wav" for "x.wav" and the second process. ("x-2.wav" is the second stream of one process.)
std::string ofProcess(int number, const std::string& file) {
    const fs::path path(file);
    const std::string name =
        path.stem().string() + "-p" + std::to_string(number) + path.extension().string();
    return number < 2 || file.empty() ? file : (path.parent_path() / name).string();
}

}  // namespace

Browser::Browser(const Options& givenOptions, Findings* itsFindings)
    : options(givenOptions), findings(itsFindings), context(makeContext()),
      settings(webkit_settings_new_with_settings(
          "enable-developer-extras",
          TRUE,
          "enable-write-console-messages-to-stdout",
          TRUE,
          // The modules and data of a page that is a file are files too.
          "allow-file-access-from-file-urls",
          TRUE,
          // A page that is left unloads at once.
          "enable-page-cache",
          FALSE,
          nullptr)),
      loop(g_main_loop_new(nullptr, FALSE)) {
    const auto on = [this](const char* signal, auto* handler) {
        g_signal_connect(context, signal, G_CALLBACK(handler), this);
    };
    on(
        "initialize-web-extensions",
        +[](WebKitWebContext*, Browser* self) { self->startWebProcess(); });
    on(
        "user-message-received",
        +[](WebKitWebContext*, WebKitUserMessage* message, Browser* self) -> gboolean {
            self->messageReceived(message);
            return TRUE;
        });
    on(
        "automation-started", +[](WebKitWebContext*, WebKitAutomationSession* session,
                                  Browser* self) { self->automationStarted(session); });
    webkit_web_context_set_automation_allowed(context, options.automation ? TRUE : FALSE);
}

Browser::~Browser() {
    screenshot.reset();
    windows.clear();
    g_signal_handlers_disconnect_by_data(context, this);
    g_object_unref(settings);
    g_object_unref(context);
    g_main_loop_unref(loop);
}

WebKitWebContext* Browser::makeContext() {
    // Not an ephemeral one: its pages would have no console.
    const std::string folder = dataFolder();
    // WebKit tells when it cannot write there.
    g_mkdir_with_parents(folder.c_str(), 0700);
    g_autoptr(WebKitWebsiteDataManager) manager = webkit_website_data_manager_new(
        "base-data-directory", (folder + "/data").c_str(), "base-cache-directory",
        (folder + "/cache").c_str(), nullptr);
    // One window is one process for as long as it lives, as one device is: another site shown in it
    // does not load the plug-in once more.
    auto* const made = static_cast<WebKitWebContext*>(
        g_object_new(WEBKIT_TYPE_WEB_CONTEXT, "website-data-manager", manager,
                     "process-swap-on-cross-site-navigation-enabled", FALSE, nullptr));
    webkit_web_context_set_cache_model(made, WEBKIT_CACHE_MODEL_DOCUMENT_VIEWER);
    return made;
}

int Browser::run() {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        g_unix_signal_add(
            signal,
            [](gpointer self) -> gboolean {
                static_cast<Browser*>(self)->interrupted();
                return G_SOURCE_CONTINUE;
            },
            this);
    }
    g_unix_signal_add(
        SIGUSR2,
        [](gpointer self) -> gboolean {
            for (const auto& window : static_cast<Browser*>(self)->windows) {
                window->reload();
            }
            return G_SOURCE_CONTINUE;
        },
        this);
    if (options.automation) {
        // A driver that dies leaves no browser behind.
        prctl(PR_SET_PDEATHSIG, SIGTERM);
    }
    if (!options.automation) {
        WebKitWebView* const view = open(nullptr, false);
        if (!options.screenshot.empty()) {
            screenshot = std::make_unique<Screenshot>(view, options.screenshot, options.after,
                                                      [this](const std::string& error) {
                                                          if (!error.empty()) {
                                                              fail(1, error);
                                                          } else {
                                                              closeAll();
                                                          }
                                                      });
        }
        windows.front()->show();
        webkit_web_view_load_uri(view, options.uri.c_str());
    }
    if (findings != nullptr) {
        auto* const look = +[](gpointer of) -> gboolean {
            static_cast<Findings*>(of)->look();
            return G_SOURCE_CONTINUE;
        };
        g_timeout_add(findingsIntervalMs, look, findings);
    }
    g_main_loop_run(loop);
    return findings != nullptr && findings->tellAll() ? std::max(exitCode, 3) : exitCode;
}

WebKitWebView* Browser::open(WebKitWebView* related, bool automated) {
    auto* const view = WEBKIT_WEB_VIEW(
        related != nullptr
            ? g_object_new(WEBKIT_TYPE_WEB_VIEW, "related-view", related, "settings", settings,
                           nullptr)
            : g_object_new(WEBKIT_TYPE_WEB_VIEW, "web-context", context, "settings", settings,
                           "is-controlled-by-automation", automated ? TRUE : FALSE, nullptr));
    windows.push_back(std::make_unique<Window>(*this, view, options.width, options.height));
    return view;
}

WebKitWebView* Browser::openRelated(WebKitWebView* related) {
    return open(related, false);
}

void Browser::startWebProcess() {
    protocol::DeviceSettings device{options.pluginLibrary(), options.audio};
    // The file of a process that died keeps what it has.
    device.audio.wavPath = ofProcess(++webProcesses, device.audio.wavPath);
    const fs::path folder = DeviceOptions::besideProgram("browser");
    webkit_web_context_set_web_extensions_directory(context, folder.c_str());
    webkit_web_context_set_web_extensions_initialization_user_data(context, protocol::pack(device));
}

void Browser::messageReceived(WebKitUserMessage* message) {
    if (g_str_equal(webkit_user_message_get_name(message), protocol::failed)) {
        fail(2, g_variant_get_string(webkit_user_message_get_parameters(message), nullptr));
    } else {
        exitCode = std::max(exitCode, 1);
    }
}

void Browser::automationStarted(WebKitAutomationSession* session) {
    WebKitApplicationInfo* const info = webkit_application_info_new();
    webkit_application_info_set_name(info, "sonolet-browser");
    webkit_application_info_set_version(info, 1, 0, 0);
    webkit_automation_session_set_application_info(session, info);
    webkit_application_info_unref(info);
    auto* const create = +[](WebKitAutomationSession*, Browser* self) -> WebKitWebView* {
        WebKitWebView* const view = self->open(nullptr, true);
        self->windows.back()->show();
        return view;
    };
    g_signal_connect(session, "create-web-view", G_CALLBACK(create), this);
    auto* const end = +[](WebKitAutomationSession*, Browser* self) { self->closeAll(); };
    g_signal_connect(session, "will-close", G_CALLBACK(end), this);
}

void Browser::loaded(Window& window) {
    if (screenshot && &window == windows.front().get()) {
        screenshot->pageLoaded();
    }
}

void Browser::pageFailed(Window&) {
    exitCode = std::max(exitCode, 1);
    if (screenshot) {
        closeAll();
    }
}

void Browser::windowClosed(Window& window) {
    const auto found = std::find_if(windows.begin(), windows.end(),
                                    [&](const auto& each) { return each.get() == &window; });
    if (found == windows.end()) {
        return;
    }
    if (found == windows.begin()) {
        screenshot.reset();
    }
    windows.erase(found);
    if (windows.empty()) {
        g_main_loop_quit(loop);
    }
}

void Browser::closeAll() {
    for (const auto& window : windows) {
        window->close();
    }
    if (windows.empty()) {
        g_main_loop_quit(loop);
    }
}

// The second signal does not wait for pages to unload.
void Browser::interrupted() {
    if (std::exchange(wasInterrupted, true)) {
        g_main_loop_quit(loop);
    } else {
        closeAll();
    }
}

void Browser::fail(int code, const std::string& message) {
    std::fprintf(stderr, "sonolet-browser: %s\n", message.c_str());
    exitCode = std::max(exitCode, code);
    closeAll();
}
