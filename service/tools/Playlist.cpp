// sonolet-playlist: the playlists and folders of a user of the local music service.

#include "accounts/Accounts.h"
#include "accounts/ListStore.h"
#include "accounts/Password.h"
#include "catalogue/Catalogue.h"
#include "store/LinkTarget.h"
#include "store/StatePaths.h"
#include "tools/About.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace sonolet::service;

constexpr int failure = 1;
constexpr int misuse = 2;

constexpr char usage[] =
    "usage: sonolet-playlist [--user NAME] COMMAND ...\n"
    "       sonolet-playlist --version\n"
    "\n"
    "  list                      print the user's playlists and folders\n"
    "  show LIST                 print a playlist's tracks\n"
    "  new NAME                  make a playlist; --private: others do not see it in the user's\n"
    "                            published lists; --collaborative: others may change it;\n"
    "                            --folder: make a folder; --in FOLDER: in this folder\n"
    "  rename LIST NAME\n"
    "  describe LIST TEXT\n"
    "  image LIST IMAGE          the picture: an image link, or \"none\"\n"
    "  add LIST TRACK...         --at POSITION: not at the end; --message TEXT: with a message\n"
    "  message LIST POSITION TEXT\n"
    "                            change a track's message; an empty text takes it away\n"
    "  remove LIST [TRACK...]    remove tracks; without one, the playlist from the user's lists\n"
    "  remove FOLDER/            remove a folder; what is in it stays\n"
    "  move LIST FROM TO         move a track of a playlist to another position\n"
    "  move LIST TO              move a playlist to another position among the user's\n"
    "  follow LINK               put a playlist of someone else among the user's\n"
    "  send USER TRACK...        put tracks into someone's inbox; --message TEXT\n"
    "  export LIST [FILE]        write a playlist as M3U8\n"
    "\n"
    "LIST is an exact name, a link, \"starred\" or \"inbox\"; TRACK is an exact title, a link, or "
    "in\n"
    "remove a position. Positions count from 0. The user is listener unless --user says other.\n"
    "SONOLET_STATE names the folder that the lists are kept in, SONOLET_MUSIC the music.\n";

// Wrong on the command line.
class Misuse final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

std::string quoted(const std::string& text) {
    return '"' + text + '"';
}

std::optional<std::size_t> number(const std::string& text) {
    std::size_t value = 0;
    const char* end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && stopped == end ? std::optional<std::size_t>(value)
                                                  : std::nullopt;
}

// On one line, whatever a tag says.
std::string inLine(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char byte) { return byte == '\n' || byte == '\r'; }, ' ');
    return text;
}

std::string linkOf(const ListRow& list) {
    return list.kind == ListKind::starred ? LinkTarget::starred(list.owner).asString()
                                          : LinkTarget::playlist(list.owner, list.link).asString();
}

class Program final {
public:
    explicit Program(const StatePaths& paths)
        : accounts(paths.accountsFile()), store(accounts.connection()),
          catalogueFile(paths.catalogueFile(musicFolder())), catalogue(catalogueFile),
          titles(catalogueFile, Database::Durability::process),
          findTitle(titles, "SELECT link FROM tracks WHERE title = ?1 AND present") {}

    void run(const std::vector<std::string>& arguments);

private:
    using Arguments = std::vector<std::string>;

    struct Command {
        std::size_t least;
        std::size_t most;
        void (Program::*action)(const Arguments&);
    };

    static const std::map<std::string, Command> commands;

    Arguments takeOptions(const Arguments& arguments);
    static const std::string& newName(const std::string& name);
    ListRow list(const std::string& name);
    ListRow changeable(const std::string& name);
    std::vector<std::int64_t> endsOf(const std::string& name);
    Id track(const std::string& name);
    std::size_t position(const std::string& text, std::size_t most) const;
    std::size_t placeOf(const std::string& text,
                        const ListRow& in,
                        const std::vector<ListEntry>& entries) const;
    std::vector<NewEntry> tracks(const Arguments& names);
    void addTracks(const ListRow& to, std::int64_t before, const Arguments& names);

    void printLists(const Arguments& given);
    void show(const Arguments& given);
    void make(const Arguments& given);
    void rename(const Arguments& given);
    void describe(const Arguments& given);
    void setImage(const Arguments& given);
    void add(const Arguments& given);
    void setMessage(const Arguments& given);
    void remove(const Arguments& given);
    void move(const Arguments& given);
    void follow(const Arguments& given);
    void send(const Arguments& given);
    void exportList(const Arguments& given);

