#include "tools/ListTexts.h"

#include "store/LinkTarget.h"

#include <algorithm>
#include <iostream>
#include <optional>
#include <vector>

namespace sonolet::service {

namespace {

// On one line, whatever a tag says.
std::string inLine(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char byte) { return byte == '\n' || byte == '\r'; }, ' ');
    return text;
}

}  // namespace

void printLists(Lists& lists) {
    std::size_t depth = 0;
    for (const ListEntry& entry : lists.store.entries(lists.container)) {
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
        const std::optional<ListRow> found = lists.store.find(entry.item);
        if (found) {
            std::cout << found->name << '\t' << linkOf(*found) << '\t'
                      << lists.store.entries(*found).size() << '\n';
        } else {
            std::cout << "(gone)\n";
        }
    }
}

void printList(Lists& lists, const ListRow& shown) {
    const std::vector<std::string> followers = lists.store.subscribers(shown);
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
    for (const ListEntry& entry : lists.store.entries(shown)) {
        const auto row = lists.catalogue.track(entry.item);
        const auto artist = row && !row->artists.empty()
                                ? lists.catalogue.artist(row->artists.front())
                                : std::nullopt;
        std::cout << place++ << '\t' << LinkTarget::track(entry.item, 0).asString() << '\t'
                  << (artist ? artist->name : "") << '\t' << (row ? row->title : "") << '\t'
                  << entry.creator << (entry.seen ? "" : "\tnew")
                  << (entry.text ? '\t' + *entry.text : "") << '\n';
    }
}

std::string asM3u(Lists& lists, const ListRow& exported, std::size_t& left) {
    std::string text = "#EXTM3U\n#PLAYLIST:" + exported.name + '\n';
    left = 0;
    for (const ListEntry& entry : lists.store.entries(exported)) {
        const auto row = lists.catalogue.track(entry.item);
        if (!row || !row->available || row->path.find('\n') != std::string::npos) {
            ++left;
            continue;
        }
        const auto artist =
            row->artists.empty() ? std::nullopt : lists.catalogue.artist(row->artists.front());
        text += "#EXTINF:" + std::to_string((row->durationMs + 500) / 1000) + ',' +
                inLine((artist ? artist->name + " - " : "") + row->title) + '\n' + musicFolder() +
                '/' + row->path + '\n';
    }
    return text;
}

}  // namespace sonolet::service
