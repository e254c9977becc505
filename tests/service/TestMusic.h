#ifndef SONOLET_TESTS_SERVICE_TESTMUSIC_H
#define SONOLET_TESTS_SERVICE_TESTMUSIC_H

#include "../pages/Command.h"
#include "catalogue/Catalogue.h"
#include "player/TestFiles.h"
#include "store/StatePaths.h"

#include <fileref.h>
#include <tpropertymap.h>

namespace sonolet::test {

// A folder of music and a folder of state, named in the environment while nothing else is.
class TestMusic final {
public:
    TestMusic() {
        // No other thread is there yet. NOLINTBEGIN(concurrency-mt-unsafe)
        setenv("SONOLET_MUSIC", music.path("").c_str(), 1);
        setenv("SONOLET_STATE", stateFolder().c_str(), 1);
        // NOLINTEND(concurrency-mt-unsafe)
    }

    // A short WAV file with tags as "TITLE=Song|ARTIST=Ann|ARTIST=Bob".
    void add(const std::string& name, const std::string& tags, std::size_t frames = 441) const {
        music.write(name, "");
        music.writeWav(name, sweep(frames));
        tag(name, tags);
    }
    void
    encode(const std::string& name, const std::string& elements, const std::string& tags) const {
        std::filesystem::rename(state.encode(name, sweep(22050), elements), path(name));
        tag(name, tags);
    }
    void write(const std::string& name, const std::string& bytes) const {
        music.write(name, bytes);
    }
    void resize(const std::string& name, std::int64_t size) const { music.resize(name, size); }
    void move(const std::string& from, const std::string& to) const {
        std::filesystem::rename(path(from), path(to));
    }
    std::string path(const std::string& name) const { return music.path(name); }

    std::string stateFolder() const { return state.path("state"); }
    static service::StatePaths paths() { return service::StatePaths::prepare(nullptr, nullptr); }
    static std::string catalogueFile() { return paths().catalogueFile(service::musicFolder()); }

    // The links of all available tracks by "title by artist on album".
    static std::multimap<std::string, std::string> tracks() {
        service::Catalogue catalogue(catalogueFile());
        std::multimap<std::string, std::string> tracks;
        for (const service::Id& id : catalogue.tracks()) {
            const auto track = catalogue.track(id).value();
            tracks.emplace(track.title + " by " + catalogue.artist(track.artists.at(0))->name +
                               " on " + catalogue.album(track.album)->name,
                           "spotify:track:" + id.text());
        }
        return tracks;
    }
    static std::string link(const std::string& title) {
        const auto all = tracks();
        const auto found = all.lower_bound(title + " by ");
        return found == all.end() ? "no link" : found->second;
    }

private:
    void tag(const std::string& name, const std::string& tags) const {
        TagLib::PropertyMap properties;
        std::istringstream stream(tags);
        for (std::string key, value;
             std::getline(stream, key, '=') && std::getline(stream, value, '|');) {
            properties[key].append(TagLib::String(value, TagLib::String::UTF8));
        }
        if (!properties.isEmpty()) {
            TagLib::FileRef file(path(name).c_str(), false);
            file.file()->setProperties(properties);
            ASSERT_TRUE(file.save()) << name;
        }
    }

    TestFiles music;
    TestFiles state;
};

// How a command line ends, and what it says.
struct Ran {
    int status = -1;
    std::string output;
};
inline Ran run(const std::string& commandLine) {
    const Outcome ended = ::run({"/bin/sh", "-c", "(" + commandLine + ") 2>&1"}, {});
    return {ended.exitCode, ended.output};
}

// Runs `action` for ever in another process and kills that once it has confirmed `count` times;
// how often it had confirmed by then. One more may be done and not confirmed.
inline std::size_t killDuring(std::size_t count, const std::function<void()>& action) {
    int confirmed[2];
    if (pipe(confirmed) != 0) {
        throw std::runtime_error("no pipe");
    }
    const pid_t worker = fork();
    if (worker == 0) {
        do {
            action();
        } while (write(confirmed[1], "x", 1) == 1);
        _exit(1);
    }
    close(confirmed[1]);
    std::size_t heard = 0;
    for (char byte = 0; read(confirmed[0], &byte, 1) == 1;) {
        if (++heard == count) {
            kill(worker, SIGKILL);
        }
    }
    waitpid(worker, nullptr, 0);
    close(confirmed[0]);
    return heard;
}

}  // namespace sonolet::test

#endif