    Accounts accounts;
    ListStore store;
    const std::string catalogueFile;
    Catalogue catalogue;
    Database titles;
    Statement findTitle;

    Account user;
    ListRow container;
    std::map<std::string, std::string> options;
};

const std::map<std::string, Program::Command> Program::commands = {
    {"list", {0, 0, &Program::printLists}},
    {"show", {1, 1, &Program::show}},
    {"new", {1, 1, &Program::make}},
    {"rename", {2, 2, &Program::rename}},
    {"describe", {2, 2, &Program::describe}},
    {"image", {2, 2, &Program::setImage}},
    {"add", {2, SIZE_MAX, &Program::add}},
    {"message", {3, 3, &Program::setMessage}},
    {"remove", {1, SIZE_MAX, &Program::remove}},
    {"move", {2, 3, &Program::move}},
    {"follow", {1, 1, &Program::follow}},
    {"send", {2, SIZE_MAX, &Program::send}},
    {"export", {1, 2, &Program::exportList}},
};

// Options and the commands that know them; without "=" they take no value.
Program::Arguments Program::takeOptions(const Arguments& arguments) {
    static const std::map<std::string, std::string> known = {{"--user", ""},
                                                             {"--at", "add"},
                                                             {"--message", "add send"},
                                                             {"--private", "new"},
                                                             {"--collaborative", "new"},
                                                             {"--folder", "new"},
                                                             {"--in", "new"}};
    Arguments rest;
    bool ended = false;
    for (std::size_t index = 0; index < arguments.size(); ++index) {
        const std::string& argument = arguments[index];
        if (ended || argument.substr(0, 2) != "--") {
            rest.push_back(argument);
        } else if (argument == "--") {
            ended = true;
        } else if (known.count(argument) == 0) {
            throw Misuse("unknown option " + argument);
        } else if (argument == "--private" || argument == "--collaborative" ||
                   argument == "--folder") {
            options[argument] = "";
        } else if (++index < arguments.size()) {
            options[argument] = arguments[index];
        } else {
            throw Misuse(argument + " takes a value");
        }
    }
    for (const auto& [option, value] : options) {
        const std::string& where = known.at(option);
        if (!where.empty() && (rest.empty() || where.find(rest.front()) == std::string::npos)) {
            throw Misuse(std::string(option).append(" goes with ").append(where));
        }
    }
    return rest;
}

void Program::run(const std::vector<std::string>& arguments) {
    Arguments given = takeOptions(arguments);
    const auto command = given.empty() ? commands.end() : commands.find(given.front());
    if (command == commands.end()) {
        throw Misuse(given.empty() ? "a command is needed" : "no command " + given.front());
    }
    given.erase(given.begin());
    if (given.size() < command->second.least || given.size() > command->second.most) {
        throw Misuse("wrong number of arguments for " + command->first);
    }
    const std::string name = options.count("--user") > 0 ? options["--user"] : "listener";
    const std::optional<Account> account = accounts.find(name);
    const auto row = account ? store.ofAccount(account->id, ListKind::container) : std::nullopt;
    if (!row) {
        throw std::runtime_error("there is no user " + name);
    }
    user = *account;
    container = *row;
    (this->*command->second.action)(given);
}

// ---- What the arguments mean ----

const std::string& Program::newName(const std::string& name) {
    const auto breaks = [](char character) {
        return static_cast<unsigned char>(character) < ' ' || character == 0x7f;
    };
    if (name.empty() || std::any_of(name.begin(), name.end(), breaks)) {
        throw std::runtime_error(quoted(name) + " cannot be a name");
    }
    return name;
}

ListRow Program::list(const std::string& name) {
    if (name == "starred" || name == "inbox") {
        const ListKind kind = name == "starred" ? ListKind::starred : ListKind::inbox;
        return store.ofAccount(user.id, kind).value();
    }
    if (const std::optional<LinkTarget> link = LinkTarget::parse(name)) {
        const auto found = link->type == SP_LINKTYPE_STARRED
                               ? store.ofUser(link->user, ListKind::starred)
                               : store.find(link->id);
        const bool visible = found && found->kind != ListKind::container &&
                             (found->kind != ListKind::inbox || found->ownerId == user.id);
        if (!visible || found->owner != link->user) {
            throw std::runtime_error("there is no playlist " + name);
        }
        return *found;
    }
    std::vector<ListRow> found;
    for (const ListEntry& entry : store.entries(container)) {
        if (entry.kind == EntryKind::item) {
            const std::optional<ListRow> candidate = store.find(entry.item);
            if (candidate && candidate->name == name) {
                found.push_back(*candidate);
            }
        }
    }
    if (found.empty()) {
        throw std::runtime_error(user.name + " has no playlist " + quoted(name));
    }
    if (found.size() > 1) {
        std::string text = "several playlists are called " + quoted(name) + ":";
        for (const ListRow& candidate : found) {
            text += "\n  " + linkOf(candidate);
        }
        throw std::runtime_error(text);
    }
    return found.front();
}

