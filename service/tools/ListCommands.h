#ifndef SONOLET_SERVICE_TOOLS_LIST_COMMANDS_H
#define SONOLET_SERVICE_TOOLS_LIST_COMMANDS_H

#include "tools/Lists.h"

#include <cstddef>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace sonolet::service {

// What sonolet-playlist does with a user's lists, each command a function here.
//
// Threads: one. Errors: Misuse; else what Lists throws, and std::runtime_error that says in words
// for the terminal what cannot be done. Nothing is changed then.
class ListCommands final {
public:
    // Wrong on the command line.
    class Misuse final : public std::runtime_error {
    public:
        using std::runtime_error::runtime_error;
    };

    using Arguments = std::vector<std::string>;
    using Options = std::map<std::string, std::string>;  // with "--"; those without a value empty

    // Borrows the lists. Each option goes with the command.
    ListCommands(Lists& usersLists, Options given) : lists(usersLists), options(std::move(given)) {}

    // The command's name and what it is about.
    void run(Arguments given);

private:
    struct Command {
        std::size_t least;
        std::size_t most;
        void (ListCommands::*action)(const Arguments&);
    };

    static const std::map<std::string, Command> commands;

    static const std::string& newName(const std::string& name);
    std::vector<NewEntry> tracks(const Arguments& names);

    void printAll(const Arguments& given);
    void show(const Arguments& given);
    void make(const Arguments& given);
    void rename(const Arguments& given);
    void describe(const Arguments& given);
    void setImage(const Arguments& given);
    void add(const Arguments& given);
    void setMessage(const Arguments& given);
    void remove(const Arguments& given);
    void move(const Arguments& given);
    void follow(const Arguments& given);
    void send(const Arguments& given);
    void exportList(const Arguments& given);

    Lists& lists;
    ListStore& store = lists.store;
    Options options;
};

}  // namespace sonolet::service

#endif
