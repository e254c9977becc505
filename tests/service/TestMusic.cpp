#include "TestMusic.h"

#include "Catalogue.h"
#include "StatePaths.h"

#include <fileref.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <tpropertymap.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>

namespace sonolet::test {

using service::Catalogue;
using service::Id;
using service::StatePaths;

namespace {

StatePaths paths() {
    return StatePaths::prepare(nullptr, nullptr);
}

}  // namespace

TestMusic::TestMusic() {
    // No other thread is there yet. NOLINTBEGIN(concurrency-mt-unsafe)
    setenv("SONOLET_MUSIC", music.path("").c_str(), 1);
    setenv("SONOLET_STATE", stateFolder().c_str(), 1);
    // NOLINTEND(concurrency-mt-unsafe)
}

TestMusic::~TestMusic() {
    unsetenv("SONOLET_MUSIC");  // NOLINT(concurrency-mt-unsafe): as above
    unsetenv("SONOLET_STATE");  // NOLINT(concurrency-mt-unsafe): as above
}

void TestMusic::add(const std::string& name, const TagList& tags, std::size_t frames) const {
    std::filesystem::create_directories(std::filesystem::path(path(name)).parent_path());
    music.writeWav(name, sweep(frames));
    tag(name, tags);
}

void TestMusic::encode(const std::string& name,
                       const std::string& elements,
                       const TagList& tags) const {
    std::filesystem::rename(state.encode(name, sweep(22050), elements), path(name));
    tag(name, tags);
}

void TestMusic::tag(const std::string& name, const TagList& tags) const {
    if (tags.empty()) {
        return;
    }
    TagLib::FileRef file(path(name).c_str(), false);
    ASSERT_FALSE(file.isNull()) << name;
    TagLib::PropertyMap properties;
    for (const auto& [key, value] : tags) {
        properties[key].append(TagLib::String(value, TagLib::String::UTF8));
    }
    file.file()->setProperties(properties);
    ASSERT_TRUE(file.save()) << name;
}

void TestMusic::write(const std::string& name, const std::string& bytes) const {
    std::filesystem::create_directories(std::filesystem::path(path(name)).parent_path());
    music.write(name, bytes);
}

void TestMusic::remove(const std::string& name) const {
    ASSERT_GT(std::filesystem::remove_all(path(name)), 0U) << name;
}

std::string TestMusic::accountsFile() const {
    return paths().accountsFile();
}

std::string TestMusic::catalogueFile() const {
    return paths().catalogueFile(service::musicFolder());
}

std::string TestMusic::link(const std::string& title) const {
    Catalogue catalogue(catalogueFile());
    std::string found;
    for (const Id& id : catalogue.tracks()) {
        if (catalogue.track(id)->title == title) {
            EXPECT_EQ(found, "") << "several tracks are called " << title;
            found = "spotify:track:" + id.text();
        }
    }
    EXPECT_NE(found, "") << "no track is called " << title;
    return found;
}

std::vector<std::string> TestMusic::titles() const {
    Catalogue catalogue(catalogueFile());
    std::vector<std::string> titles;
    for (const Id& id : catalogue.tracks()) {
        const auto track = catalogue.track(id);
        titles.push_back(track->title + " by " + catalogue.artist(track->artists.at(0))->name +
                         " on " + catalogue.album(track->album)->name);
    }
    std::sort(titles.begin(), titles.end());
    return titles;
}

Ran runProgram(const std::string& commandLine) {
    Ran ran;
    FILE* pipe = popen(commandLine.c_str(), "r");
    if (pipe == nullptr) {
        return ran;
    }
    std::array<char, 4096> buffer{};
    for (std::size_t size = 1; size > 0;) {
        size = std::fread(buffer.data(), 1, buffer.size(), pipe);
        ran.output.append(buffer.data(), size);
    }
    const int status = pclose(pipe);
    ran.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return ran;
}

}  // namespace sonolet::test
