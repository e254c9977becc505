#ifndef SONOLET_TESTS_SERVICE_TESTMUSIC_H
#define SONOLET_TESTS_SERVICE_TESTMUSIC_H

#include "Id.h"
#include "TestFiles.h"

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace sonolet::test {

// Tag names and values, as tag libraries call them: {"ALBUMARTIST", "Nobody"}. A name given twice
// has two values.
using TagList = std::vector<std::pair<std::string, std::string>>;

// A folder of music and a folder of state, named in the environment while this lives.
class TestMusic final {
public:
    TestMusic();
    ~TestMusic();

    TestMusic(const TestMusic&) = delete;
    TestMusic& operator=(const TestMusic&) = delete;

    // A short WAV file; folders are made on the way.
    void add(const std::string& name, const TagList& tags, std::size_t frames = 441) const;
    void encode(const std::string& name, const std::string& elements, const TagList& tags) const;
    void tag(const std::string& name, const TagList& tags) const;
    void write(const std::string& name, const std::string& bytes) const;
    void remove(const std::string& name) const;
    std::string path(const std::string& name) const { return music.path(name); }

    std::string accountsFile() const;
    std::string catalogueFile() const;
    std::string stateFolder() const { return state.path("state"); }

    // The link of the one track with this title, as the catalogue has it; fails the test when
    // there is none.
    std::string link(const std::string& title) const;
    // "title by artist on album" of all available tracks, sorted.
    std::vector<std::string> titles() const;

private:
    TestFiles music;
    TestFiles state;
};

// What a program says on its standard output and how it ends. The first argument is the program.
struct Ran {
    int status = -1;
    std::string output;
};
Ran runProgram(const std::string& commandLine);

}  // namespace sonolet::test

#endif
