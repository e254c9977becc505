// sonolet-playlist: the playlists and folders of a user of the local music service.

#include "accounts/Password.h"
#include "store/LinkTarget.h"
#include "tools/About.h"
#include "tools/ListTexts.h"
#include "tools/Lists.h"
#include "tools/Visit.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
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
    "SONOLET_STATE names the folder that the lists are kept in, SONOLET_MUSIC the music, or\n"
    "SONOLET_SERVER a music server, which is told at once: --user NAME asks for the password;\n"
    "else the user is who is remembered there, or listener with the password listener.\n";

// Wrong on the command line.
class Misuse final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

using Arguments = std::vector<std::string>;
using Options = std::map<std::string, std::string>;

class Program final {
public:
    Program(Lists& usersLists, Options given) : lists(usersLists), options(std::move(given)) {}

    void run(Arguments given);

private:
    struct Command {
        std::size_t least;
        std::size_t most;
        void (Program::*action)(const Arguments&);
    };

    static const std::map<std::string, Command> commands;

    static const std::string& newName(const std::string& name);
    std::vector<NewEntry> tracks(const Arguments& names);

    void printAll(const Arguments& given);
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

    Lists& lists;
    ListStore& store = lists.store;
    Options options;
};

const std::map<std::string, Program::Command> Program::commands = {
    {"list", {0, 0, &Program::printAll}},
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

// Takes the options out of the arguments. Each goes with some commands.
Options takeOptions(Arguments& arguments) {
    static const std::map<std::string, std::string> known = {{"--user", ""},
                                                             {"--at", "add"},
                                                             {"--message", "add send"},
                                                             {"--private", "new"},
                                                             {"--collaborative", "new"},
                                                             {"--folder", "new"},
                                                             {"--in", "new"}};
    Options options;
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
    arguments = std::move(rest);
    return options;
}

void Program::run(Arguments given) {
    const auto command = given.empty() ? commands.end() : commands.find(given.front());
    if (command == commands.end()) {
        throw Misuse(given.empty() ? "a command is needed" : "no command " + given.front());
    }
    given.erase(given.begin());
    if (given.size() < command->second.least || given.size() > command->second.most) {
        throw Misuse("wrong number of arguments for " + command->first);
    }
    (this->*command->second.action)(given);
}

const std::string& Program::newName(const std::string& name) {
    const auto breaks = [](char character) {
        return static_cast<unsigned char>(character) < ' ' || character == 0x7f;
    };
    if (name.empty() || std::any_of(name.begin(), name.end(), breaks)) {
        throw std::runtime_error(quoted(name) + " cannot be a name");
    }
    return name;
}

std::vector<NewEntry> Program::tracks(const Arguments& names) {
    std::vector<NewEntry> entries;
    for (const std::string& name : names) {
        NewEntry entry;
        entry.item = lists.track(name);
        if (options.count("--message") > 0) {
            entry.text = options["--message"];
        }
        entries.push_back(std::move(entry));
    }
    return entries;
}

void Program::printAll(const Arguments&) {
    printLists(lists);
}

void Program::show(const Arguments& given) {
    printList(lists, lists.list(given[0]));
}

void Program::make(const Arguments& given) {
    const std::string& name = newName(given[0]);
    const bool folder = options.count("--folder") > 0;
    std::string link;
    store.together([&] {
        std::int64_t before = 0;
        if (options.count("--in") > 0) {
            const std::vector<std::int64_t> ends = lists.endsOf(options["--in"]);
            if (ends.empty()) {
                throw std::runtime_error(lists.user.name + " has no folder " +
                                         quoted(options["--in"]));
            }
            before = ends.back();
        }
        if (folder) {
            const Id id = Id::digest({randomText(Id().bytes.size())});
            store.insert(
                lists.container, before,
                {{EntryKind::folderStart, id, name}, {EntryKind::folderEnd, id, std::nullopt}},
                lists.user.name);
            return;
        }
        const ListRow made = store.create(lists.user.id, name);
        if (options.count("--private") + options.count("--collaborative") > 0) {
            store.share(made, options.count("--private") == 0,
                        options.count("--collaborative") > 0);
        }
        store.insert(lists.container, before, {{EntryKind::item, made.link, std::nullopt}},
                     lists.user.name);
        link = linkOf(made);
    });
    if (!link.empty()) {
        std::cout << link << '\n';
    }
}

void Program::rename(const Arguments& given) {
    store.rename(lists.changeable(given[0]), newName(given[1]));
}

void Program::describe(const Arguments& given) {
    store.describe(lists.changeable(given[0]), given[1]);
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
    store.setImage(lists.changeable(given[0]), bytes);
}

void Program::add(const Arguments& given) {
    const ListRow to = lists.changeable(given[0]);
    std::int64_t before = 0;
    if (options.count("--at") > 0) {
        const std::vector<ListEntry> entries = store.entries(to);
        const std::size_t place = lists.position(options["--at"], entries.size());
        before = place == entries.size() ? 0 : entries[place].id;
    }
    store.insert(to, before, tracks(Arguments(given.begin() + 1, given.end())), lists.user.name);
}

void Program::setMessage(const Arguments& given) {
    const ListRow in = lists.changeable(given[0]);
    const std::vector<ListEntry> entries = store.entries(in);
    store.setMessage(in, entries[lists.placeOf(given[1], in, entries)].id, given[2]);
}

void Program::remove(const Arguments& given) {
    if (given.size() == 1) {
        if (!given[0].empty() && given[0].back() == '/') {
            const auto ends = lists.endsOf(given[0].substr(0, given[0].size() - 1));
            if (!ends.empty()) {
                store.remove(lists.container, ends);
                return;
            }
        }
        const ListRow from = lists.list(given[0]);
        if (!store.contains(lists.container, from.link)) {
            throw std::runtime_error(quoted(from.name) + " is not among the lists of " +
                                     lists.user.name);
        }
        store.removeItems(lists.container, {from.link});
        return;
    }
    const ListRow from = lists.changeable(given[0]);
    const std::vector<ListEntry> entries = store.entries(from);
    std::vector<std::int64_t> gone;
    for (std::size_t index = 1; index < given.size(); ++index) {
        if (number(given[index]) && !entries.empty()) {
            gone.push_back(entries[lists.position(given[index], entries.size() - 1)].id);
            continue;
        }
        const Id wanted = lists.track(given[index]);
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
    const ListRow in = ofTrack ? lists.changeable(given[0]) : lists.container;
    std::vector<ListEntry> entries = store.entries(in);
    std::size_t from = 0;
    if (ofTrack) {
        from = lists.placeOf(given[1], in, entries);
    } else {
        const Id wanted = lists.list(given[0]).link;
        const auto found =
            std::find_if(entries.begin(), entries.end(),
                         [&](const ListEntry& entry) { return entry.item == wanted; });
        if (found == entries.end()) {
            throw std::runtime_error(given[0] + " is not among the lists of " + lists.user.name);
        }
        from = static_cast<std::size_t>(found - entries.begin());
    }
    const std::size_t to = lists.position(given.back(), entries.size() - 1);
    if (from == to) {
        return;
    }
    const std::int64_t moved = entries[from].id;
    entries.erase(entries.begin() + static_cast<std::ptrdiff_t>(from));
    store.move(in, {moved}, to == entries.size() ? 0 : entries[to].id);
}

void Program::follow(const Arguments& given) {
    const ListRow followed = lists.list(given[0]);
    if (store.contains(lists.container, followed.link)) {
        throw std::runtime_error(quoted(followed.name) + " is among the lists of " +
                                 lists.user.name + " already");
    }
    store.insert(lists.container, 0, {{EntryKind::item, followed.link, std::nullopt}},
                 lists.user.name);
}

void Program::send(const Arguments& given) {
    lists.requireFolder("servers have no inboxes");
    const std::optional<Account> receiver = lists.accounts.find(given[0]);
    if (!receiver) {
        throw std::runtime_error("there is no user " + given[0]);
    }
    store.insert(store.ofAccount(receiver->id, ListKind::inbox).value(), 0,
                 tracks(Arguments(given.begin() + 1, given.end())), lists.user.name);
}

void Program::exportList(const Arguments& given) {
    lists.requireFolder("only music in a folder can be exported");
    std::size_t left = 0;
    const std::string text = asM3u(lists, lists.list(given[0]), left);
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

void runOverFolder(const StatePaths& paths, Arguments arguments, Options options) {
    Lists lists(Kept{paths.accountsFile(), paths.catalogueFile(musicFolder())});
    const auto user = options.find("--user");
    lists.use(user == options.end() ? "listener" : user->second);
    Program(lists, std::move(options)).run(std::move(arguments));
}

void runOverServer(const StatePaths& paths, Arguments arguments, Options options) {
    const auto user = options.find("--user");
    Visit visit(paths, user == options.end() ? std::nullopt : std::optional(user->second));
    visit.agreeOnLists();
    const std::unique_ptr<Answers> answers = visit.source().answers(visit.files());
    Lists lists(visit.files(), [&](const std::string& title) {
        constexpr int some = 100;
        answers->search({title, false, {0, some}, {}, {}});
    });
    lists.use(visit.account().name);
    Program(lists, std::move(options)).run(std::move(arguments));
    visit.agreeOnLists();
}

}  // namespace

int main(int argc, char** argv) {
    if (tellsAbout("sonolet-playlist", usage, argc, argv)) {
        return 0;
    }
    Arguments arguments(argv + 1, argv + argc);
    try {
        Options options = takeOptions(arguments);
        const StatePaths paths = StatePaths::prepare(defaultSettingsLocation, defaultCacheLocation);
        const auto runOver = serverAddress().empty() ? runOverFolder : runOverServer;
        runOver(paths, std::move(arguments), std::move(options));
        finishOutput();
        return 0;
    } catch (const Misuse& error) {
        std::cerr << "sonolet-playlist: " << error.what() << "\n\n" << usage;
        return misuse;
    } catch (const std::exception& error) {
        std::cerr << "sonolet-playlist: " << error.what() << '\n';
        return failure;
    }
}
