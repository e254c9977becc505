#include "tools/ListCommands.h"

#include "accounts/Password.h"
#include "store/LinkTarget.h"
#include "tools/ListTexts.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <optional>

namespace sonolet::service {

const std::map<std::string, ListCommands::Command> ListCommands::commands = {
    {"list", {0, 0, &ListCommands::printAll}},
    {"show", {1, 1, &ListCommands::show}},
    {"new", {1, 1, &ListCommands::make}},
    {"rename", {2, 2, &ListCommands::rename}},
    {"describe", {2, 2, &ListCommands::describe}},
    {"image", {2, 2, &ListCommands::setImage}},
    {"add", {2, SIZE_MAX, &ListCommands::add}},
    {"message", {3, 3, &ListCommands::setMessage}},
    {"remove", {1, SIZE_MAX, &ListCommands::remove}},
    {"move", {2, 3, &ListCommands::move}},
    {"follow", {1, 1, &ListCommands::follow}},
    {"send", {2, SIZE_MAX, &ListCommands::send}},
    {"export", {1, 2, &ListCommands::exportList}},
};

void ListCommands::run(Arguments given) {
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

const std::string& ListCommands::newName(const std::string& name) {
    const auto breaks = [](char character) {
        return static_cast<unsigned char>(character) < ' ' || character == 0x7f;
    };
    if (name.empty() || std::any_of(name.begin(), name.end(), breaks)) {
        throw std::runtime_error(quoted(name) + " cannot be a name");
    }
    return name;
}

std::vector<NewEntry> ListCommands::tracks(const Arguments& names) {
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

void ListCommands::printAll(const Arguments&) {
    printLists(lists);
}

void ListCommands::show(const Arguments& given) {
    printList(lists, lists.list(given[0]));
}

void ListCommands::make(const Arguments& given) {
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

void ListCommands::rename(const Arguments& given) {
    store.rename(lists.changeable(given[0]), newName(given[1]));
}

void ListCommands::describe(const Arguments& given) {
    store.describe(lists.changeable(given[0]), given[1]);
}

void ListCommands::setImage(const Arguments& given) {
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

void ListCommands::add(const Arguments& given) {
    const ListRow to = lists.changeable(given[0]);
    std::int64_t before = 0;
    if (options.count("--at") > 0) {
        const std::vector<ListEntry> entries = store.entries(to);
        const std::size_t place = lists.position(options["--at"], entries.size());
        before = place == entries.size() ? 0 : entries[place].id;
    }
    store.insert(to, before, tracks(Arguments(given.begin() + 1, given.end())), lists.user.name);
}

void ListCommands::setMessage(const Arguments& given) {
    const ListRow in = lists.changeable(given[0]);
    const std::vector<ListEntry> entries = store.entries(in);
    store.setMessage(in, entries[lists.placeOf(given[1], in, entries)].id, given[2]);
}

void ListCommands::remove(const Arguments& given) {
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
void ListCommands::move(const Arguments& given) {
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

void ListCommands::follow(const Arguments& given) {
    const ListRow followed = lists.list(given[0]);
    if (store.contains(lists.container, followed.link)) {
        throw std::runtime_error(quoted(followed.name) + " is among the lists of " +
                                 lists.user.name + " already");
    }
    store.insert(lists.container, 0, {{EntryKind::item, followed.link, std::nullopt}},
                 lists.user.name);
}

void ListCommands::send(const Arguments& given) {
    lists.requireFolder("servers have no inboxes");
    const std::optional<Account> receiver = lists.accounts.find(given[0]);
    if (!receiver) {
        throw std::runtime_error("there is no user " + given[0]);
    }
    store.insert(store.ofAccount(receiver->id, ListKind::inbox).value(), 0,
                 tracks(Arguments(given.begin() + 1, given.end())), lists.user.name);
}

void ListCommands::exportList(const Arguments& given) {
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

}  // namespace sonolet::service
