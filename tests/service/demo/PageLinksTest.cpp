#include "../player/TestFiles.h"
#include "Catalogue.h"
#include "Scanner.h"
#include "demo/DemoLibrary.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <future>

namespace sonolet::service {
namespace {

// Pages and the README name demo tracks by their links, each with its title in quotes behind it. A
// link is a digest of tags, so a changed tag would leave them pointing nowhere.
TEST(PageLinks, NameTheDemoTracksThatTheySay) {
    const sonolet::test::TestFiles files;
    const std::string library = files.path("demo");
    ASSERT_TRUE(makeDemoLibrary(library));
    const std::string file = files.path("catalogue");
    Catalogue catalogue(file);
    std::promise<void> finished;
    const ScanEvents events{[](const std::string&) {}, [&finished] { finished.set_value(); }};
    const Scanner scanner(library, file, events);
    finished.get_future().wait();

    const std::filesystem::path project = PROJECT_FOLDER;
    std::vector<std::filesystem::path> texts{project / "README.md"};
    for (const auto& entry : std::filesystem::directory_iterator(project / "pages")) {
        texts.push_back(entry.path());
    }
    const std::string link = "spotify:track:";
    const std::string comment = "// \"";
    std::size_t found = 0;
    for (const std::filesystem::path& path : texts) {
        std::ifstream text(path);
        for (std::string line; std::getline(text, line);) {
            const std::size_t at = line.find(link);
            const std::size_t title = line.find(comment, at);
            if (at != std::string::npos && title != std::string::npos) {
                const auto id = Id::fromText(line.substr(at + link.size(), Id::textLength));
                ASSERT_TRUE(id) << path << ": " << line;
                const auto track = catalogue.track(*id);
                const std::size_t begin = title + comment.size();
                EXPECT_EQ(track ? track->title : "nothing",
                          line.substr(begin, line.find('"', begin) - begin))
                    << path;
                ++found;
            }
        }
    }
    EXPECT_GE(found, 3U);
}

}  // namespace
}  // namespace sonolet::service