ListRow Program::changeable(const std::string& name) {
    ListRow found = list(name);
    if (!found.mayBeChangedBy(user.id)) {
        throw std::runtime_error(quoted(found.name) + " is " + found.owner +
                                 "'s and is not collaborative");
    }
    return found;
}

// Both ends of the user's first folder of that name, or nothing.
std::vector<std::int64_t> Program::endsOf(const std::string& name) {
    const std::vector<ListEntry> entries = store.entries(container);
    const auto start = std::find_if(entries.begin(), entries.end(), [&](const ListEntry& entry) {
        return entry.kind == EntryKind::folderStart && entry.text == name;
    });
    const auto end = std::find_if(start, entries.end(), [&](const ListEntry& entry) {
        return entry.kind == EntryKind::folderEnd && entry.item == start->item;
    });
    return end == entries.end() ? std::vector<std::int64_t>()
                                : std::vector<std::int64_t>{start->id, end->id};
}

Id Program::track(const std::string& name) {
    if (name.substr(0, name.find(':')) == "spotify") {
        const std::optional<LinkTarget> link = LinkTarget::parse(name);
        if (!link || link->type != SP_LINKTYPE_TRACK) {
            throw std::runtime_error(quoted(name) + " is no link to a track");
        }
        return link->id;
    }
    std::vector<Id> found;
    for (Cursor row = findTitle.run(name); row.next();) {
        found.push_back(row.id(0).value_or(Id()));
    }
    if (found.empty()) {
        throw std::runtime_error("no track is called " + quoted(name) + " in " + musicFolder());
    }
    if (found.size() > 1) {
        std::string text = "several tracks are called " + quoted(name) + ":";
        for (const Id& id : found) {
            text += "\n  " + LinkTarget::track(id, 0).asString();
        }
        throw std::runtime_error(text);
    }
    return found.front();
}

std::vector<NewEntry> Program::tracks(const Arguments& names) {
    std::vector<NewEntry> entries;
    for (const std::string& name : names) {
        NewEntry entry;
        entry.item = track(name);
        if (options.count("--message") > 0) {
            entry.text = options["--message"];
        }
        entries.push_back(std::move(entry));
    }
    return entries;
}

std::size_t Program::position(const std::string& text, std::size_t most) const {
    const std::optional<std::size_t> value = number(text);
    if (!value || *value > most) {
        throw std::runtime_error(quoted(text) + " is no position from 0 to " +
                                 std::to_string(most));
    }
    return *value;
}

// The place of an entry.
std::size_t Program::placeOf(const std::string& text,
                             const ListRow& in,
                             const std::vector<ListEntry>& entries) const {
    if (entries.empty()) {
        throw std::runtime_error(quoted(in.name) + " is empty");
    }
    return position(text, entries.size() - 1);
}

// ---- Commands ----

void Program::printLists(const Arguments&) {
    std::size_t depth = 0;
    for (const ListEntry& entry : store.entries(container)) {
        if (entry.kind == EntryKind::folderEnd) {
            depth -= depth > 0 ? 1 : 0;
            continue;
        }
        std::cout << std::string(2 * depth, ' ');
        if (entry.kind == EntryKind::folderStart) {
            std::cout << entry.text.value_or("") << "/\n";
            ++depth;
            continue;
        }
        const std::optional<ListRow> found = store.find(entry.item);
        if (found) {
            std::cout << found->name << '\t' << linkOf(*found) << '\t'
                      << store.entries(*found).size() << '\n';
        } else {
            std::cout << "(gone)\n";
        }
    }
}

