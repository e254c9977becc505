#ifndef SONOLET_TESTS_SERVICE_HEARD_H
#define SONOLET_TESTS_SERVICE_HEARD_H

#include "../fakes/Test.h"

#include "libspotify/api.h"

namespace sonolet::test {

using Lines = std::vector<std::string>;

// What callbacks are told, a line each. `onLine` runs inside every one of them.
struct Heard {
    Lines lines;
    std::function<void(const std::string&)> onLine = [](const std::string&) {};
    sp_playlist_callbacks ofList{};
    sp_playlistcontainer_callbacks ofContainer{};

    template <typename... Parts>
    static void note(void* self, const Parts&... parts) {
        std::ostringstream line;
        (line << ... << parts);
        static_cast<Heard*>(self)->lines.push_back(line.str());
        static_cast<Heard*>(self)->onLine(line.str());
    }
    static std::string joined(const int* numbers, int count) {
        return count == 0 ? "" : " " + std::to_string(*numbers) + joined(numbers + 1, count - 1);
    }
    static std::string names(sp_track* const* tracks, int count) {
        return count == 0 ? "" : " " + (sp_track_name(*tracks) + names(tracks + 1, count - 1));
    }
    Heard() {
        ofList.tracks_added = [](auto*, auto* tracks, int count, int position, void* self) {
            note(self, "added", names(tracks, std::min(count, 9)), " at ", position);
        };
        ofList.tracks_removed = [](auto*, auto* positions, int count, void* self) {
            note(self, "removed", joined(positions, count));
        };
        ofList.tracks_moved = [](auto*, auto* positions, int count, int to, void* self) {
            note(self, "moved", joined(positions, count), " to ", to);
        };
        ofList.playlist_renamed = [](auto* list, void* self) {
            note(self, "renamed ", sp_playlist_name(list));
        };
        ofList.playlist_state_changed = [](auto*, void* self) { note(self, "state"); };
        ofList.playlist_update_in_progress = [](auto*, bool done, void* self) {
            note(self, done ? "done" : "begin");
        };
        ofList.track_seen_changed = [](auto*, int position, bool seen, void* self) {
            note(self, "seen ", position, seen ? " yes" : " no");
        };
        ofList.description_changed = [](auto*, auto* text, void* self) {
            note(self, "described ", text);
        };
        ofList.image_changed = [](auto*, auto* id, void* self) {
            note(self, "image ", id == nullptr ? 0 : id[19] + 0);
        };
        ofList.track_message_changed = [](auto*, int position, auto* text, void* self) {
            note(self, "message ", position, ' ', text);
        };
        ofList.subscribers_changed = [](auto* list, void* self) {
            note(self, "subscribers ", sp_playlist_num_subscribers(list));
        };
        ofContainer.playlist_added = [](auto*, auto* list, int position, void* self) {
            note(self, "added ", sp_playlist_name(list), ' ', position);
        };
        ofContainer.playlist_removed = [](auto*, auto* list, int position, void* self) {
            note(self, "removed ", sp_playlist_name(list), ' ', position);
        };
        ofContainer.playlist_moved = [](auto*, auto* list, int from, int to, void* self) {
            note(self, "moved ", sp_playlist_name(list), ' ', from, ' ', to);
        };
        ofContainer.container_loaded = [](auto*, void* self) { note(self, "loaded"); };
    }
};

}  // namespace sonolet::test

#endif
