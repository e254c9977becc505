#include "accounts/PlaylistFiles.h"

#include "music/PlaylistFile.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <set>
#include <system_error>
#include <utility>

namespace sonolet::service {

namespace {

constexpr char listener[] = "listener";

// So many entries are changed between two looks at the flag.
constexpr std::size_t entriesAtOnce = 1000;

// Nobody waits any more: what was begun is undone.
struct Interrupted {};

// Calls `action` with one part of the numbers or entries after the other.
template <typename Elements, typename Action>
void inParts(const Elements& all, const StopFlag& stop, Action action) {
    for (std::size_t done = 0; done < all.size(); done += entriesAtOnce) {
        if (stop) {
            throw Interrupted();
        }
        const auto begin = all.begin() + static_cast<std::ptrdiff_t>(done);
        const std::size_t count = std::min(entriesAtOnce, all.size() - done);
        action(Elements(begin, begin + static_cast<std::ptrdiff_t>(count)));
    }
}

std::vector<std::string> namesOf(const std::string& folder) {
    std::vector<std::string> names = {folder};
    std::error_code error;
    if (const std::filesystem::path real = std::filesystem::canonical(folder, error);
        !error && real != folder) {
        names.push_back(real);
    }
    return names;
}

}  // namespace

PlaylistFiles::PlaylistFiles(std::string musicFolder,
                             const std::string& catalogueFile,
                             const std::string& accountsFile,
                             Log logLine,
                             const StopFlag& stopFlag)
    : music(std::move(musicFolder)), roots(namesOf(music)), log(std::move(logLine)), stop(stopFlag),
      catalogue(catalogueFile, Database::Durability::process), accounts(accountsFile),
      store(accounts.connection()),
      findTrack(catalogue,
                "SELECT t.link FROM tracks t JOIN folders f ON f.id = t.folder_id"
                " WHERE f.path = ?1 AND t.name = ?2"),
      container(store.ofUser(listener, ListKind::container)) {}

void PlaylistFiles::update(const std::vector<std::string>& files) {
    if (!container) {
        // Whoever removed this account wants none of it.
        return;
    }
    std::set<std::string> found;
    for (const std::string& file : files) {
        if (stop) {
            return;
        }
        found.insert(music + '/' + file);
        if (const std::optional<Wanted> wanted = read(file)) {
            try {
                take(music + '/' + file, *wanted);
            } catch (const Interrupted&) {
                return;
            }
        }
    }
    for (const ListStore::Source& source : store.sources()) {
        std::error_code error;
        if (found.count(source.file) == 0 && source.digest &&
            !std::filesystem::exists(source.file, error) && !error) {
            lose(source);
        }
    }
}

std::optional<PlaylistFiles::Wanted> PlaylistFiles::read(const std::string& file) {
    const std::string path = music + '/' + file;
    PlaylistFile list;
    try {
        list = PlaylistFile::read(path);
    } catch (const MalformedPlaylist& error) {
        log("Skipped " + path + ": " + error.what());
        return std::nullopt;
    }
    Wanted wanted;
    wanted.name = list.name.empty() ? std::filesystem::path(file).stem().string() : list.name;
    std::string all = wanted.name;
    std::size_t missing = 0;
    std::string firstMissing;
    for (const std::string& entry : list.entries) {
        if (stop) {
            return std::nullopt;
        }
        const std::string inside = PlaylistFile::resolve(entry, file, roots);
        const std::optional<Id> id = inside.empty() ? std::nullopt : track(inside);
        if (id) {
            wanted.tracks.push_back(*id);
            all += id->view();
        } else if (missing++ == 0) {
            firstMissing = entry;
        }
    }
    if (missing > 0) {
        log(path + ": " + std::to_string(missing) + " of " + std::to_string(list.entries.size()) +
            " entries lead to no track in " + music + ", the first is " + firstMissing);
    }
    wanted.digest = sha1(all);
    return wanted;
}

std::optional<Id> PlaylistFiles::track(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    const bool top = slash == std::string::npos;
    Cursor row = findTrack.run(top ? std::string() : path.substr(0, slash),
                               top ? path : path.substr(slash + 1));
    return row.next() ? row.id(0) : std::nullopt;
}

void PlaylistFiles::take(const std::string& source, const Wanted& wanted) {
    store.together([&] {
        const std::optional<ListStore::Source> before = store.source(source);
        if (before && before->digest == wanted.digest) {
            return;
        }
        std::optional<ListRow> list = before ? store.find(before->link) : std::nullopt;
        const bool appears = !list || !before->digest;
        if (!list) {
            list = store.create(container->ownerId, wanted.name);
        } else if (list->name != wanted.name) {
            store.rename(*list, wanted.name);
        }
        setTracks(*list, wanted.tracks);
        store.setSource(*list, source, wanted.digest);
        if (appears && !store.contains(*container, list->link)) {
            store.insert(*container, 0, {{EntryKind::item, list->link, std::nullopt}}, listener);
        }
    });
}

// What both begin and end with stays.
void PlaylistFiles::setTracks(const ListRow& list, const std::vector<Id>& tracks) {
    const std::vector<ListEntry> entries = store.entries(list);
    const auto same = [](const ListEntry& entry, const Id& track) { return entry.item == track; };
    const auto start =
        std::mismatch(entries.begin(), entries.end(), tracks.begin(), tracks.end(), same);
    const auto end = std::mismatch(entries.rbegin(), std::make_reverse_iterator(start.first),
                                   tracks.rbegin(), std::make_reverse_iterator(start.second), same);
    std::vector<std::int64_t> gone;
    for (auto entry = start.first; entry != end.first.base(); ++entry) {
        gone.push_back(entry->id);
    }
    std::vector<NewEntry> come;
    for (auto track = start.second; track != end.second.base(); ++track) {
        come.push_back({EntryKind::item, *track, std::nullopt});
    }
    const std::int64_t before = end.first.base() == entries.end() ? 0 : end.first.base()->id;
    inParts(gone, stop, [&](const auto& part) { store.remove(list, part); });
    inParts(come, stop, [&](const auto& part) { store.insert(list, before, part, listener); });
}

void PlaylistFiles::lose(const ListStore::Source& source) {
    store.together([&] {
        const std::optional<ListRow> list = store.find(source.link);
        if (list) {
            store.setSource(*list, source.file, std::nullopt);
            store.removeItems(*container, {list->link});
        }
    });
}

}  // namespace sonolet::service
