// sonolet-index: brings the catalogue of a folder of music up to date and prints its tracks with
// their links, one a line, tabulators between: link, artist, album, title, file.

#include "Catalogue.h"
#include "Scanner.h"
#include "StatePaths.h"

#include <future>
#include <iostream>
#include <string>

namespace {

using namespace sonolet::service;

constexpr char usage[] =
    "Usage: sonolet-index\n"
    "\n"
    "Scans the folder of music and prints every track: link, artist, album, title, file.\n"
    "SONOLET_MUSIC names the folder, SONOLET_STATE the place of the catalogue.\n";

void print(Catalogue& catalogue) {
    for (const Id& id : catalogue.tracks()) {
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

}  // namespace

int main(int argc, char** argv) {
    if (argc > 1) {
        const bool help = std::string(argv[1]) == "--help";
        (help ? std::cout : std::cerr) << usage;
        return help ? 0 : 2;
    }
    try {
        const StatePaths paths = StatePaths::prepare(defaultSettingsLocation, defaultCacheLocation);
        const std::string file = paths.catalogueFile(musicFolder());
        Catalogue catalogue(file);
        std::promise<void> finished;
        {
            ScanEvents events;
            events.log = [](const std::string& line) { std::cerr << line + '\n'; };
            events.finished = [&finished] { finished.set_value(); };
            const Scanner scanner(musicFolder(), file, events);
            finished.get_future().wait();
        }
        print(catalogue);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "sonolet-index: " << error.what() << '\n';
        return 1;
    }
}
