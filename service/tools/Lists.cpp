#include "tools/Lists.h"

#include "store/LinkTarget.h"
#include "store/StatePaths.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace sonolet::service {

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

std::string linkOf(const ListRow& list) {
    return list.kind == ListKind::starred ? LinkTarget::starred(list.owner).asString()
                                          : LinkTarget::playlist(list.owner, list.link).asString();
}

Lists::Lists(const Kept& files, Learn learnTitle)
    : accounts(files.accounts, learnTitle ? Accounts::First::nobody : Accounts::First::listener),
      store(accounts.connection()), catalogueFile(files.catalogue), catalogue(catalogueFile),
      learn(std::move(learnTitle)), titles(catalogueFile, Database::Durability::process),
      findTitle(titles, "SELECT link FROM tracks WHERE title = ?1 AND present") {}

void Lists::use(const std::string& userName) {
    const std::optional<Account> account = accounts.find(userName);
    const auto row = account ? store.ofAccount(account->id, ListKind::container) : std::nullopt;
    if (!row) {
        throw std::runtime_error("there is no user " + userName);
    }
    user = *account;
    container = *row;
}

ListRow Lists::list(const std::string& name) {
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

ListRow Lists::changeable(const std::string& name) {
    ListRow found = list(name);
    if (!found.mayBeChangedBy(user.id)) {
        throw std::runtime_error(quoted(found.name) + " is " + found.owner +
                                 "'s and is not collaborative");
    }
    return found;
}

std::vector<std::int64_t> Lists::endsOf(const std::string& name) {
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

std::vector<Id> Lists::tracksCalled(const std::string& title) {
    std::vector<Id> found;
    for (Cursor row = findTitle.run(title); row.next();) {
        found.push_back(row.id(0).value_or(Id()));
    }
    return found;
}

Id Lists::track(const std::string& name) {
    if (name.substr(0, name.find(':')) == "spotify") {
        const std::optional<LinkTarget> link = LinkTarget::parse(name);
        if (!link || link->type != SP_LINKTYPE_TRACK) {
            throw std::runtime_error(quoted(name) + " is no link to a track");
        }
        return link->id;
    }
    std::vector<Id> found = tracksCalled(name);
    if (found.empty() && learn) {
        learn(name);
        found = tracksCalled(name);
    }
    if (found.empty()) {
        throw std::runtime_error("no track is called " + quoted(name) + " in " +
                                 (learn ? serverAddress() : musicFolder()));
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

void Lists::requireFolder(const char* otherwise) const {
    if (learn) {
        throw std::runtime_error(otherwise);
    }
}

std::size_t Lists::position(const std::string& text, std::size_t most) const {
    const std::optional<std::size_t> value = number(text);
    if (!value || *value > most) {
        throw std::runtime_error(quoted(text) + " is no position from 0 to " +
                                 std::to_string(most));
    }
    return *value;
}

std::size_t Lists::placeOf(const std::string& text,
                           const ListRow& in,
                           const std::vector<ListEntry>& entries) const {
    if (entries.empty()) {
        throw std::runtime_error(quoted(in.name) + " is empty");
    }
    return position(text, entries.size() - 1);
}

}  // namespace sonolet::service
