// sonolet-playlist: the playlists and folders of a user of the local music service.

#include "tools/About.h"
#include "tools/ListCommands.h"
#include "tools/Visit.h"

#include <cstddef>
#include <exception>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace {

using namespace sonolet::service;
using Misuse = ListCommands::Misuse;
using Arguments = ListCommands::Arguments;
using Options = ListCommands::Options;

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

void runOverFolder(const StatePaths& paths, Arguments arguments, Options options) {
    Lists lists(Kept{paths.accountsFile(), paths.catalogueFile(musicFolder())});
    const auto user = options.find("--user");
    lists.use(user == options.end() ? "listener" : user->second);
    ListCommands(lists, std::move(options)).run(std::move(arguments));
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
    ListCommands(lists, std::move(options)).run(std::move(arguments));
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