void Program::show(const Arguments& given) {
    const ListRow shown = list(given[0]);
    const std::vector<std::string> followers = store.subscribers(shown);
    std::cout << shown.name << '\t' << linkOf(shown) << "\tof " << shown.owner
              << (shown.collaborative ? "\tcollaborative" : "")
              << (shown.published ? "" : "\tprivate") << '\n';
    if (!shown.description.empty()) {
        std::cout << shown.description << '\n';
    }
    if (!followers.empty()) {
        std::cout << "followed by";
        for (const std::string& name : followers) {
            std::cout << ' ' << name;
        }
        std::cout << '\n';
    }
    std::size_t place = 0;
    for (const ListEntry& entry : store.entries(shown)) {
        const auto row = catalogue.track(entry.item);
        const auto artist =
            row && !row->artists.empty() ? catalogue.artist(row->artists.front()) : std::nullopt;
        std::cout << place++ << '\t' << LinkTarget::track(entry.item, 0).asString() << '\t'
                  << (artist ? artist->name : "") << '\t' << (row ? row->title : "") << '\t'
                  << entry.creator << (entry.seen ? "" : "\tnew")
                  << (entry.text ? '\t' + *entry.text : "") << '\n';
    }
}

void Program::make(const Arguments& given) {
    const std::string& name = newName(given[0]);
    const bool folder = options.count("--folder") > 0;
    std::string link;
    store.together([&] {
        std::int64_t before = 0;
        if (options.count("--in") > 0) {
            const std::vector<std::int64_t> ends = endsOf(options["--in"]);
            if (ends.empty()) {
                throw std::runtime_error(user.name + " has no folder " + quoted(options["--in"]));
            }
            before = ends.back();
        }
        if (folder) {
            const Id id = Id::digest({randomText(Id().bytes.size())});
            store.insert(
                container, before,
                {{EntryKind::folderStart, id, name}, {EntryKind::folderEnd, id, std::nullopt}},
                user.name);
            return;
        }
        const ListRow made = store.create(user.id, name);
        if (options.count("--private") + options.count("--collaborative") > 0) {
            store.share(made, options.count("--private") == 0,
                        options.count("--collaborative") > 0);
        }
        store.insert(container, before, {{EntryKind::item, made.link, std::nullopt}}, user.name);
        link = linkOf(made);
    });
    if (!link.empty()) {
        std::cout << link << '\n';
    }
}

void Program::rename(const Arguments& given) {
    store.rename(changeable(given[0]), newName(given[1]));
}

void Program::describe(const Arguments& given) {
    store.describe(changeable(given[0]), given[1]);
}

void Program::setImage(const Arguments& given) {
    const std::optional<LinkTarget> link = LinkTarget::parse(given[1]);
    if (given[1] != "none" && (!link || link->type != SP_LINKTYPE_IMAGE)) {
        throw std::runtime_error(quoted(given[1]) + " is no link to an image");
    }
    std::string bytes;
    if (link) {
        const std::string digits = link->text.substr(link->text.rfind(':') + 1);
        for (std::size_t place = 0; place < digits.size(); place += 2) {
            bytes += static_cast<char>(std::stoi(digits.substr(place, 2), nullptr, 16));
        }
    }
    store.setImage(changeable(given[0]), bytes);
}

void Program::addTracks(const ListRow& to, std::int64_t before, const Arguments& names) {
    store.insert(to, before, tracks(names), user.name);
}

void Program::add(const Arguments& given) {
    const ListRow to = changeable(given[0]);
    std::int64_t before = 0;
    if (options.count("--at") > 0) {
        const std::vector<ListEntry> entries = store.entries(to);
        const std::size_t place = position(options["--at"], entries.size());
        before = place == entries.size() ? 0 : entries[place].id;
    }
    addTracks(to, before, Arguments(given.begin() + 1, given.end()));
}

void Program::setMessage(const Arguments& given) {
    const ListRow in = changeable(given[0]);
    const std::vector<ListEntry> entries = store.entries(in);
    store.setMessage(in, entries[placeOf(given[1], in, entries)].id, given[2]);
}

