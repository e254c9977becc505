// sonolet-index: brings the catalogue of a folder of music up to date and prints its tracks with
// their links, one a line, tabulators between: link, artist, album, title, file. Or searches it.

#include "accounts/Accounts.h"
#include "catalogue/Catalogue.h"
#include "catalogue/Scanner.h"
#include "search/QueryStore.h"
#include "store/StatePaths.h"
#include "tools/About.h"
#include "tools/Visit.h"

#include <climits>
#include <future>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

namespace {

using namespace sonolet::service;

constexpr char usage[] =
    "usage: sonolet-index                  print every track\n"
    "       sonolet-index --search QUERY   print the tracks that a search finds, best first\n"
    "       sonolet-index --user NAME      of a server: as that user, whose password is asked for\n"
    "       sonolet-index --version\n"
    "\n"
    "Scans the folder of music before. A line is link, artist, album, title, file.\n"
    "SONOLET_SERVER names a music server in place of a folder; without --user its user is the one\n"
    "who is remembered, else listener with the password listener.\n"
    "A query is words, \"phrases\" and artist:, album:, title:, year:1990, year:1990-1999.\n"
    "SONOLET_MUSIC names the folder, SONOLET_STATE the place of the catalogue.\n";

void print(Catalogue& catalogue, const std::vector<Id>& ids) {
    for (const Id& id : ids) {
        const auto track = catalogue.track(id);
        if (!track) {
            continue;
        }
        const auto album = catalogue.album(track->album);
        const auto artist =
            track->artists.empty() ? std::nullopt : catalogue.artist(track->artists.front());
        std::cout << "spotify:track:" << id.text() << '\t' << (artist ? artist->name : "") << '\t'
                  << (album ? album->name : "") << '\t' << track->title << '\t' << track->path
                  << '\n';
    }
}

void search(Catalogue& catalogue, const Kept& kept, const std::string& query) {
    constexpr int everything = INT_MAX;
    QueryStore store(kept.catalogue, kept.accounts);
    const SearchAnswer answer = store.index.search({query, false, {0, everything}, {0, 0}, {0, 0}});
    print(catalogue, answer.tracks.ids);
    std::cerr << answer.tracks.total << " tracks, " << answer.albums.total << " albums, "
              << answer.artists.total << " artists\n";
    if (!answer.didYouMean.empty()) {
        std::cerr << "Did you mean: " << answer.didYouMean << '\n';
    }
}

void show(Catalogue& catalogue, const Kept& kept, const std::optional<std::string>& query) {
    if (query) {
        search(catalogue, kept, *query);
    } else {
        print(catalogue, catalogue.tracks());
    }
}

void visitServer(const std::optional<std::string>& user, const std::optional<std::string>& query) {
    Visit visit(StatePaths::prepare(defaultSettingsLocation, defaultCacheLocation), user);
    visit.learnEverything();
    Catalogue catalogue(visit.files().catalogue);
    show(catalogue, visit.files(), query);
}

}  // namespace

int main(int argc, char** argv) {
    if (tellsAbout("sonolet-index", usage, argc, argv)) {
        return 0;
    }
    std::optional<std::string> query;
    std::optional<std::string> user;
    for (int place = 1; place < argc; place += 2) {
        const std::string option = argv[place];
        if (place + 1 == argc || (option != "--search" && option != "--user")) {
            std::cerr << usage;
            return 2;
        }
        (option == "--search" ? query : user) = argv[place + 1];
    }
    try {
        if (!serverAddress().empty()) {
            visitServer(user, query);
            finishOutput();
            return 0;
        }
        const StatePaths paths = StatePaths::prepare(defaultSettingsLocation, defaultCacheLocation);
        const std::string file = paths.catalogueFile(musicFolder());
        const auto opened =
            Catalogue::openOrBegin(file, [](const std::string& line) { std::cerr << line + '\n'; });
        Catalogue& catalogue = *opened;
        std::promise<bool> finished;
        {
            ScanEvents events;
            events.log = [](const std::string& line) { std::cerr << line + '\n'; };
            events.finished = [&finished](bool complete) { finished.set_value(complete); };
            const Scanner scanner(musicFolder(), file, events);
            if (!finished.get_future().get()) {
                return 1;  // which was told
            }
        }
        const Accounts accounts(paths.accountsFile());
        show(catalogue, {paths.accountsFile(), file}, query);
        finishOutput();
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "sonolet-index: " << error.what() << '\n';
        return 1;
    }
}
