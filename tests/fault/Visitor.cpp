#include "Visitor.h"

#include "../fakes/FakeBackend.h"
#include "../fakes/Faults.h"
#include "../fakes/Inspection.h"
#include "jspp/_detail/object_manager.h"
#include "jspp/_detail/private_record.h"
#include "jspp/interface.h"

#include <cctype>
#include <sstream>
#include <typeinfo>
#include <variant>

using jspp::__detail::private_record;

// ---- The library ----

Samples::Samples() {
    FakeHandle* const all[] = {track,         album,    artist,      user,
                               image,         search,   albumbrowse, artistbrowse,
                               toplistbrowse, playlist, container,   link};
    for (FakeHandle* handle : all) {
        spotify.samples[typeid(*handle)] = handle;
    }
    spotify.sampleText = "a text of more than twenty characters";
    spotify.sampleNumber = 1;
    spotify.subscribers = {"a subscriber", "another"};
}

namespace {

// Calls every listener of the handle; a query's, once.
template <typename Kind>
void complete(Kind* query, bool once) {
    auto listeners = query->listeners;
    if (once) {
        query->listeners.clear();
    }
    for (const auto& [callback, data] : listeners) {
        const InPlugin inside;
        callback(query, data);
    }
}

// Makes the class's table if the plug-in could not, which is no point of the plug-in's.
jspp::name_table namesOf(const jspp::interface& native) {
    const bool counting = std::exchange(Faults::get().counting, false);
    const InPlugin inside;
    jspp::name_table names = jspp::__detail::inspection::names(native);
    Faults::get().counting = counting;
    return names;
}

}  // namespace

void Samples::raiseAll() {
    complete(search, true);
    complete(albumbrowse, true);
    complete(artistbrowse, true);
    complete(toplistbrowse, true);
    complete(image, false);
    const std::string text = "a text that does not fit into the string itself";
    const int positions[] = {0, 2};
    sp_track* const tracks[] = {track, track};
    const auto lists = playlist->listeners;
    for (const auto& [listener, data] : lists) {
        const sp_playlist_callbacks on = *listener;
        const InPlugin inside;
        on.tracks_added(playlist, tracks, 2, 0, data);
        on.tracks_removed(playlist, positions, 2, data);
        on.tracks_moved(playlist, positions, 2, 1, data);
        on.playlist_renamed(playlist, data);
        on.playlist_state_changed(playlist, data);
        on.playlist_update_in_progress(playlist, true, data);
        on.playlist_metadata_updated(playlist, data);
        on.track_created_changed(playlist, 0, user, 1, data);
        on.track_seen_changed(playlist, 0, true, data);
        on.description_changed(playlist, text.c_str(), data);
        on.image_changed(playlist, reinterpret_cast<const byte*>(text.data()), data);
        on.track_message_changed(playlist, 0, text.c_str(), data);
        on.subscribers_changed(playlist, data);
    }
    const auto containers = container->listeners;
    for (const auto& [listener, data] : containers) {
        const InPlugin inside;
        listener->playlist_added(container, playlist, 0, data);
        listener->playlist_removed(container, playlist, 0, data);
        listener->playlist_moved(container, playlist, 0, 1, data);
        listener->container_loaded(container, data);
    }
    if (spotify.sessionsCreated == spotify.sessionsReleased) {
        return;
    }
    const sp_session_callbacks& on = spotify.callbacks();
    sp_session* const from = spotify.session();
    const InPlugin inside;
    on.logged_in(from, SP_ERROR_OK);
    on.logged_out(from);
    on.metadata_updated(from);
    on.connection_error(from, SP_ERROR_OK);
    on.message_to_user(from, text.c_str());
    on.notify_main_thread(from);
    on.play_token_lost(from);
    on.log_message(from, text.c_str());
    on.end_of_track(from);
    on.streaming_error(from, SP_ERROR_OK);
    on.userinfo_updated(from);
    on.offline_status_updated(from);
    on.offline_error(from, SP_ERROR_OK);
    on.credentials_blob_updated(from, text.c_str());
    on.show_signup_page(from, SP_SIGNUP_PAGE_NONE, false, 0, text.c_str());
    on.show_signup_error_page(from, SP_SIGNUP_PAGE_NONE, SP_ERROR_OK);
    on.connect_to_facebook(from, text.c_str());
    on.show_trial_welcome(from);
}