void Program::remove(const Arguments& given) {
    if (given.size() == 1) {
        if (!given[0].empty() && given[0].back() == '/') {
            const auto ends = endsOf(given[0].substr(0, given[0].size() - 1));
            if (!ends.empty()) {
                store.remove(container, ends);
                return;
            }
        }
        const ListRow from = list(given[0]);
        if (!store.contains(container, from.link)) {
            throw std::runtime_error(quoted(from.name) + " is not among the lists of " + user.name);
        }
        store.removeItems(container, {from.link});
        return;
    }
    const ListRow from = changeable(given[0]);
    const std::vector<ListEntry> entries = store.entries(from);
    std::vector<std::int64_t> gone;
    for (std::size_t index = 1; index < given.size(); ++index) {
        if (number(given[index]) && !entries.empty()) {
            gone.push_back(entries[position(given[index], entries.size() - 1)].id);
            continue;
        }
        const Id wanted = track(given[index]);
        const std::size_t before = gone.size();
        for (const ListEntry& entry : entries) {
            if (entry.item == wanted) {
                gone.push_back(entry.id);
            }
        }
        if (gone.size() == before) {
            throw std::runtime_error(quoted(given[index]) + " is not in " + quoted(from.name));
        }
    }
    store.remove(from, gone);
}

// Positions are those after the move.
void Program::move(const Arguments& given) {
    const bool ofTrack = given.size() == 3;
    const ListRow in = ofTrack ? changeable(given[0]) : container;
    std::vector<ListEntry> entries = store.entries(in);
    std::size_t from = 0;
    if (ofTrack) {
        from = placeOf(given[1], in, entries);
    } else {
        const Id wanted = list(given[0]).link;
        const auto found =
            std::find_if(entries.begin(), entries.end(),
                         [&](const ListEntry& entry) { return entry.item == wanted; });
        if (found == entries.end()) {
            throw std::runtime_error(given[0] + " is not among the lists of " + user.name);
        }
        from = static_cast<std::size_t>(found - entries.begin());
    }
    const std::size_t to = position(given.back(), entries.size() - 1);
    if (from == to) {
        return;
    }
    const std::int64_t moved = entries[from].id;
    entries.erase(entries.begin() + static_cast<std::ptrdiff_t>(from));
    store.move(in, {moved}, to == entries.size() ? 0 : entries[to].id);
}

void Program::follow(const Arguments& given) {
    const ListRow followed = list(given[0]);
    if (store.contains(container, followed.link)) {
        throw std::runtime_error(quoted(followed.name) + " is among the lists of " + user.name +
                                 " already");
    }
    store.insert(container, 0, {{EntryKind::item, followed.link, std::nullopt}}, user.name);
}

void Program::send(const Arguments& given) {
    const std::optional<Account> receiver = accounts.find(given[0]);
    if (!receiver) {
        throw std::runtime_error("there is no user " + given[0]);
    }
    addTracks(store.ofAccount(receiver->id, ListKind::inbox).value(), 0,
              Arguments(given.begin() + 1, given.end()));
}

void Program::exportList(const Arguments& given) {
    const ListRow exported = list(given[0]);
    std::string text = "#EXTM3U\n#PLAYLIST:" + exported.name + '\n';
    std::size_t left = 0;
    for (const ListEntry& entry : store.entries(exported)) {
        const auto row = catalogue.track(entry.item);
        if (!row || !row->available || row->path.find('\n') != std::string::npos) {
            ++left;
            continue;
        }
        const auto artist =
            row->artists.empty() ? std::nullopt : catalogue.artist(row->artists.front());
        text += "#EXTINF:" + std::to_string((row->durationMs + 500) / 1000) + ',' +
                inLine((artist ? artist->name + " - " : "") + row->title) + '\n' + musicFolder() +
                '/' + row->path + '\n';
    }
    if (left > 0) {
        std::cerr << "sonolet-playlist: left out " << left << " tracks whose files are not there\n";
    }
    if (given.size() == 1) {
        std::cout << text;
        return;
    }
    // A file that is there is replaced as a whole or not at all.
    const std::string fresh = given[1] + ".new";
    std::ofstream stream(fresh, std::ios::binary);
    if (!(stream << text) || (stream.close(), stream.fail()) ||
        std::rename(fresh.c_str(), given[1].c_str()) != 0) {
        static_cast<void>(std::remove(fresh.c_str()));
        throw std::runtime_error("cannot write " + given[1]);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (tellsAbout("sonolet-playlist", usage, argc, argv)) {
        return 0;
    }
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    try {
        Program(StatePaths::prepare(defaultSettingsLocation, defaultCacheLocation)).run(arguments);
        return 0;
    } catch (const Misuse& error) {
        std::cerr << "sonolet-playlist: " << error.what() << "\n\n" << usage;
        return misuse;
    } catch (const std::exception& error) {
        std::cerr << "sonolet-playlist: " << error.what() << '\n';
        return failure;
    }
}