// ---- The page ----

Visitor::Visitor(FakeHost& itsHost, Samples& itsSamples, jsplugin_obj* itsPage)
    : host(itsHost), samples(itsSamples), page(itsPage),
      listener(host.function(page, [this](const FakeHost::Values& values) {
          for (const Value& value : values) {
              if (value.type == JSP_TYPE_NATIVE_OBJECT) {
                  arrived.push_back(value.object);
              }
          }
      })) {}

Answer Visitor::checked(const std::string& name, bool isSetter, const Answer& answer) {
    const int exception = isSetter ? int{JSP_PUT_EXCEPTION} : int{JSP_CALL_EXCEPTION};
    const Value& value = answer.value;
    bool defined = value.type >= JSP_TYPE_UNDEFINED && value.type <= JSP_TYPE_EXPRESSION;
    if (answer.code == exception || answer.code == JSP_GET_EXCEPTION || answer.code == -1) {
        defined = value.type == JSP_TYPE_STRING && !value.string.empty();
        failures.push_back(name + ": " + value.string);
    } else if (value.type == JSP_TYPE_NATIVE_OBJECT || value.type == JSP_TYPE_OBJECT) {
        defined = host.alive(value.object);
    }
    if (!defined || answer.code < -1 || answer.code > JSP_GET_EXCEPTION) {
        std::ostringstream text;
        text << name << ": " << answer;
        undefined.push_back(text.str());
    }
    return answer;
}

jsplugin_obj* Visitor::find(const std::string& path) {
    std::istringstream steps(path);
    std::string name;
    std::getline(steps, name, '.');
    jsplugin_obj* object = checked(name, false, host.global(page, name.c_str())).value.object;
    while (object != nullptr && std::getline(steps, name, '.')) {
        object = checked(name, false, host.get(object, name)).value.object;
    }
    return object;
}

Answer
Visitor::call(jsplugin_obj* object, const std::string& name, const FakeHost::Values& values) {
    return object == nullptr ? Answer{JSP_CALL_NO_VALUE, {}}
                             : checked(name, false, host.call(object, name, values));
}

void Visitor::connect() {
    config = find("Spotify.SessionConfig");
    session = find("Spotify.Session");
    if (config != nullptr) {
        call(session, "create", {config});
    }
}

void Visitor::visitAll() {
    connect();
    track = call(find("Spotify.Track"), "create", {"spotify:track"}).value.object;
    album = call(find("Spotify.Album"), "create", {"spotify:album"}).value.object;
    artist = call(find("Spotify.Artist"), "create", {"spotify:artist"}).value.object;
    playlist = call(find("Spotify.Playlist"), "create", {"spotify:playlist"}).value.object;
    if (jsplugin_obj* const root = find("Spotify")) {
        visit(root);
    }
}

void Visitor::visitArrived() {
    const std::vector<jsplugin_obj*> came = std::exchange(arrived, {});
    for (jsplugin_obj* object : came) {
        visit(object);
    }
    for (jsplugin_obj* object : came) {
        if (object != playlist && host.alive(object)) {
            host.collect(object);
        }
    }
}

void Visitor::visit(jsplugin_obj* object, bool isConstructor) {
    if (!jspp::__detail::objects().is_object(object)) {
        return;  // a function
    }
    const jspp::interface& native = *private_record::of(object).self;
    const std::pair<std::string, bool> kind{typeid(native).name(), isConstructor};
    if (!seen.insert(kind).second) {
        return;
    }
    checked("0", false, host.get(object, "0"));  // for which the class makes its table
    // The names are always the same, and looking at them takes a while.
    static std::map<std::pair<std::string, bool>, std::vector<Name>> tables;
    std::vector<Name>& names = tables[kind];
    if (names.empty()) {
        const jspp::name_table table = namesOf(native);
        for (const auto& [name, readable] : jspp::__detail::inspection::readables(table)) {
            const auto* const function = std::get_if<jspp::name_table::function>(&readable);
            names.push_back({name, function == nullptr ? "" : function->signature,
                             function != nullptr, table.find_setter(name) != nullptr});
        }
    }
    std::string ofClass = "spotify:";
    for (const char c : kind.first) {
        ofClass += std::isalpha(c) != 0 ? std::string(1, static_cast<char>(std::tolower(c))) : "";
    }
    const std::string before = std::exchange(link, ofClass);
    for (const Name& name : names) {
        visitName(object, name);
    }
    link = before;
}

void Visitor::visitName(jsplugin_obj* object, const Name& entry) {
    const std::string& name = entry.name;
    if (name == "logout" || name == "addEventListener" || name == "removeEventListener") {
        return;  // in their own time
    }
    if (entry.isFunction) {
        const Answer answer = call(object, name, argumentsOf(entry));
        if (answer.value.object != nullptr) {
            visit(answer.value.object);
        }
        return;
    }
    const Value value = checked(name, false, host.get(object, name)).value;
    if (value.object != nullptr) {
        visit(value.object, true);
    }
    if (name.compare(0, 2, "on") == 0) {
        // Whatever the event of the attribute is called.
        for (const std::string& event :
             {name.substr(2), name.substr(2) + "Event", std::string("MetadataUpdated")}) {
            call(object, "addEventListener", {event, listener});
        }
        call(object, "removeEventListener", {"MetadataUpdated", listener});
    }
    if (entry.canSet) {
        const bool isHandler = value.type == JSP_TYPE_NULL || value.type == JSP_TYPE_UNDEFINED;
        checked(name, true, host.set(object, name, isHandler ? Value(listener) : value));
        checked(name, false, host.get(object, name));
    }
}

FakeHost::Values Visitor::argumentsOf(const Name& entry) const {
    const std::string& name = entry.name;
    const auto object = [](jsplugin_obj* value) { return value ? Value(value) : Value::null(); };
    if (name == "create" && link == "spotify:session") {
        return {object(config)};
    }
    if (name == "create" && link == "spotify:albumbrowse") {
        return {object(album), listener};
    }
    if (name == "create" && link == "spotify:artistbrowse") {
        return {object(artist), 0, listener};
    }
    if (name == "create" && link == "spotify:search") {
        return {link, 0, 1, 0, 1, 0, 1, 0, 1, 0, listener};
    }
    if (name == "addPlaylist") {
        return {object(playlist)};
    }
    if (name == "addTracks") {
        return {object(track), 0};
    }
    FakeHost::Values values;
    for (const char kind : entry.signature) {
        values.push_back(kind == 'n'   ? Value(0)
                         : kind == 'b' ? Value(true)
                         : kind == 's' ? Value(link)
                         : kind == 'o' ? object(track)
                                       : Value(listener));
    }
    values.push_back(0);  // some signatures tell less than the function wants
    return values;
}

void Visitor::play() {
    const std::vector<unsigned char> frames(4096, 'f');
    call(session, "playerLoad", {track == nullptr ? Value() : Value(track)});
    if (FakeFactory::get().held() == 0 ||
        samples.spotify.sessionsCreated == samples.spotify.sessionsReleased) {
        return;
    }
    FakeBackend& backend = FakeFactory::get().current();
    backend.request(0, 1024);
    backend.request(1024, 1 << 20);
    samples.spotify.deliver(frames.data(), 1024);
    for (unsigned type = 2; type < 26; ++type) {
        backend.send(type);
    }
    host.advance(250);
    samples.spotify.deliver(frames.data(), 1024);
    {
        const InPlugin inside;
        samples.spotify.callbacks().end_of_track(samples.spotify.session());
    }
    host.advance(250);
    backend.request(2048, 16);
    backend.send(0);
}

void Visitor::logout() {
    call(session, "logout");
    call(track, "name");
    if (playlist != nullptr) {
        checked("name", false, host.get(playlist, "name"));
    }
}
